#pragma once

#include "QualityLevel.h"
#include "RecordFields.h"

#include <QJsonObject>
#include <QString>

#include <optional>

namespace wendrel {

// What the user asked of video compression last time. Stored under "videoCompressionSettings".
struct VideoCompressionSettings {
    enum class Mode { quality, targetSize };
    enum class Codec { h264, hevc };

    Mode mode = Mode::quality;
    QualityLevel quality = QualityLevel::balanced;
    // Megabytes of 1,000,000 bytes. 25 MB is what mail and chat services commonly take.
    double targetMB = 25.0;
    int maxHeight = 0;  // displayed height in pixels; 0 = the original's
    Codec codec = Codec::h264;

    static constexpr RawValues<Mode, const char*, 2> modeSpellings{{
        {Mode::quality, "quality"},
        {Mode::targetSize, "targetSize"},
    }};
    static constexpr RawValues<Codec, const char*, 2> codecSpellings{{
        {Codec::h264, "h264"},
        {Codec::hevc, "hevc"},
    }};

    // The stored form: each member's key, once.
    static auto fields()
    {
        using Self = VideoCompressionSettings;
        return std::tuple{
            field("mode", &Self::mode, modeSpellings),
            field("quality", &Self::quality, qualityLevelSpellings),
            field("targetMB", &Self::targetMB),
            field("maxHeight", &Self::maxHeight),
            field("codec", &Self::codec, codecSpellings),
        };
    }

    static QString defaultsKey() { return QStringLiteral("videoCompressionSettings"); }
    static std::optional<VideoCompressionSettings> fromJson(const QJsonObject& object);
    QJsonObject toJson() const;

    static VideoCompressionSettings load();
    void save() const;

    friend bool operator==(const VideoCompressionSettings&, const VideoCompressionSettings&) = default;
};

}  // namespace wendrel
