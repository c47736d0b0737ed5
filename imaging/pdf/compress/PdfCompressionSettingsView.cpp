#include "PdfCompressionSettingsView.h"

#include "imaging/pdf/PdfDocument.h"

namespace wendrel {

namespace {

using Settings = PDFCompressionSettings;

// Shows a field only in one mode.
PromptCondition whenMode(Settings::Mode mode)
{
    return {recordKey(&Settings::mode), {storedSpelling(&Settings::mode, mode)}};
}

QJsonValue spelling(Settings::Mode mode) { return storedSpelling(&Settings::mode, mode); }
QJsonValue spelling(QualityLevel level) { return storedSpelling(&Settings::quality, level); }

}  // namespace

PromptRequest pdfCompressionSettingsView(const PDFCompressionSettings& startingValues, qsizetype fileCount)
{
    const auto value = [&](auto member) { return recordValue(startingValues, member); };

    QList<PromptField> fields{
        {
            .kind = PromptField::Kind::choice,
            .key = recordKey(&Settings::mode),
            .label = pdfText("Mode"),
            .option = QStringLiteral("mode"),
            .value = value(&Settings::mode),
            .choices = {
                {spelling(Settings::Mode::quality), pdfText("By quality")},
                {spelling(Settings::Mode::targetSize), pdfText("To file size"), {QStringLiteral("size"), QStringLiteral("target")}},
            },
            .choiceStyle = PromptField::ChoiceStyle::segmented,
        },
        {
            .kind = PromptField::Kind::choice,
            .key = recordKey(&Settings::quality),
            .label = pdfText("Quality"),
            .option = QStringLiteral("quality"),
            .value = value(&Settings::quality),
            .choices = {
                {spelling(QualityLevel::high), pdfText("High")},
                {spelling(QualityLevel::balanced), pdfText("Balanced")},
                {spelling(QualityLevel::small), pdfText("Small"), {QStringLiteral("smallest")}},
            },
            .shownWhen = whenMode(Settings::Mode::quality),
        },
        {
            .kind = PromptField::Kind::number,
            .key = recordKey(&Settings::targetMB),
            .label = pdfText("Size"),
            .option = QStringLiteral("target-mb"),
            .value = value(&Settings::targetMB),
            // Zero asks for the smallest file compression can make.
            .minimum = 0,
            .maximum = 10'000,
            .decimals = 2,
            .step = 0.1,
            .unit = pdfText("MB or less"),
            .shownWhen = whenMode(Settings::Mode::targetSize),
        },
        {
            .kind = PromptField::Kind::toggle,
            .key = recordKey(&Settings::rasterize),
            .label = pdfText("Save pages as images"),
            .option = QStringLiteral("rasterize"),
            .value = value(&Settings::rasterize),
            .caption = pdfText("Compresses the pictures inside the PDF. Text stays selectable."),
            .captionWhenOn = pdfText("Strongest compression for scans. Text will no longer be selectable or searchable."),
        },
    };

    return {
        .title = pdfText("Compress"),
        .message = fileCount == 1 ? pdfText("Compress PDF") : pdfText("Compress %1 PDFs").arg(fileCount),
        .fields = std::move(fields),
        .confirmText = pdfText("Compress"),
        .cancelText = pdfText("Cancel"),
    };
}

}  // namespace wendrel
