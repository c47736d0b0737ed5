#include "CompressionSettings.h"

#include "StoredSettings.h"
#include "StrictJson.h"

namespace wendrel {

namespace {

using Self = CompressionSettings;

constexpr RawValues<Self::Mode, const char*, 3> modeNames{{
    {Self::Mode::targetSize, "targetSize"},
    {Self::Mode::reduceBy, "reduceBy"},
    {Self::Mode::quality, "quality"},
}};

constexpr RawValues<Self::Format, const char*, 2> formatNames{{
    {Self::Format::jpeg, "jpeg"},
    {Self::Format::heic, "heic"},
}};

}  // namespace

std::optional<CompressionSettings> CompressionSettings::fromJson(const QJsonObject& object)
{
    StrictJsonReader reader(object);
    CompressionSettings settings;
    settings.mode = reader.enumeration(QStringLiteral("mode"), modeNames);
    settings.targetMB = reader.number(QStringLiteral("targetMB"));
    settings.reducePercent = reader.number(QStringLiteral("reducePercent"));
    settings.qualityPercent = reader.number(QStringLiteral("qualityPercent"));
    settings.maxDimension = reader.integer(QStringLiteral("maxDimension"));
    settings.format = reader.enumeration(QStringLiteral("format"), formatNames);
    if (!reader.isValid())
        return std::nullopt;
    return settings;
}

QJsonObject CompressionSettings::toJson() const
{
    return {
        {QStringLiteral("mode"), QLatin1String(rawValueOf(mode, modeNames))},
        {QStringLiteral("targetMB"), targetMB},
        {QStringLiteral("reducePercent"), reducePercent},
        {QStringLiteral("qualityPercent"), qualityPercent},
        {QStringLiteral("maxDimension"), maxDimension},
        {QStringLiteral("format"), QLatin1String(rawValueOf(format, formatNames))},
    };
}

CompressionSettings CompressionSettings::load() { return loadStoredSettings<CompressionSettings>(); }

void CompressionSettings::save() const { saveStoredSettings(*this); }

}  // namespace wendrel
