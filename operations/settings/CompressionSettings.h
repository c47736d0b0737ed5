#pragma once

#include "RecordFields.h"

#include <QJsonObject>
#include <QString>

#include <optional>

namespace wendrel {

// What the user asked of image compression last time; the sheet opens with these values.
// Stored under "compressionSettings".
struct CompressionSettings {
    enum class Mode { targetSize, reduceBy, quality };
    enum class Format { jpeg, heic };

    Mode mode = Mode::targetSize;
    double targetMB = 1.0;         // megabytes of 1,000,000 bytes
    double reducePercent = 50.0;   // how much smaller than the input
    double qualityPercent = 75.0;  // encoder quality
    int maxDimension = 0;          // longest side in pixels; 0 = keep the size
    Format format = Format::jpeg;

    static constexpr RawValues<Mode, const char*, 3> modeSpellings{{
        {Mode::targetSize, "targetSize"},
        {Mode::reduceBy, "reduceBy"},
        {Mode::quality, "quality"},
    }};
    static constexpr RawValues<Format, const char*, 2> formatSpellings{{
        {Format::jpeg, "jpeg"},
        {Format::heic, "heic"},
    }};

    // The stored form: each member's key, once.
    static auto fields()
    {
        using Self = CompressionSettings;
        return std::tuple{
            field("mode", &Self::mode, modeSpellings),
            field("targetMB", &Self::targetMB),
            field("reducePercent", &Self::reducePercent),
            field("qualityPercent", &Self::qualityPercent),
            field("maxDimension", &Self::maxDimension),
            field("format", &Self::format, formatSpellings),
        };
    }

    static QString defaultsKey() { return QStringLiteral("compressionSettings"); }
    static std::optional<CompressionSettings> fromJson(const QJsonObject& object);
    QJsonObject toJson() const;

    static CompressionSettings load();
    void save() const;

    friend bool operator==(const CompressionSettings&, const CompressionSettings&) = default;
};

}  // namespace wendrel
