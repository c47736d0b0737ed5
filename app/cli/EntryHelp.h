#pragma once

#include <QString>
#include <QStringList>

namespace wendrel {

class FileOperation;
class OperationCatalog;

// `wendrel help ENTRY`: what the entry does and, when it asks before running, each option
// that answers its prompt, with the values it takes and the value it has now.
QString entryHelp(const FileOperation& entry);

// The options of every entry's prompt, without dashes, each once: the command line accepts
// them all and leaves it to the chosen entry to refuse the ones that aren't its own.
QStringList promptOptionNames(const OperationCatalog& catalog);

// For the general help: one line per entry that asks before running, with its options.
QString promptOptionsSummary(const OperationCatalog& catalog);

}  // namespace wendrel
