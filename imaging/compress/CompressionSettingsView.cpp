#include "CompressionSettingsView.h"

#include "imaging/ImageEntries.h"

namespace wendrel {

namespace {

using Settings = CompressionSettings;

// Shows a field only in one mode.
PromptCondition whenMode(Settings::Mode mode)
{
    return {recordKey(&Settings::mode), {storedSpelling(&Settings::mode, mode)}};
}

QJsonValue spelling(Settings::Mode mode) { return storedSpelling(&Settings::mode, mode); }
QJsonValue spelling(Settings::Format format) { return storedSpelling(&Settings::format, format); }

}  // namespace

PromptRequest compressionSettingsView(const CompressionSettings& startingValues, qsizetype fileCount)
{
    const auto value = [&](auto member) { return recordValue(startingValues, member); };
    const auto pixels = [](int side) {
        return PromptChoice{side, imagingText("%1 px").arg(side)};
    };

    QList<PromptField> fields{
        {
            .kind = PromptField::Kind::choice,
            .key = recordKey(&Settings::mode),
            .label = imagingText("Mode"),
            .option = QStringLiteral("mode"),
            .value = value(&Settings::mode),
            .choices = {
                {spelling(Settings::Mode::targetSize), imagingText("To file size"), {QStringLiteral("size"), QStringLiteral("target")}},
                {spelling(Settings::Mode::reduceBy), imagingText("Reduce by percent"), {QStringLiteral("reduce"), QStringLiteral("percent")}},
                {spelling(Settings::Mode::quality), imagingText("By quality")},
            },
            .choiceStyle = PromptField::ChoiceStyle::segmented,
        },
        {
            .kind = PromptField::Kind::number,
            .key = recordKey(&Settings::targetMB),
            .label = imagingText("Size"),
            .option = QStringLiteral("target-mb"),
            .value = value(&Settings::targetMB),
            .minimum = 0.01,
            .maximum = 10'000,
            .decimals = 2,
            .step = 0.1,
            .unit = imagingText("MB or less"),
            .shownWhen = whenMode(Settings::Mode::targetSize),
        },
        {
            .kind = PromptField::Kind::slider,
            .key = recordKey(&Settings::reducePercent),
            .label = imagingText("Smaller by"),
            .option = QStringLiteral("reduce"),
            .value = value(&Settings::reducePercent),
            .minimum = 1,
            .maximum = 99,
            .valueFormat = imagingText("Smaller by %1%"),
            .shownWhen = whenMode(Settings::Mode::reduceBy),
        },
        {
            .kind = PromptField::Kind::slider,
            .key = recordKey(&Settings::qualityPercent),
            .label = imagingText("Quality"),
            .option = QStringLiteral("quality"),
            .value = value(&Settings::qualityPercent),
            .minimum = 1,
            .maximum = 100,
            .valueFormat = imagingText("Quality %1%"),
            .shownWhen = whenMode(Settings::Mode::quality),
        },
        {
            .kind = PromptField::Kind::choice,
            .key = recordKey(&Settings::maxDimension),
            .label = imagingText("Longest side"),
            .option = QStringLiteral("max-dimension"),
            .value = value(&Settings::maxDimension),
            .minimum = 1,
            .maximum = 100'000,
            .unit = imagingText("px"),
            .choices = {
                {0, imagingText("Keep original"), {QStringLiteral("keep"), QStringLiteral("original")}},
                pixels(3840), pixels(2560), pixels(1920), pixels(1280), pixels(800),
            },
            .acceptsOtherNumbers = true,
        },
        {
            .kind = PromptField::Kind::choice,
            .key = recordKey(&Settings::format),
            .label = imagingText("Format"),
            .option = QStringLiteral("format"),
            .value = value(&Settings::format),
            .choices = {
                {spelling(Settings::Format::jpeg), imagingText("JPEG"), {QStringLiteral("jpg")}},
                {spelling(Settings::Format::heic), imagingText("HEIC"), {QStringLiteral("heif")}},
            },
        },
    };

    return {
        .title = imagingText("Compress"),
        .fields = std::move(fields),
        .confirmText = fileCount == 1 ? imagingText("Compress image")
                                      : imagingText("Compress %1 images").arg(fileCount),
        .cancelText = imagingText("Cancel"),
    };
}

}  // namespace wendrel
