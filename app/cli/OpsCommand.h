#pragma once

#include <QStringList>

namespace wendrel {

class OperationCatalog;

// `wendrel ops FILE...`: the entries of each ring that fit all the files, in ring order.
int runOpsCommand(const OperationCatalog& catalog, const QStringList& files, bool json);

}  // namespace wendrel
