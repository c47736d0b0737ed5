#include "CompressionSettingsView.h"

#include "imaging/ImageEntries.h"

namespace wendrel {

namespace {

// Each condition names the mode under its stored spelling.
PromptCondition whenMode(const char* mode)
{
    return {QStringLiteral("mode"), {QJsonValue(QLatin1String(mode))}};
}

}  // namespace

PromptRequest compressionSettingsView(const CompressionSettings& startingValues, qsizetype fileCount)
{
    const QJsonObject values = startingValues.toJson();
    const auto value = [&](const char* key) { return values.value(QLatin1String(key)); };
    const auto pixels = [](int side) {
        return PromptChoice{side, imagingText("%1 px").arg(side)};
    };

    QList<PromptField> fields{
        {
            .kind = PromptField::Kind::choice,
            .key = QStringLiteral("mode"),
            .label = imagingText("Mode"),
            .option = QStringLiteral("mode"),
            .value = value("mode"),
            .choices = {
                {QStringLiteral("targetSize"), imagingText("To file size"), {QStringLiteral("size"), QStringLiteral("target")}},
                {QStringLiteral("reduceBy"), imagingText("Reduce by percent"), {QStringLiteral("reduce"), QStringLiteral("percent")}},
                {QStringLiteral("quality"), imagingText("By quality")},
            },
            .choiceStyle = PromptField::ChoiceStyle::segmented,
        },
        {
            .kind = PromptField::Kind::number,
            .key = QStringLiteral("targetMB"),
            .label = imagingText("Size"),
            .option = QStringLiteral("target-mb"),
            .value = value("targetMB"),
            .minimum = 0.01,
            .maximum = 10'000,
            .decimals = 2,
            .step = 0.1,
            .unit = imagingText("MB or less"),
            .shownWhen = whenMode("targetSize"),
        },
        {
            .kind = PromptField::Kind::slider,
            .key = QStringLiteral("reducePercent"),
            .label = imagingText("Smaller by"),
            .option = QStringLiteral("reduce"),
            .value = value("reducePercent"),
            .minimum = 1,
            .maximum = 99,
            .valueFormat = imagingText("Smaller by %1%"),
            .shownWhen = whenMode("reduceBy"),
        },
        {
            .kind = PromptField::Kind::slider,
            .key = QStringLiteral("qualityPercent"),
            .label = imagingText("Quality"),
            .option = QStringLiteral("quality"),
            .value = value("qualityPercent"),
            .minimum = 1,
            .maximum = 100,
            .valueFormat = imagingText("Quality %1%"),
            .shownWhen = whenMode("quality"),
        },
        {
            .kind = PromptField::Kind::choice,
            .key = QStringLiteral("maxDimension"),
            .label = imagingText("Longest side"),
            .option = QStringLiteral("max-dimension"),
            .value = value("maxDimension"),
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
            .key = QStringLiteral("format"),
            .label = imagingText("Format"),
            .option = QStringLiteral("format"),
            .value = value("format"),
            .choices = {
                {QStringLiteral("jpeg"), imagingText("JPEG"), {QStringLiteral("jpg")}},
                {QStringLiteral("heic"), imagingText("HEIC"), {QStringLiteral("heif")}},
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
