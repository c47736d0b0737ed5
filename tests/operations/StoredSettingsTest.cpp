#include "operations/settings/CompressionSettings.h"
#include "operations/settings/FormatSettings.h"
#include "operations/settings/PDFCompressionSettings.h"
#include "operations/settings/SettingsStore.h"
#include "operations/settings/VideoCompressionSettings.h"

#include "support/TestEnvironment.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>

#include <gtest/gtest.h>

using namespace wendrel;

namespace {

class StoredSettingsTest : public ::testing::Test {
protected:
    void SetUp() override { QFile::remove(SettingsStore::filePath()); }
    void TearDown() override { QFile::remove(SettingsStore::filePath()); }
};

template <typename Record>
QByteArray storedText(const Record& record)
{
    record.save();
    return SettingsStore::text(Record::defaultsKey())->toUtf8();
}

}  // namespace

// The stored form of the defaults, to the byte: every key, spelling and default value at once.
// Changed records read back as they were saved, from the file under XDG_CONFIG_HOME.
TEST_F(StoredSettingsTest, RecordsAreStoredUnderTheirKeysAndReadBack)
{
    EXPECT_EQ(storedText(FormatSettings{}),
              R"({"audioBitrate":256,"bitDepth":0,"gifFPS":15,"gifMaxWidth":640,"imageMaxDimension":0,)"
              R"("imageQuality":"balanced","keepMetadata":true,"pdfLayout":"editable","recognizeScans":true,)"
              R"("videoMaxHeight":0,"videoQuality":"maximum"})");
    EXPECT_EQ(storedText(CompressionSettings{}),
              R"({"format":"jpeg","maxDimension":0,"mode":"targetSize","qualityPercent":75,"reducePercent":50,)"
              R"("targetMB":1})");
    EXPECT_EQ(storedText(PDFCompressionSettings{}),
              R"({"mode":"quality","quality":"balanced","rasterize":false,"targetMB":2})");
    EXPECT_EQ(storedText(VideoCompressionSettings{}),
              R"({"codec":"h264","maxHeight":0,"mode":"quality","quality":"balanced","targetMB":25})");

    FormatSettings format;
    format.imageQuality = FormatSettings::ImageQuality::higher;
    format.bitDepth = FormatSettings::BitDepth::float32;
    format.save();
    CompressionSettings compression;
    compression.mode = CompressionSettings::Mode::reduceBy;
    compression.reducePercent = 62.5;
    compression.format = CompressionSettings::Format::heic;
    compression.save();
    PDFCompressionSettings pdf;
    pdf.quality = QualityLevel::small;
    pdf.rasterize = true;
    pdf.save();
    VideoCompressionSettings video;
    video.mode = VideoCompressionSettings::Mode::targetSize;
    video.targetMB = 8.5;
    video.maxHeight = 720;
    video.codec = VideoCompressionSettings::Codec::hevc;
    video.save();
    EXPECT_EQ(FormatSettings::load(), format);
    EXPECT_EQ(CompressionSettings::load(), compression);
    EXPECT_EQ(PDFCompressionSettings::load(), pdf);
    EXPECT_EQ(VideoCompressionSettings::load(), video);
    EXPECT_EQ(SettingsStore::filePath(), qEnvironmentVariable("XDG_CONFIG_HOME") + QStringLiteral("/Wendrel/Wendrel.conf"));
    EXPECT_TRUE(QFileInfo::exists(SettingsStore::filePath()));
}

// A record is read completely or not at all: anything missing, mistyped or unknown gives the
// defaults, never a record merged field by field.
TEST_F(StoredSettingsTest, DamagedRecordsGiveTheDefaults)
{
    const QByteArray format =
        R"({"imageQuality":"balanced","keepMetadata":true,"imageMaxDimension":0,"pdfLayout":"editable",)"
        R"("recognizeScans":true,"audioBitrate":256,"videoQuality":"maximum","videoMaxHeight":0,"gifFPS":15,)";
    struct Row {
        const char* key;
        QByteArray json;
        bool readsAsStored;  // false: the defaults
    };
    const QList<Row> rows{
        {"formatSettings", format + R"("gifMaxWidth":320,"bitDepth":33})", true},
        {"formatSettings", format + R"("gifMaxWidth":320,"bitDepth":8})", false},  // no such depth
        {"formatSettings", format + R"("bitDepth":24})", false},                   // written before gifMaxWidth
        {"pdfCompressionSettings", R"({"mode":"targetSize","quality":"high","targetMB":3,"rasterize":true,"later":1})",
         true},
        {"pdfCompressionSettings", R"({"mode":"quality","quality":"balanced","targetMB":3,"rasterize":1})", false},
        {"compressionSettings",
         R"({"mode":"smallest","targetMB":1.5,"reducePercent":50,"qualityPercent":75,"maxDimension":0,"format":"jpeg"})",
         false},
        {"compressionSettings",
         R"({"mode":"quality","targetMB":"1.5","reducePercent":50,"qualityPercent":75,"maxDimension":0,"format":"jpeg"})",
         false},
        {"compressionSettings",
         R"({"mode":"quality","targetMB":1.5,"reducePercent":50,"qualityPercent":75,"maxDimension":10.5,"format":"jpeg"})",
         false},
        {"compressionSettings",
         R"({"mode":"quality","targetMB":1.5,"reducePercent":50,"qualityPercent":75,"maxDimension":0,"format":null})",
         false},
        {"videoCompressionSettings", R"({"mode":"targetSize","quality":"small","targetMB":5,"maxHeight":480,"codec":"hevc"})",
         true},
        {"videoCompressionSettings", R"({"mode":"targetSize","quality":"small","targetMB":5,"maxHeight":480,"codec":"av1"})",
         false},
        {"videoCompressionSettings", R"({"mode":"quality","quality":"high","targetMB":5,"maxHeight":720.5,"codec":"h264"})",
         false},
        {"videoCompressionSettings", R"({"mode":"quality","quality":"high","targetMB":5,"codec":"h264"})", false},
        {"compressionSettings", R"(["mode","quality"])", false},
        {"compressionSettings", R"({"mode":"quality", truncated)", false},
        {"compressionSettings", "", false},
    };
    for (const Row& row : rows) {
        SettingsStore::setText(QLatin1String(row.key), QString::fromUtf8(row.json));
        const QJsonObject stored = QJsonDocument::fromJson(row.json).object();
        if (QLatin1String(row.key) == u"formatSettings") {
            EXPECT_EQ(FormatSettings::load(), row.readsAsStored ? *FormatSettings::fromJson(stored) : FormatSettings{})
                << row.json.constData();
        } else if (QLatin1String(row.key) == u"pdfCompressionSettings") {
            EXPECT_EQ(PDFCompressionSettings::load(),
                      row.readsAsStored ? *PDFCompressionSettings::fromJson(stored) : PDFCompressionSettings{})
                << row.json.constData();
        } else if (QLatin1String(row.key) == u"videoCompressionSettings") {
            EXPECT_EQ(VideoCompressionSettings::load(),
                      row.readsAsStored ? *VideoCompressionSettings::fromJson(stored) : VideoCompressionSettings{})
                << row.json.constData();
        } else {
            EXPECT_EQ(CompressionSettings::load(), CompressionSettings{}) << row.json.constData();
        }
    }
    EXPECT_EQ(FormatSettings::fromJson(QJsonDocument::fromJson(format + R"("gifMaxWidth":320,"bitDepth":33})").object())
                  ->bitDepth,
              FormatSettings::BitDepth::float32);
}
