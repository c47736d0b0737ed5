#pragma once

#include "QualityLevel.h"
#include "RecordFields.h"

#include <QJsonObject>
#include <QString>

#include <optional>

namespace wendrel {

// What the user asked of PDF compression last time. Stored under "pdfCompressionSettings".
struct PDFCompressionSettings {
    enum class Mode { quality, targetSize };

    Mode mode = Mode::quality;
    QualityLevel quality = QualityLevel::balanced;
    double targetMB = 2.0;   // megabytes of 1,000,000 bytes
    bool rasterize = false;  // "Save pages as images"

    static constexpr RawValues<Mode, const char*, 2> modeSpellings{{
        {Mode::quality, "quality"},
        {Mode::targetSize, "targetSize"},
    }};

    // The stored form: each member's key, once.
    static auto fields()
    {
        using Self = PDFCompressionSettings;
        return std::tuple{
            field("mode", &Self::mode, modeSpellings),
            field("quality", &Self::quality, qualityLevelSpellings),
            field("targetMB", &Self::targetMB),
            field("rasterize", &Self::rasterize),
        };
    }

    static QString defaultsKey() { return QStringLiteral("pdfCompressionSettings"); }
    static std::optional<PDFCompressionSettings> fromJson(const QJsonObject& object);
    QJsonObject toJson() const;

    static PDFCompressionSettings load();
    void save() const;

    friend bool operator==(const PDFCompressionSettings&, const PDFCompressionSettings&) = default;
};

}  // namespace wendrel
