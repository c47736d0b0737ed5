#include "VideoCompressionSettingsView.h"

#include "media/ffmpeg/MediaErrors.h"

namespace wendrel::media {

namespace {

using Settings = VideoCompressionSettings;

// Shows a field only in one mode.
PromptCondition whenMode(Settings::Mode mode)
{
    return {recordKey(&Settings::mode), {storedSpelling(&Settings::mode, mode)}};
}

QJsonValue spelling(Settings::Mode mode) { return storedSpelling(&Settings::mode, mode); }
QJsonValue spelling(QualityLevel level) { return storedSpelling(&Settings::quality, level); }
QJsonValue spelling(Settings::Codec codec) { return storedSpelling(&Settings::codec, codec); }

}  // namespace

PromptRequest videoCompressionSettingsView(const VideoCompressionSettings& startingValues, qsizetype fileCount)
{
    const auto value = [&](auto member) { return recordValue(startingValues, member); };
    const auto lines = [](int height, QStringList aliases = {}) {
        return PromptChoice{height, mediaText("%1p").arg(height), std::move(aliases)};
    };

    QList<PromptField> fields{
        {
            .kind = PromptField::Kind::choice,
            .key = recordKey(&Settings::mode),
            .label = mediaText("Mode"),
            .option = QStringLiteral("mode"),
            .value = value(&Settings::mode),
            .choices = {
                {spelling(Settings::Mode::quality), mediaText("By quality")},
                {spelling(Settings::Mode::targetSize), mediaText("To file size"), {QStringLiteral("size"), QStringLiteral("target")}},
            },
            .choiceStyle = PromptField::ChoiceStyle::segmented,
        },
        {
            .kind = PromptField::Kind::choice,
            .key = recordKey(&Settings::quality),
            .label = mediaText("Quality"),
            .option = QStringLiteral("quality"),
            .value = value(&Settings::quality),
            .choices = {
                {spelling(QualityLevel::high), mediaText("High")},
                {spelling(QualityLevel::balanced), mediaText("Balanced")},
                {spelling(QualityLevel::small), mediaText("Small"), {QStringLiteral("smallest")}},
            },
            .shownWhen = whenMode(Settings::Mode::quality),
        },
        {
            .kind = PromptField::Kind::number,
            .key = recordKey(&Settings::targetMB),
            .label = mediaText("Size"),
            .option = QStringLiteral("target-mb"),
            .value = value(&Settings::targetMB),
            // Below a tenth of a megabyte no video keeps a watchable picture.
            .minimum = 0.1,
            .maximum = 100'000,
            .decimals = 1,
            .step = 1,
            .unit = mediaText("MB or less"),
            .shownWhen = whenMode(Settings::Mode::targetSize),
        },
        {
            .kind = PromptField::Kind::choice,
            .key = recordKey(&Settings::maxHeight),
            .label = mediaText("Resolution"),
            .option = QStringLiteral("max-height"),
            .value = value(&Settings::maxHeight),
            // Another height, for a picture between the usual ones; never enlarged.
            .minimum = 16,
            .maximum = 8640,
            .unit = mediaText("px high"),
            .choices = {
                {0, mediaText("Original"), {QStringLiteral("keep")}},
                lines(2160, {QStringLiteral("4k")}), lines(1080), lines(720), lines(480),
            },
            .acceptsOtherNumbers = true,
        },
        {
            .kind = PromptField::Kind::choice,
            .key = recordKey(&Settings::codec),
            .label = mediaText("Format"),
            .option = QStringLiteral("codec"),
            .value = value(&Settings::codec),
            .choices = {
                {spelling(Settings::Codec::h264), mediaText("H.264"), {QStringLiteral("avc"), QStringLiteral("x264")}},
                {spelling(Settings::Codec::hevc), mediaText("HEVC"), {QStringLiteral("h265"), QStringLiteral("x265")}},
            },
            .choiceStyle = PromptField::ChoiceStyle::segmented,
            .caption = mediaText("H.264 plays everywhere. HEVC makes smaller files, but some older devices can't play them."),
        },
    };

    return {
        .title = mediaText("Compress"),
        .message = fileCount == 1 ? mediaText("Compress video") : mediaText("Compress %1 videos").arg(fileCount),
        .fields = std::move(fields),
        .confirmText = mediaText("Compress"),
        .cancelText = mediaText("Cancel"),
    };
}

}  // namespace wendrel::media
