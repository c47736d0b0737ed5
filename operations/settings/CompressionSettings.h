#pragma once

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

    static QString defaultsKey() { return QStringLiteral("compressionSettings"); }
    static std::optional<CompressionSettings> fromJson(const QJsonObject& object);
    QJsonObject toJson() const;

    static CompressionSettings load();
    void save() const;

    friend bool operator==(const CompressionSettings&, const CompressionSettings&) = default;
};

}  // namespace wendrel
