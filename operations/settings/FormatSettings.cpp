#include "FormatSettings.h"

#include "StoredSettings.h"

namespace wendrel {

std::optional<FormatSettings> FormatSettings::fromJson(const QJsonObject& object)
{
    return recordFromJson<FormatSettings>(object);
}

QJsonObject FormatSettings::toJson() const { return recordToJson(*this); }

FormatSettings FormatSettings::load() { return loadStoredSettings<FormatSettings>(); }

void FormatSettings::save() const { saveStoredSettings(*this); }

}  // namespace wendrel
