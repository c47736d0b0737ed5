#include "operations/settings/CompressionSettings.h"
#include "operations/settings/FormatSettings.h"
#include "operations/settings/PDFCompressionSettings.h"
#include "operations/settings/SettingsStore.h"

#include "support/TestEnvironment.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>

#include <gtest/gtest.h>

using namespace wendrel;

namespace {

// Stores raw JSON text under a key, as an older or a damaged build might have left it.
void storeRaw(const QString& key, const char* json)
{
    SettingsStore::setText(key, QString::fromUtf8(json));
}

class StoredSettingsTest : public ::testing::Test {
protected:
    void SetUp() override { QFile::remove(SettingsStore::filePath()); }
    void TearDown() override { QFile::remove(SettingsStore::filePath()); }
};

}  // namespace

TEST_F(StoredSettingsTest, FreshInstallationReadsTheDefaults)
{
    const FormatSettings settings = FormatSettings::load();
    EXPECT_EQ(settings.imageQuality, FormatSettings::ImageQuality::balanced);
    EXPECT_TRUE(settings.keepMetadata);
    EXPECT_EQ(settings.imageMaxDimension, 0);
    EXPECT_EQ(settings.pdfLayout, FormatSettings::PDFLayout::editable);
    EXPECT_TRUE(settings.recognizeScans);
    EXPECT_EQ(settings.audioBitrate, 256);
    EXPECT_EQ(settings.bitDepth, FormatSettings::BitDepth::matchSource);
    EXPECT_EQ(settings.videoQuality, FormatSettings::VideoQuality::maximum);
    EXPECT_EQ(settings.videoMaxHeight, 0);
    EXPECT_EQ(settings.gifFPS, 15);
    EXPECT_EQ(settings.gifMaxWidth, 640);

    const CompressionSettings compression = CompressionSettings::load();
    EXPECT_EQ(compression.mode, CompressionSettings::Mode::targetSize);
    EXPECT_EQ(compression.targetMB, 1.0);
    EXPECT_EQ(compression.reducePercent, 50.0);
    EXPECT_EQ(compression.qualityPercent, 75.0);
    EXPECT_EQ(compression.maxDimension, 0);
    EXPECT_EQ(compression.format, CompressionSettings::Format::jpeg);

    const PDFCompressionSettings pdf = PDFCompressionSettings::load();
    EXPECT_EQ(pdf.mode, PDFCompressionSettings::Mode::quality);
    EXPECT_EQ(pdf.quality, QualityLevel::balanced);
    EXPECT_EQ(pdf.targetMB, 2.0);
    EXPECT_FALSE(pdf.rasterize);
}

TEST_F(StoredSettingsTest, SavedRecordsReadBackAndLiveUnderXdgConfigHome)
{
    FormatSettings format;
    format.imageQuality = FormatSettings::ImageQuality::higher;
    format.keepMetadata = false;
    format.bitDepth = FormatSettings::BitDepth::float32;
    format.gifMaxWidth = 480;
    format.save();

    CompressionSettings compression;
    compression.mode = CompressionSettings::Mode::reduceBy;
    compression.reducePercent = 62.5;
    compression.format = CompressionSettings::Format::heic;
    compression.save();

    PDFCompressionSettings pdf;
    pdf.mode = PDFCompressionSettings::Mode::targetSize;
    pdf.quality = QualityLevel::small;
    pdf.rasterize = true;
    pdf.save();

    EXPECT_EQ(FormatSettings::load(), format);
    EXPECT_EQ(CompressionSettings::load(), compression);
    EXPECT_EQ(PDFCompressionSettings::load(), pdf);
    EXPECT_EQ(SettingsStore::filePath(), qEnvironmentVariable("XDG_CONFIG_HOME") + QStringLiteral("/Wendrel/Wendrel.conf"));
    EXPECT_TRUE(QFileInfo::exists(SettingsStore::filePath()));
}

