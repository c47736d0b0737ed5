#pragma once

namespace wendrel {

class OperationCatalog;

// Adds "CSV", "TSV" and "XLSX" to the convert ring for comma- and tab-separated text, XLSX
// workbooks and OpenDocument spreadsheets: the first sheet of each input is written in the
// chosen format next to it, named after it. An entry is never offered for its own format.
void registerSheetOperations(OperationCatalog& catalog);

}  // namespace wendrel
