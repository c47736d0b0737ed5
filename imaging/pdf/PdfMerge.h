#pragma once

namespace wendrel {

class OperationCatalog;

// "Merge": the dropped PDFs and images joined into one PDF, in drop order.
void registerPdfMerge(OperationCatalog& catalog);

}  // namespace wendrel
