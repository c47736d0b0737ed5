#pragma once

#include <QString>

namespace wendrel {

class OperationCatalog;
class OperationContext;

// The file of page `pageNumber` (from 1) of `pageCount`: "Page 001.pdf". Numbers have three
// digits, or as many as the last page needs, so the files of one document sort in page order
// by name alone.
QString splitPageFileName(int pageNumber, int pageCount);

// Writes every page of the PDF at `source` as a document of its own into `folder`, which
// exists: only that page and what it draws with, no other page's objects. Pages are written
// on several threads, each with its own reading of the source, as long as those readings
// take little memory; a long document is written on one. Reports progress per page,
// stops between pages when the job is cancelled. Throws OperationError: the opening messages,
// or "Couldn't save the PDF".
void splitPdfInto(const QString& source, const QString& folder, const OperationContext& context);

// "pdf.split": every page as its own PDF, in a folder "<name> Pages".
void registerSplitPdf(OperationCatalog& catalog);

}  // namespace wendrel