TEST_F(StoredSettingsTest, StoredFormUsesTheFieldNamesAndRawValues)
{
    FormatSettings format;
    format.bitDepth = FormatSettings::BitDepth::float32;
    format.save();
    const QJsonObject stored =
        QJsonDocument::fromJson(SettingsStore::text(QStringLiteral("formatSettings"))->toUtf8()).object();
    EXPECT_EQ(stored.keys(),
              (QStringList{QStringLiteral("audioBitrate"), QStringLiteral("bitDepth"), QStringLiteral("gifFPS"),
                           QStringLiteral("gifMaxWidth"), QStringLiteral("imageMaxDimension"),
                           QStringLiteral("imageQuality"), QStringLiteral("keepMetadata"),
                           QStringLiteral("pdfLayout"), QStringLiteral("recognizeScans"),
                           QStringLiteral("videoMaxHeight"), QStringLiteral("videoQuality")}));
    EXPECT_EQ(stored.value(QStringLiteral("bitDepth")).toInt(), 33);
    EXPECT_EQ(stored.value(QStringLiteral("imageQuality")).toString(), u"balanced");
}

TEST_F(StoredSettingsTest, RecordMissingAFieldGivesAllDefaults)
{
    // Written by an older version without gifMaxWidth: the stored fields are not kept either.
    storeRaw(QStringLiteral("formatSettings"),
             R"({"imageQuality":"higher","keepMetadata":false,"imageMaxDimension":1000,"pdfLayout":"original",)"
             R"("recognizeScans":false,"audioBitrate":128,"bitDepth":24,"videoQuality":"smaller",)"
             R"("videoMaxHeight":720,"gifFPS":10})");
    EXPECT_EQ(FormatSettings::load(), FormatSettings{});
}

TEST_F(StoredSettingsTest, BitDepthCodeDecidesTheCase)
{
    const char* prefix =
        R"({"imageQuality":"balanced","keepMetadata":true,"imageMaxDimension":0,"pdfLayout":"editable",)"
        R"("recognizeScans":true,"audioBitrate":256,"videoQuality":"maximum","videoMaxHeight":0,"gifFPS":15,)"
        R"("gifMaxWidth":320,"bitDepth":)";
    storeRaw(QStringLiteral("formatSettings"), (std::string(prefix) + "33}").c_str());
    EXPECT_EQ(FormatSettings::load().bitDepth, FormatSettings::BitDepth::float32);
    EXPECT_EQ(FormatSettings::load().gifMaxWidth, 320);

    storeRaw(QStringLiteral("formatSettings"), (std::string(prefix) + "8}").c_str());
    EXPECT_EQ(FormatSettings::load(), FormatSettings{});
}

TEST_F(StoredSettingsTest, WrongTypesAndUnknownCasesGiveDefaults)
{
    const char* damaged[] = {
        R"({"mode":"smallest","targetMB":1.5,"reducePercent":50,"qualityPercent":75,"maxDimension":0,"format":"jpeg"})",
        R"({"mode":"quality","targetMB":"1.5","reducePercent":50,"qualityPercent":75,"maxDimension":0,"format":"jpeg"})",
        R"({"mode":"quality","targetMB":1.5,"reducePercent":50,"qualityPercent":75,"maxDimension":10.5,"format":"jpeg"})",
        R"({"mode":"quality","targetMB":1.5,"reducePercent":50,"qualityPercent":75,"maxDimension":0,"format":null})",
        R"(["mode","quality"])",
        R"({"mode":"quality", truncated)",
        "",
    };
    for (const char* json : damaged) {
        storeRaw(QStringLiteral("compressionSettings"), json);
        EXPECT_EQ(CompressionSettings::load(), CompressionSettings{}) << json;
    }
    storeRaw(QStringLiteral("pdfCompressionSettings"),
             R"({"mode":"quality","quality":"balanced","targetMB":3,"rasterize":1})");
    EXPECT_EQ(PDFCompressionSettings::load(), PDFCompressionSettings{});
}

TEST_F(StoredSettingsTest, ExtraFieldsAreIgnoredAndWholeNumbersReadAsDoubles)
{
    storeRaw(QStringLiteral("pdfCompressionSettings"),
             R"({"mode":"targetSize","quality":"high","targetMB":3,"rasterize":true,"addedLater":"x"})");
    PDFCompressionSettings expected;
    expected.mode = PDFCompressionSettings::Mode::targetSize;
    expected.quality = QualityLevel::high;
    expected.targetMB = 3.0;
    expected.rasterize = true;
    EXPECT_EQ(PDFCompressionSettings::load(), expected);
}
