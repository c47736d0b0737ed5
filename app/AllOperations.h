#pragma once

namespace wendrel {

class OperationCatalog;

// Fills the catalog with every entry this build can really run, from every layer.
void registerAllOperations(OperationCatalog& catalog);

}  // namespace wendrel
