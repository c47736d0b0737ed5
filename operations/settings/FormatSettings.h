#pragma once

#include "RecordFields.h"

#include <QJsonObject>
#include <QString>

#include <optional>

namespace wendrel {

// The user's choices that the conversions read: image quality and metadata, the largest image
// side, how a PDF becomes a document, audio bitrate and depth, video quality and height, and
// GIF frame rate and width. Stored under "formatSettings"; read afresh by each conversion.
struct FormatSettings {
    enum class ImageQuality { smaller, balanced, higher };
    enum class PDFLayout { editable, original };
    // The raw values are stored numbers; 33 (not 32) marks 32-bit float.
    enum class BitDepth { matchSource = 0, bits16 = 16, bits24 = 24, bits32 = 32, float32 = 33 };
    enum class VideoQuality { maximum, balanced, smaller };

    ImageQuality imageQuality = ImageQuality::balanced;
    bool keepMetadata = true;
    int imageMaxDimension = 0;  // pixels; 0 = no limit
    PDFLayout pdfLayout = PDFLayout::editable;
    bool recognizeScans = true;
    int audioBitrate = 256;  // kbit/s
    BitDepth bitDepth = BitDepth::matchSource;
    VideoQuality videoQuality = VideoQuality::maximum;
    int videoMaxHeight = 0;  // pixels; 0 = no limit
    int gifFPS = 15;
    int gifMaxWidth = 640;

    static constexpr RawValues<ImageQuality, const char*, 3> imageQualitySpellings{{
        {ImageQuality::smaller, "smaller"},
        {ImageQuality::balanced, "balanced"},
        {ImageQuality::higher, "higher"},
    }};
    static constexpr RawValues<PDFLayout, const char*, 2> pdfLayoutSpellings{{
        {PDFLayout::editable, "editable"},
        {PDFLayout::original, "original"},
    }};
    static constexpr RawValues<BitDepth, int, 5> bitDepthValues{{
        {BitDepth::matchSource, 0},
        {BitDepth::bits16, 16},
        {BitDepth::bits24, 24},
        {BitDepth::bits32, 32},
        {BitDepth::float32, 33},
    }};
    static constexpr RawValues<VideoQuality, const char*, 3> videoQualitySpellings{{
        {VideoQuality::maximum, "maximum"},
        {VideoQuality::balanced, "balanced"},
        {VideoQuality::smaller, "smaller"},
    }};

    // The stored form: each member's key, once.
    static auto fields()
    {
        using Self = FormatSettings;
        return std::tuple{
            field("imageQuality", &Self::imageQuality, imageQualitySpellings),
            field("keepMetadata", &Self::keepMetadata),
            field("imageMaxDimension", &Self::imageMaxDimension),
            field("pdfLayout", &Self::pdfLayout, pdfLayoutSpellings),
            field("recognizeScans", &Self::recognizeScans),
            field("audioBitrate", &Self::audioBitrate),
            field("bitDepth", &Self::bitDepth, bitDepthValues),
            field("videoQuality", &Self::videoQuality, videoQualitySpellings),
            field("videoMaxHeight", &Self::videoMaxHeight),
            field("gifFPS", &Self::gifFPS),
            field("gifMaxWidth", &Self::gifMaxWidth),
        };
    }

    static QString defaultsKey() { return QStringLiteral("formatSettings"); }
    static std::optional<FormatSettings> fromJson(const QJsonObject& object);
    QJsonObject toJson() const;

    static FormatSettings load();
    void save() const;

    friend bool operator==(const FormatSettings&, const FormatSettings&) = default;
};

}  // namespace wendrel
