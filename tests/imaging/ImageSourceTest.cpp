#include "imaging/ImageSource.h"
#include "imaging/PngStructure.h"

#include "TestPictures.h"
#include "operations/OperationError.h"
#include "support/TestEnvironment.h"

#include <QBuffer>
#include <QTemporaryDir>
#include <QtEndian>

#include <sys/stat.h>

#include <gtest/gtest.h>
#include <zlib.h>

using namespace wendrel;
using namespace wendrel::test;
using vips::VImage;

namespace {

class ImageSourceTest : public ::testing::Test {
protected:
    QString path(const char* name) const { return folder.filePath(QString::fromUtf8(name)); }

    void expectUnreadable(const QString& file)
    {
        try {
            loadImage(file);
            ADD_FAILURE() << "loaded " << file.toStdString();
        } catch (const OperationError& error) {
            EXPECT_EQ(error.message(), u"Can't read this image");
        }
    }

    QTemporaryDir folder;
};

QByteArray pngChunk(const char* type, const QByteArray& data, std::optional<quint32> claimedLength = std::nullopt)
{
    QByteArray bytes(4, '\0');
    qToBigEndian(claimedLength.value_or(quint32(data.size())), bytes.data());
    const QByteArray body = QByteArray(type) + data;
    bytes += body;
    QByteArray crc(4, '\0');
    qToBigEndian(quint32(crc32(0, reinterpret_cast<const Bytef*>(body.constData()), uInt(body.size()))), crc.data());
    return bytes + crc;
}

// A PNG whose header claims `width` x `height` pixels but holds almost no data, with `extra`
// chunks before its pixels.
QByteArray pngClaiming(quint32 width, quint32 height, const QByteArray& extra = {})
{
    const auto chunk = [](const char* type, const QByteArray& data) { return pngChunk(type, data); };
    QByteArray header(13, '\0');
    qToBigEndian(width, header.data());
    qToBigEndian(height, header.data() + 4);
    header[8] = 8;  // bit depth
    header[9] = 2;  // RGB
    return QByteArray("\x89PNG\r\n\x1a\n", 8) + chunk("IHDR", header) + extra
           + chunk("IDAT", qCompress(QByteArray(16, '\0')).mid(4)) + chunk("IEND", {});
}

}  // namespace

// Stored landscape, red on the left: orientation 6 asks viewers to turn it clockwise, 8
// counter-clockwise. Loads come upright, also when scaled, and forget the orientation.
TEST_F(ImageSourceTest, AppliesTheOrientationAndForgetsIt)
{
    VImage stored = twoColours(40, 20).copy();
    stored.set("orientation", 6);
    save(stored, path("turned.jpg[Q=95,strip=false]"));
    const VImage upright = loadImage(path("turned.jpg"));
    EXPECT_EQ(upright.width(), 20);
    EXPECT_EQ(upright.height(), 40);
    EXPECT_GT(pixel(upright, 10, 5)[0], 180);   // red went to the top
    EXPECT_GT(pixel(upright, 10, 35)[2], 180);  // blue to the bottom
    EXPECT_FALSE(upright.get_typeof("orientation") && upright.get_int("orientation") != 1);
    EXPECT_EQ(ImageSource(path("turned.jpg")).uprightSize(), QSize(20, 40));

    VImage large = twoColours(400, 200).copy();
    large.set("orientation", 8);
    save(large, path("left.jpg[Q=95,strip=false]"));
    const VImage scaled = ImageSource(path("left.jpg")).decodeScaled(QSize(51, 99));
    EXPECT_EQ(scaled.width(), 51);
    EXPECT_EQ(scaled.height(), 99);
    EXPECT_GT(pixel(scaled, 25, 90)[0], 180);  // red ends at the bottom
}

TEST_F(ImageSourceTest, ColourIsStandardisedTo8BitSrgbOrGrey)
{
    save(photoLike(32, 24).colourspace(VIPS_INTERPRETATION_CMYK), path("cmyk.jpg"));
    save(photoLike(32, 24).colourspace(VIPS_INTERPRETATION_RGB16), path("deep.png"));
    save(photoLike(32, 24).colourspace(VIPS_INTERPRETATION_B_W), path("grey.png"));
    save(transparentDisc(32).cast(VIPS_FORMAT_USHORT) * 257, path("deep_alpha.png"));

    const VImage cmyk = loadImage(path("cmyk.jpg"));
    EXPECT_EQ(cmyk.bands(), 3);
    EXPECT_EQ(cmyk.format(), VIPS_FORMAT_UCHAR);
    EXPECT_EQ(cmyk.interpretation(), VIPS_INTERPRETATION_sRGB);

    const VImage deep = loadImage(path("deep.png"));
    EXPECT_EQ(deep.format(), VIPS_FORMAT_UCHAR);
    EXPECT_NEAR(pixel(deep, 16, 12)[0], pixel(photoLike(32, 24), 16, 12)[0], 2);

    const VImage grey = loadImage(path("grey.png"));
    EXPECT_EQ(grey.bands(), 1);

    const VImage deepAlpha = loadImage(path("deep_alpha.png"));
    EXPECT_EQ(deepAlpha.bands(), 4);
    EXPECT_EQ(deepAlpha.format(), VIPS_FORMAT_UCHAR);
    EXPECT_EQ(pixel(deepAlpha, 16, 16)[3], 255);
    EXPECT_EQ(pixel(deepAlpha, 0, 0)[3], 0);
}

