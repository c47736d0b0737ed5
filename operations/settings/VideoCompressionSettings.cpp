#include "VideoCompressionSettings.h"

#include "StoredSettings.h"

namespace wendrel {

std::optional<VideoCompressionSettings> VideoCompressionSettings::fromJson(const QJsonObject& object)
{
    return recordFromJson<VideoCompressionSettings>(object);
}

QJsonObject VideoCompressionSettings::toJson() const { return recordToJson(*this); }

VideoCompressionSettings VideoCompressionSettings::load() { return loadStoredSettings<VideoCompressionSettings>(); }

void VideoCompressionSettings::save() const { saveStoredSettings(*this); }

}  // namespace wendrel
