#include "PDFCompressionSettings.h"

#include "StoredSettings.h"

namespace wendrel {

std::optional<PDFCompressionSettings> PDFCompressionSettings::fromJson(const QJsonObject& object)
{
    return recordFromJson<PDFCompressionSettings>(object);
}

QJsonObject PDFCompressionSettings::toJson() const { return recordToJson(*this); }

PDFCompressionSettings PDFCompressionSettings::load() { return loadStoredSettings<PDFCompressionSettings>(); }

void PDFCompressionSettings::save() const { saveStoredSettings(*this); }

}  // namespace wendrel