// An animation gives its first frame; pictures of a pixel or a pixel wide load too.
TEST_F(ImageSourceTest, AnimationsAndTinyPictures)
{
    const VImage first = VImage::black(30, 20, VImage::option()->set("bands", 3)) + std::vector<double>{250, 0, 0};
    const VImage second = VImage::black(30, 20, VImage::option()->set("bands", 3)) + std::vector<double>{0, 0, 250};
    VImage frames = first.join(second, VIPS_DIRECTION_VERTICAL).cast(VIPS_FORMAT_UCHAR).copy();
    frames.set("page-height", 20);
    save(frames.copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB)), path("anim.gif"));
    const VImage loaded = loadImage(path("anim.gif"));
    EXPECT_EQ(loaded.height(), 20);
    EXPECT_GT(pixel(loaded, 15, 10)[0], 200);

    save(photoLike(1, 1), path("one.png"));
    save(photoLike(2, 100), path("tall.png"));
    EXPECT_EQ(loadImage(path("one.png")).width(), 1);
    EXPECT_EQ(loadImage(path("tall.png")).height(), 100);
}

TEST_F(ImageSourceTest, BrokenFilesAreUnreadable)
{
    save(photoLike(300, 200), path("whole.jpg"));
    const QByteArray whole = readFile(path("whole.jpg"));
    writeFile(path("truncated.jpg"), whole.left(whole.size() / 2));
    writeFile(path("text.jpg"), "this is not a picture\n");
    writeFile(path("empty.png"), {});
    QByteArray corrupt = whole;
    for (qsizetype index = 200; index < corrupt.size(); index += 7)
        corrupt[index] = char(0xFF);
    writeFile(path("corrupt.jpg"), corrupt);

    for (const char* name : {"truncated.jpg", "text.jpg", "empty.png", "missing.png"})
        expectUnreadable(path(name));
    try {
        loadImage(path("corrupt.jpg"));  // may decode with damage, but never crashes
    } catch (const OperationError& error) {
        EXPECT_EQ(error.message(), u"Can't read this image");
    }
}

// Files that claim more than they hold are refused at the header, before anything is
// allocated: each of these once kept an entry busy for many seconds and gigabytes.
TEST_F(ImageSourceTest, HostileHeadersAreRefusedBeforeAnyLargeAllocation)
{
    writeFile(path("huge.png"), pngClaiming(100'000, 100'000));
    const QStringList hostile{path("huge.png"),
                              QStringLiteral(WENDREL_TEST_DATA "/png-text-chunk-claiming-2GiB.png")};
    for (const QString& file : hostile) {
        expectUnreadable(file);
        try {
            ImageSource{file};
            ADD_FAILURE() << "opened " << file.toStdString();
        } catch (const OperationError&) {
        }
    }
    // Not a regular file: a pipe named like a picture is refused, not waited on.
    ASSERT_EQ(::mkfifo(QFile::encodeName(path("pipe.png")).constData(), 0600), 0);
    expectUnreadable(path("pipe.png"));
}

TEST(PngStructure, ChunksThatClaimMoreThanTheFileHoldsAreFaults)
{
    struct Row {
        const char* name;
        QByteArray bytes;
        bool sound;
    };
    const QByteArray text = pngChunk("tEXt", "Comment\0hello");
    const QList<Row> rows{
        {"a plain picture", pngClaiming(4, 4), true},
        {"with a text chunk", pngClaiming(4, 4, text), true},
        {"not a PNG at all", "GIF89a....", true},
        {"a chunk claiming 2 GiB", pngClaiming(4, 4, pngChunk("tEXt", "x", 0x7fffffff)), false},
        {"a chunk past the end", pngClaiming(4, 4, pngChunk("zTXt", "x", 4000)), false},
        {"beyond the format's limit", pngClaiming(4, 4, pngChunk("iCCP", "x", 0x80000001)), false},
        {"a side chunk over the limit", pngClaiming(4, 4, pngChunk("eXIf", QByteArray(300, 'x'))), false},
        {"cut inside a chunk header", pngClaiming(4, 4).left(20), false},
    };
    for (const Row& row : rows) {
        QByteArray bytes = row.bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::ReadOnly);
        EXPECT_EQ(!pngStructureProblem(buffer, 256).has_value(), row.sound) << row.name;
    }
}

// Cancelling stops the reading of a picture: from the start, or once it is open.
TEST_F(ImageSourceTest, CancellationStopsTheReading)
{
    save(photoLike(2000, 1500), path("photo.png"));
    bool cancelled = false;
    ImageSource source(path("photo.png"), [&] { return cancelled; });
    EXPECT_EQ(source.uprightSize(), QSize(2000, 1500));
    cancelled = true;
    EXPECT_THROW(source.decode(), OperationCancelled);
    EXPECT_THROW(ImageSource(path("photo.png"), [] { return true; }), OperationCancelled);
}
