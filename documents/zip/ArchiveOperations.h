#pragma once

namespace wendrel {

class OperationCatalog;

// Adds "ZIP" (everything dropped, packed into one archive beside the first item) and "Unzip"
// (each dropped archive unpacked into a folder beside it, named after it) to the convert ring.
void registerArchiveOperations(OperationCatalog& catalog);

}  // namespace wendrel
