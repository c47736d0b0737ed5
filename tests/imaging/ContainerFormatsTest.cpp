#include "imaging/BmpEncoder.h"
#include "imaging/IcoFile.h"
#include "imaging/ImageFormat.h"
#include "imaging/ImageWriter.h"
#include "imaging/pdf/ImagesToPdf.h"

#include "TestPictures.h"
#include "support/TestEnvironment.h"

#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtEndian>

#include "operations/OperationContext.h"

#include <gtest/gtest.h>

using namespace wendrel;
using namespace wendrel::test;
using vips::VImage;

namespace {

quint16 le16(const QByteArray& bytes, qsizetype at) { return qFromLittleEndian<quint16>(bytes.constData() + at); }
quint32 le32(const QByteArray& bytes, qsizetype at) { return qFromLittleEndian<quint32>(bytes.constData() + at); }

}  // namespace

TEST(BmpEncoder, WritesBottomUpPaddedRowsThatOthersRead)
{
    // 3 x 2: a row of red, green, blue over a row of white, grey, black.
    const unsigned char pixels[] = {255, 0, 0, 0, 255, 0, 0, 0, 255, 255, 255, 255, 128, 128, 128, 0, 0, 0};
    const QByteArray bmp = encodeBmp(3, 2, 3, pixels);
    ASSERT_EQ(bmp.size(), 14 + 40 + 2 * 12);  // 9 bytes a row, padded to 12
    EXPECT_TRUE(bmp.startsWith("BM"));
    EXPECT_EQ(le32(bmp, 2), quint32(bmp.size()));
    EXPECT_EQ(le32(bmp, 10), 54u);
    EXPECT_EQ(le16(bmp, 28), 24);
    EXPECT_EQ(quint8(bmp[54]), 255);  // first stored row is the bottom one: white, in BGR

    QTemporaryDir folder;
    writeFile(folder.filePath(QStringLiteral("rgb.bmp")), bmp);
    const VImage decoded = test::decoded(folder.filePath(QStringLiteral("rgb.bmp")));
    EXPECT_EQ(decoded.width(), 3);
    EXPECT_EQ(decoded.height(), 2);
    EXPECT_EQ(pixel(decoded, 0, 0)[0], 255);
    EXPECT_EQ(pixel(decoded, 2, 0)[2], 255);
    EXPECT_EQ(pixel(decoded, 1, 1)[1], 128);
}

TEST(BmpEncoder, RefusesWhatABitmapCannotHold)
{
    const unsigned char pixel[] = {0, 0, 0};
    EXPECT_TRUE(encodeBmp(0, 1, 3, pixel).isEmpty());
    EXPECT_TRUE(encodeBmp(1, 1, 4, pixel).isEmpty());
    EXPECT_TRUE(encodeBmp(60000, 60000, 3, pixel).isEmpty());  // over 2 GB
}

// WebP is written through libwebp directly (for its threads) but must come out as libvips'
// own saver writes it: the same pixels, for colour, grey and transparent pictures.
TEST(WebPEncoder, SamePicturesAsTheLibrarySaver)
{
    const VImage colour = photoLike(300, 200);
    const VImage cases[] = {colour, colour.colourspace(VIPS_INTERPRETATION_B_W),
                            colour.bandjoin(VImage::black(300, 200).linear(1, 128).cast(VIPS_FORMAT_UCHAR))};
    for (const VImage& image : cases) {
        const QByteArray ours = encodeImage(image, ImageFormat::webp, 0.8, MetadataPolicy::drop);
        void* buffer = nullptr;
        size_t length = 0;
        image.write_to_buffer(".webp", &buffer, &length, VImage::option()->set("Q", 80)->set("strip", true));
        const VImage theirs = VImage::new_from_buffer(buffer, length, "").copy_memory();
        g_free(buffer);
        const VImage decoded = VImage::new_from_buffer(ours.constData(), size_t(ours.size()), "");
        ASSERT_EQ(decoded.bands(), theirs.bands()) << image.bands() << " bands";
        EXPECT_EQ((decoded - theirs).abs().max(), 0.0) << image.bands() << " bands";
    }
}

