#pragma once

#include <QString>

namespace wendrel {

// Whether a window whose WM_CLASS holds `instanceName` and `className` belongs to a file
// manager whose selection can be asked for with Ctrl+C. Case does not matter.
bool isFileManagerWindowClass(const QString& instanceName, const QString& className);

}  // namespace wendrel
