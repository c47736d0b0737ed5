#pragma once

#include "operations/Op.h"
#include "operations/OperationError.h"

#include <QCoreApplication>
#include <QString>

#include <qpdf/QPDF.hh>
#include <qpdf/QPDFWriter.hh>

#include <functional>
#include <memory>

namespace wendrel {

inline QString pdfText(const char* text) { return QCoreApplication::translate("PdfOperations", text); }

// A PDF's structure, opened with qpdf. A damaged cross-reference table is rebuilt from the
// objects themselves where that is possible; what can't be read fails with "Can't open this
// PDF", a document that needs a password to open with "This PDF is password-protected".
// A document without a single page is refused too: nothing can be made from it.
std::unique_ptr<QPDF> openPdf(const QString& path);

// The same for a document in memory; `description` names it in the log.
std::unique_ptr<QPDF> openPdfFromMemory(const QByteArray& bytes, const QString& description);

struct PdfWriteOptions {
    // Object streams pack small objects together: smaller files, a little more work to write.
    // Preserving the source's own choice is the cheapest and never surprises.
    enum class ObjectStreams { preserve, generate };
    ObjectStreams objectStreams = ObjectStreams::preserve;
    // Called with the writer before it writes: encryption and other settings of one job.
    std::function<void(QPDFWriter&)> configure{};
};

// Writes the document to `path` (a scratch path: results are placed only after they are
// whole). Throws OperationError "Couldn't save the PDF" on any failure, a damaged object the
// opener could not see included.
void writePdf(QPDF& pdf, const QString& path, const PdfWriteOptions& options = {});

// The common frame of an entry that works on one PDF at a time.
Op::Definition pdfEntry(EntryDescription entry, Op::PerFileBody body);

// The failures every PDF entry shares.
OperationError pdfCantOpen();
OperationError pdfCouldNotSave();

}  // namespace wendrel
