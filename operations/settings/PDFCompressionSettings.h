#pragma once

#include "QualityLevel.h"

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

    static QString defaultsKey() { return QStringLiteral("pdfCompressionSettings"); }
    static std::optional<PDFCompressionSettings> fromJson(const QJsonObject& object);
    QJsonObject toJson() const;

    static PDFCompressionSettings load();
    void save() const;

    friend bool operator==(const PDFCompressionSettings&, const PDFCompressionSettings&) = default;
};

}  // namespace wendrel
