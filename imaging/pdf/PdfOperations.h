#pragma once

namespace wendrel {

class OperationCatalog;

// The PDF entries of the tools ring (merge, split, compress, rotate, number, watermark,
// password) and of the convert ring (pages as pictures).
void registerPdfOperations(OperationCatalog& catalog);

}  // namespace wendrel
