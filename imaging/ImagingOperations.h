#pragma once

namespace wendrel {

class OperationCatalog;

// Registers every ring entry of the imaging layer that works in this build.
void registerImagingOperations(OperationCatalog& catalog);

}  // namespace wendrel
