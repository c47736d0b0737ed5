#include "PDFCompressionSettings.h"

#include "StoredSettings.h"
#include "StrictJson.h"

namespace wendrel {

namespace {

using Self = PDFCompressionSettings;

constexpr RawValues<Self::Mode, const char*, 2> modeNames{{
    {Self::Mode::quality, "quality"},
    {Self::Mode::targetSize, "targetSize"},
}};

constexpr RawValues<QualityLevel, const char*, 3> qualityLevelNames{{
    {QualityLevel::high, "high"},
    {QualityLevel::balanced, "balanced"},
    {QualityLevel::small, "small"},
}};

}  // namespace

std::optional<PDFCompressionSettings> PDFCompressionSettings::fromJson(const QJsonObject& object)
{
    StrictJsonReader reader(object);
    PDFCompressionSettings settings;
    settings.mode = reader.enumeration(QStringLiteral("mode"), modeNames);
    settings.quality = reader.enumeration(QStringLiteral("quality"), qualityLevelNames);
    settings.targetMB = reader.number(QStringLiteral("targetMB"));
    settings.rasterize = reader.boolean(QStringLiteral("rasterize"));
    if (!reader.isValid())
        return std::nullopt;
    return settings;
}

QJsonObject PDFCompressionSettings::toJson() const
{
    return {
        {QStringLiteral("mode"), QLatin1String(rawValueOf(mode, modeNames))},
        {QStringLiteral("quality"), QLatin1String(rawValueOf(quality, qualityLevelNames))},
        {QStringLiteral("targetMB"), targetMB},
        {QStringLiteral("rasterize"), rasterize},
    };
}

PDFCompressionSettings PDFCompressionSettings::load()
{
    return loadStoredSettings<PDFCompressionSettings>();
}

void PDFCompressionSettings::save() const { saveStoredSettings(*this); }

}  // namespace wendrel
