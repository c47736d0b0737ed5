#include "CompressionSettings.h"

#include "StoredSettings.h"

namespace wendrel {

std::optional<CompressionSettings> CompressionSettings::fromJson(const QJsonObject& object)
{
    return recordFromJson<CompressionSettings>(object);
}

QJsonObject CompressionSettings::toJson() const { return recordToJson(*this); }

CompressionSettings CompressionSettings::load() { return loadStoredSettings<CompressionSettings>(); }

void CompressionSettings::save() const { saveStoredSettings(*this); }

}  // namespace wendrel
