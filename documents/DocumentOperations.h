#pragma once

namespace wendrel {

class OperationCatalog;

// Registers every ring entry of the documents layer that works in this build.
void registerDocumentOperations(OperationCatalog& catalog);

}  // namespace wendrel