TEST(IcoFile, DirectoryPointsAtEveryPngInOrder)
{
    QList<IconImage> images;
    for (int side : iconSizes)
        images.append({side, encodeImage(transparentDisc(side), ImageFormat::png, std::nullopt, MetadataPolicy::drop)});
    const QByteArray ico = buildIcoFile(images);

    EXPECT_EQ(le16(ico, 0), 0);
    EXPECT_EQ(le16(ico, 2), 1);
    ASSERT_EQ(le16(ico, 4), 7);
    quint32 expectedOffset = 6 + 7 * 16;
    for (int index = 0; index < 7; ++index) {
        const qsizetype entry = 6 + index * 16;
        const int side = iconSizes[index];
        EXPECT_EQ(quint8(ico[entry]), side == 256 ? 0 : side);
        EXPECT_EQ(quint8(ico[entry + 1]), side == 256 ? 0 : side);
        EXPECT_EQ(le16(ico, entry + 4), 1);
        EXPECT_EQ(le16(ico, entry + 6), 32);
        const quint32 length = le32(ico, entry + 8);
        const quint32 offset = le32(ico, entry + 12);
        EXPECT_EQ(offset, expectedOffset);
        EXPECT_EQ(ico.mid(offset, length), images[index].png);
        expectedOffset += length;
    }
    EXPECT_EQ(expectedOffset, quint32(ico.size()));

    if (!haveTool(QStringLiteral("identify")))
        GTEST_SKIP() << "ImageMagick's identify is not installed";
    QTemporaryDir folder;
    writeFile(folder.filePath(QStringLiteral("icon.ico")), ico);
    EXPECT_EQ(toolOutput(QStringLiteral("identify"), {QStringLiteral("-format"), QStringLiteral("%wx%h "),
                                                       folder.filePath(QStringLiteral("icon.ico"))}),
              u"16x16 24x24 32x32 48x48 64x64 128x128 256x256 ");
}

TEST(ImagesToPdf, PageSizesKeepAPointPerPixelUpTo1190)
{
    EXPECT_EQ(pdfPageSize({4000, 3000}), QSizeF(1190, 892.5));
    EXPECT_EQ(pdfPageSize({600, 400}), QSizeF(600, 400));
    EXPECT_EQ(pdfPageSize({1000, 5000}), QSizeF(238, 1190));
}

TEST(ImagesToPdf, WritesAValidPdfWithOnePagePerPicture)
{
    QTemporaryDir folder;
    save(photoLike(4000, 3000), folder.filePath(QStringLiteral("photo.jpg[Q=80]")));
    save(transparentDisc(600).crop(0, 100, 600, 400), folder.filePath(QStringLiteral("logo.png")));
    const OperationContext context(folder.path());
    const QList<PdfPicture> pictures{pdfPictureFromFile(folder.filePath(QStringLiteral("photo.jpg")), context),
                                     pdfPictureFromFile(folder.filePath(QStringLiteral("logo.png")), context)};
    EXPECT_TRUE(pictures[0].isJpeg);
    EXPECT_EQ(pictures[0].data, readFile(folder.filePath(QStringLiteral("photo.jpg"))));  // not re-encoded
    EXPECT_FALSE(pictures[1].alpha.isEmpty());

    const QString pdf = folder.filePath(QStringLiteral("out.pdf"));
    writePicturesPdf(pictures, pdf);
    if (!haveTool(QStringLiteral("qpdf")) || !haveTool(QStringLiteral("pdfinfo")))
        GTEST_SKIP() << "qpdf and pdfinfo are needed to check the file";
    EXPECT_FALSE(toolOutput(QStringLiteral("qpdf"), {QStringLiteral("--check"), pdf}).isEmpty());
    const QString boxes = toolOutput(QStringLiteral("pdfinfo"),
                                     {QStringLiteral("-f"), QStringLiteral("1"), QStringLiteral("-l"), QStringLiteral("2"),
                                      QStringLiteral("-box"), pdf});
    EXPECT_TRUE(boxes.contains(QRegularExpression(QStringLiteral(R"(Page +1 MediaBox: +0\.00 +0\.00 +1190\.00 +892\.50)"))))
        << boxes.toStdString();
    EXPECT_TRUE(boxes.contains(QRegularExpression(QStringLiteral(R"(Page +2 MediaBox: +0\.00 +0\.00 +600\.00 +400\.00)"))))
        << boxes.toStdString();
}
