#pragma once

namespace wendrel {

class OperationCatalog;

// The entries that print over every page of a PDF: page numbers and a watermark.
void registerPdfOverlayOperations(OperationCatalog& catalog);

}  // namespace wendrel
