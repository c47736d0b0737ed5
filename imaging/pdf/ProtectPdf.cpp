#include "ProtectPdf.h"

#include "PdfDocument.h"
#include "operations/FileNames.h"
#include "operations/OperationCatalog.h"

namespace wendrel {

namespace {

const QString passwordKey = QStringLiteral("password");

ProducedFile protectPdf(const QString& path, const OperationContext& context)
{
    const QString password = context.answers().value(passwordKey).toString();
    // The answer is never stored, so a job started without asking has none to use.
    if (password.isEmpty())
        throw OperationError(pdfText("A password is needed"));
    // A document that opens without a password opens here even when it is encrypted; its
    // old encryption gives way to the new one.
    const std::unique_ptr<QPDF> pdf = openPdf(path);
    const std::string secret = password.toUtf8().toStdString();
    const PdfWriteOptions options{
        .configure = [&secret](QPDFWriter& writer) {
            // AES-256. The same text opens the document and owns it, and the reader may do
            // everything once it is open: the password guards opening, nothing else.
            writer.setR6EncryptionParameters(secret.c_str(), secret.c_str(), true, true, true, true, true, true,
                                             qpdf_r3p_full, true);
        },
    };
    return context.produce(path, outputName(path, pdfText("Protected")),
                           [&](const QString& destination) { writePdf(*pdf, destination, options); });
}

}  // namespace

PromptRequest passwordPrompt(const QStringList& paths)
{
    return {
        .title = pdfText("Password"),
        .fields = {{
            .kind = PromptField::Kind::password,
            .key = passwordKey,
            .label = pdfText("Password for the PDF"),
            .option = passwordKey,
            .value = QString(),
            .required = true,
            .confirm = true,
        }},
        .confirmText = paths.size() > 1 ? pdfText("Protect %1 PDFs").arg(paths.size()) : pdfText("Protect PDF"),
        .cancelText = pdfText("Cancel"),
    };
}

void registerProtectPdf(OperationCatalog& catalog)
{
    Op::Definition entry = pdfEntry({.id = "pdf.password", .title = pdfText("Password"), .symbol = QStringLiteral("lock"),
                                     .ring = RingKind::tools,
                                     .description = pdfText("Asks for a password needed to open the PDF.")},
                                    protectPdf);
    // Nothing to remember: a password serves one job and is never written down.
    entry.prompt = {.request = passwordPrompt, .remember = {}};
    catalog.add(Op::make(std::move(entry)));
}

}  // namespace wendrel
