#pragma once

#include <QStringList>

namespace wendrel {

class OperationCatalog;

// `wendrel ops FILE...`: the entries of each ring that fit all the files, in ring order.
// `wendrel ops --all` (no files): every entry of each ring, in ring order.
// Lines are "  id  title" under each ring's name; with `json`, one object per ring.
int runOpsCommand(const OperationCatalog& catalog, const QStringList& files, bool json);
int runAllOpsCommand(const OperationCatalog& catalog, bool json);

}  // namespace wendrel
