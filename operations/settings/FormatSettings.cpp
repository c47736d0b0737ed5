#include "FormatSettings.h"

#include "StoredSettings.h"
#include "StrictJson.h"

namespace wendrel {

namespace {

using Self = FormatSettings;

constexpr RawValues<Self::ImageQuality, const char*, 3> imageQualityNames{{
    {Self::ImageQuality::smaller, "smaller"},
    {Self::ImageQuality::balanced, "balanced"},
    {Self::ImageQuality::higher, "higher"},
}};

constexpr RawValues<Self::PDFLayout, const char*, 2> pdfLayoutNames{{
    {Self::PDFLayout::editable, "editable"},
    {Self::PDFLayout::original, "original"},
}};

constexpr RawValues<Self::BitDepth, int, 5> bitDepthValues{{
    {Self::BitDepth::matchSource, 0},
    {Self::BitDepth::bits16, 16},
    {Self::BitDepth::bits24, 24},
    {Self::BitDepth::bits32, 32},
    {Self::BitDepth::float32, 33},
}};

constexpr RawValues<Self::VideoQuality, const char*, 3> videoQualityNames{{
    {Self::VideoQuality::maximum, "maximum"},
    {Self::VideoQuality::balanced, "balanced"},
    {Self::VideoQuality::smaller, "smaller"},
}};

}  // namespace

std::optional<FormatSettings> FormatSettings::fromJson(const QJsonObject& object)
{
    StrictJsonReader reader(object);
    FormatSettings settings;
    settings.imageQuality = reader.enumeration(QStringLiteral("imageQuality"), imageQualityNames);
    settings.keepMetadata = reader.boolean(QStringLiteral("keepMetadata"));
    settings.imageMaxDimension = reader.integer(QStringLiteral("imageMaxDimension"));
    settings.pdfLayout = reader.enumeration(QStringLiteral("pdfLayout"), pdfLayoutNames);
    settings.recognizeScans = reader.boolean(QStringLiteral("recognizeScans"));
    settings.audioBitrate = reader.integer(QStringLiteral("audioBitrate"));
    settings.bitDepth = reader.enumeration(QStringLiteral("bitDepth"), bitDepthValues);
    settings.videoQuality = reader.enumeration(QStringLiteral("videoQuality"), videoQualityNames);
    settings.videoMaxHeight = reader.integer(QStringLiteral("videoMaxHeight"));
    settings.gifFPS = reader.integer(QStringLiteral("gifFPS"));
    settings.gifMaxWidth = reader.integer(QStringLiteral("gifMaxWidth"));
    if (!reader.isValid())
        return std::nullopt;
    return settings;
}

QJsonObject FormatSettings::toJson() const
{
    return {
        {QStringLiteral("imageQuality"),
         QLatin1String(rawValueOf(imageQuality, imageQualityNames))},
        {QStringLiteral("keepMetadata"), keepMetadata},
        {QStringLiteral("imageMaxDimension"), imageMaxDimension},
        {QStringLiteral("pdfLayout"), QLatin1String(rawValueOf(pdfLayout, pdfLayoutNames))},
        {QStringLiteral("recognizeScans"), recognizeScans},
        {QStringLiteral("audioBitrate"), audioBitrate},
        {QStringLiteral("bitDepth"), rawValueOf(bitDepth, bitDepthValues)},
        {QStringLiteral("videoQuality"),
         QLatin1String(rawValueOf(videoQuality, videoQualityNames))},
        {QStringLiteral("videoMaxHeight"), videoMaxHeight},
        {QStringLiteral("gifFPS"), gifFPS},
        {QStringLiteral("gifMaxWidth"), gifMaxWidth},
    };
}

FormatSettings FormatSettings::load() { return loadStoredSettings<FormatSettings>(); }

void FormatSettings::save() const { saveStoredSettings(*this); }

}  // namespace wendrel
