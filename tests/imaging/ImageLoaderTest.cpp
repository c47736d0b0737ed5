#include "imaging/ImageLoader.h"

#include "TestPictures.h"
#include "operations/OperationError.h"
#include "support/TestEnvironment.h"

#include <QTemporaryDir>
#include <QtEndian>

#include <gtest/gtest.h>
#include <zlib.h>

using namespace wendrel;
using namespace wendrel::test;
using vips::VImage;

namespace {

class ImageLoaderTest : public ::testing::Test {
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

// A PNG whose header claims `width` x `height` pixels but holds almost no data.
QByteArray pngClaiming(quint32 width, quint32 height)
{
    auto chunk = [](const char* type, const QByteArray& data) {
        QByteArray bytes(4, '\0');
        qToBigEndian(quint32(data.size()), bytes.data());
        const QByteArray body = QByteArray(type) + data;
        bytes += body;
        QByteArray crc(4, '\0');
        qToBigEndian(quint32(crc32(0, reinterpret_cast<const Bytef*>(body.constData()), uInt(body.size()))), crc.data());
        return bytes + crc;
    };
    QByteArray header(13, '\0');
    qToBigEndian(width, header.data());
    qToBigEndian(height, header.data() + 4);
    header[8] = 8;  // bit depth
    header[9] = 2;  // RGB
    return QByteArray("\x89PNG\r\n\x1a\n", 8) + chunk("IHDR", header) + chunk("IDAT", qCompress(QByteArray(16, '\0')).mid(4))
           + chunk("IEND", {});
}

}  // namespace

TEST_F(ImageLoaderTest, AppliesTheOrientationAndForgetsIt)
{
    // Stored landscape, red on the left; orientation 6 asks viewers to turn it clockwise.
    VImage stored = twoColours(40, 20).copy();
    stored.set("orientation", 6);
    save(stored, path("turned.jpg[Q=95,strip=false]"));

    const VImage upright = loadImage(path("turned.jpg"));
    EXPECT_EQ(upright.width(), 20);
    EXPECT_EQ(upright.height(), 40);
    EXPECT_GT(pixel(upright, 10, 5)[0], 180);   // red went to the top
    EXPECT_GT(pixel(upright, 10, 35)[2], 180);  // blue to the bottom
    EXPECT_FALSE(upright.get_typeof("orientation") && upright.get_int("orientation") != 1);
    EXPECT_EQ(uprightImageSize(path("turned.jpg")), QSize(20, 40));
}

TEST_F(ImageLoaderTest, ScaledLoadIsUprightAndExact)
{
    VImage stored = twoColours(400, 200).copy();
    stored.set("orientation", 8);  // turn counter-clockwise to view
    save(stored, path("turned.jpg[Q=95,strip=false]"));
    const VImage scaled = loadImageScaled(path("turned.jpg"), QSize(51, 99));
    EXPECT_EQ(scaled.width(), 51);
    EXPECT_EQ(scaled.height(), 99);
    EXPECT_GT(pixel(scaled, 25, 90)[0], 180);  // counter-clockwise: red (left) ends at the bottom
}

TEST_F(ImageLoaderTest, ColourIsStandardisedTo8BitSrgbOrGrey)
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

TEST_F(ImageLoaderTest, AnimationGivesItsFirstFrame)
{
    const VImage first = VImage::black(30, 20, VImage::option()->set("bands", 3)) + std::vector<double>{250, 0, 0};
    const VImage second = VImage::black(30, 20, VImage::option()->set("bands", 3)) + std::vector<double>{0, 0, 250};
    VImage frames = first.join(second, VIPS_DIRECTION_VERTICAL).cast(VIPS_FORMAT_UCHAR).copy();
    frames.set("page-height", 20);
    save(frames.copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB)), path("anim.gif"));

    const VImage loaded = loadImage(path("anim.gif"));
    EXPECT_EQ(loaded.height(), 20);
    EXPECT_GT(pixel(loaded, 15, 10)[0], 200);
}

TEST_F(ImageLoaderTest, TinyPicturesLoad)
{
    save(photoLike(1, 1), path("one.png"));
    save(photoLike(2, 100), path("tall.png"));
    EXPECT_EQ(loadImage(path("one.png")).width(), 1);
    EXPECT_EQ(loadImage(path("tall.png")).height(), 100);
}

TEST_F(ImageLoaderTest, BrokenFilesAreUnreadable)
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

TEST_F(ImageLoaderTest, HeaderClaimingBillionsOfPixelsIsRefusedBeforeDecoding)
{
    writeFile(path("huge.png"), pngClaiming(100'000, 100'000));
    expectUnreadable(path("huge.png"));
    try {
        uprightImageSize(path("huge.png"));
        ADD_FAILURE() << "the size of a 10-gigapixel header was accepted";
    } catch (const OperationError&) {
    }
}
