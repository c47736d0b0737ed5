#pragma once

#include <QString>
#include <QStringList>

namespace wendrel::document {

// Whether a font family is one of the fixed-pitch families documents use for code: the
// generic "monospace", and the usual named ones ("Courier New", "DejaVu Sans Mono", …).
bool isMonospaceFamily(const QString& family);
bool anyMonospaceFamily(const QStringList& families);

}  // namespace wendrel::document
