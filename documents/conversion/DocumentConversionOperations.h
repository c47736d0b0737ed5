#pragma once

namespace wendrel {

class OperationCatalog;

// The convert ring's document targets: PDF, DOCX, RTF, ODT, HTML, TXT, Markdown and EPUB.
void registerDocumentConversionOperations(OperationCatalog& catalog);

}  // namespace wendrel
