#include "imaging/pdf/PdfPageGeometry.h"
#include "imaging/pdf/PdfPageRenderer.h"

#include "MarkedPdfs.h"
#include "TestPdfs.h"
#include "operations/OperationContext.h"
#include "operations/OperationError.h"
#include "support/TestEnvironment.h"

#include <QTemporaryDir>

#include <vips/vips8>

#include <gtest/gtest.h>

using namespace wendrel;
using namespace wendrel::test;
using vips::VImage;

namespace {

TEST(PdfPageGeometryTest, RotationsNormaliseToAQuarterTurn)
{
    const struct {
        int degrees, expected;
    } cases[] = {{0, 0}, {90, 90}, {180, 180}, {270, 270}, {360, 0}, {450, 90}, {720, 0},
                 {-90, 270}, {-180, 180}, {-450, 270}, {45, 0}, {-30, 0}};
    for (const auto& c : cases)
        EXPECT_EQ(normalisedRotation(c.degrees), c.expected) << c.degrees;
}

TEST(PdfPageGeometryTest, PixelSizeIsTheMediaBoxScaledAndTurned)
{
    const QSizeF letter(612, 792), a4(595.276, 841.89);
    const struct {
        QSizeF box;
        int rotation;
        double dpi;
        std::optional<QSize> expected;
    } cases[] = {
        {letter, 0, 72, QSize(612, 792)},
        {letter, 90, 72, QSize(792, 612)},
        {letter, 180, 300, QSize(2550, 3300)},
        {letter, 270, 300, QSize(3300, 2550)},
        {letter, -90, 150, QSize(1650, 1275)},
        {letter, 450, 300, QSize(3300, 2550)},
        {a4, 0, 300, QSize(2480, 3508)},
        {a4, 90, 300, QSize(3508, 2480)},
        {QSizeF(0.1, 0.1), 0, 72, QSize(1, 1)},  // no page is smaller than a pixel
        {QSizeF(14400, 14400), 0, 300, std::nullopt},  // 200 inches square
        {QSizeF(14400, 72), 90, 300, std::nullopt},    // a 200-inch strip: one side too long
        {QSizeF(2384, 3370), 0, 300, QSize(9933, 14042)},  // A0 still fits
        {letter, 0, 0, std::nullopt},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(renderedPixelSize(c.box, c.rotation, c.dpi), c.expected)
            << c.box.width() << "x" << c.box.height() << " rotated " << c.rotation << " at " << c.dpi;
    }
}

class PdfPageRendererTest : public ::testing::Test {
protected:
    QString path(const char* name) const { return folder.filePath(QString::fromUtf8(name)); }

    QString failure(const QString& file)
    {
        try {
            PdfPageRenderer renderer(file, context);
            renderer.render(0, 72);
            return QStringLiteral("rendered");
        } catch (const OperationError& error) {
            return error.message();
        }
    }

    QTemporaryDir folder;
    QTemporaryDir scratch;
    OperationContext context{scratch.path()};
};

// The colour at (x, y) of a rendered page.
QList<double> pixel(const VImage& image, int x, int y)
{
    std::vector<double> values = image.getpoint(x, y);
    return QList<double>(values.begin(), values.end());
}

bool isRed(const QList<double>& rgb) { return rgb.size() == 3 && rgb[0] > 200 && rgb[1] < 60 && rgb[2] < 60; }
bool isWhite(const QList<double>& rgb) { return rgb == QList<double>{255, 255, 255}; }

TEST_F(PdfPageRendererTest, SizesFollowTheMediaBoxAndRotation)
{
    const QRectF letter(0, 0, 612, 792);
    const QRectF shifted(100, -50, 300, 150);  // a box that does not start at the origin
    const QList<MarkedPage> pages{{letter}, {letter, std::nullopt, 90}, {shifted, std::nullopt, -90},
                                  {shifted, std::nullopt, 540}};
    const PdfPageRenderer renderer(writeMarkedPdf(path("sizes.pdf"), {.pages = pages}), context);
    ASSERT_EQ(renderer.pageCount(), 4);
    const struct {
        int page;
        double dpi;
        QSizeF points;
        QSize pixels;
    } cases[] = {{0, 72, {612, 792}, {612, 792}},   {0, 150, {612, 792}, {1275, 1650}},
                 {1, 72, {792, 612}, {792, 612}},   {2, 144, {150, 300}, {300, 600}},
                 {3, 144, {300, 150}, {600, 300}}};
    for (const auto& c : cases) {
        EXPECT_EQ(renderer.displayedPageSize(c.page), c.points) << c.page;
        EXPECT_EQ(renderer.pixelSize(c.page, c.dpi), c.pixels) << c.page << " at " << c.dpi;
        const VImage image = renderer.render(c.page, c.dpi);
        EXPECT_EQ(QSize(image.width(), image.height()), c.pixels) << c.page << " at " << c.dpi;
        EXPECT_EQ(image.bands(), 3);
        EXPECT_EQ(image.format(), VIPS_FORMAT_UCHAR);
        EXPECT_EQ(image.interpretation(), VIPS_INTERPRETATION_sRGB);
    }
}

// The red square sits in the lower-left corner of the unturned page; turned clockwise by the
// page's /Rotate it must end up in the corner a viewer shows it in.
TEST_F(PdfPageRendererTest, RotatedPagesAreDrawnTheRightWayUp)
{
    const QRectF landscape(0, 0, 288, 144);
    const struct {
        int rotate;
        bool left, top;  // where the mark is seen
    } cases[] = {{0, true, false}, {90, true, true}, {180, false, true}, {270, false, false}, {-90, false, false}};
    for (const auto& c : cases) {
        const QString file = writeMarkedPdf(folder.filePath(QStringLiteral("turned%1.pdf").arg(c.rotate)),
                                            {.pages = {{landscape, std::nullopt, c.rotate}}});
        const VImage image = PdfPageRenderer(file, context).render(0, 72);
        const int right = image.width() - 1, bottom = image.height() - 1;
        const int x = c.left ? 10 : right - 10, y = c.top ? 10 : bottom - 10;
        EXPECT_TRUE(isRed(pixel(image, x, y))) << "rotate " << c.rotate;
        // The opposite corner is the page's white.
        EXPECT_TRUE(isWhite(pixel(image, right - x, bottom - y))) << "rotate " << c.rotate;
    }
}

// A crop box hides the red square's half of the page from a viewer; the picture is still the
// whole media box, square included, and the original stays as it was.
TEST_F(PdfPageRendererTest, DrawsTheMediaBoxWhereACropBoxIsSmaller)
{
    const QRectF square(0, 0, 288, 288), rightHalf(144, 0, 144, 288);
    const struct {
        const char* name;
        MarkedPdf pdf;
    } cases[] = {
        {"page-crop.pdf", {.pages = {{square, rightHalf}}}},
        {"inherited-crop.pdf", {.pages = {{square}, {square}}, .inheritedCropBox = rightHalf}},
    };
    for (const auto& c : cases) {
        const QString file = writeMarkedPdf(path(c.name), c.pdf);
        const QByteArray before = readFile(file);
        const PdfPageRenderer renderer(file, context);
        for (int page = 0; page < renderer.pageCount(); ++page) {
            const VImage image = renderer.render(page, 72);
            EXPECT_EQ(QSize(image.width(), image.height()), QSize(288, 288)) << c.name;
            EXPECT_TRUE(isRed(pixel(image, 10, 277))) << c.name << " page " << page;
            EXPECT_TRUE(isWhite(pixel(image, 277, 10))) << c.name;
        }
        EXPECT_EQ(readFile(file), before) << c.name;
    }
}

TEST_F(PdfPageRendererTest, RenderersForOtherThreadsDrawTheSamePages)
{
    const PdfPageRenderer first(writeMarkedPdf(path("twice.pdf"), {.pages = {{}, {{0, 0, 200, 100}}}}), context);
    const PdfPageRenderer second = first.reopened();
    ASSERT_EQ(second.pageCount(), 2);
    EXPECT_EQ(second.render(1, 72).width(), 200);
    EXPECT_EQ(first.render(1, 72).avg(), second.render(1, 72).avg());
}

TEST_F(PdfPageRendererTest, AWallSizedPageIsTooLarge)
{
    const PdfPageRenderer renderer(writeMarkedPdf(path("wall.pdf"), {.pages = {{{0, 0, 14400, 14400}}}}), context);
    for (const auto& attempt : {std::function([&] { renderer.pixelSize(0, 300); }),
                                std::function([&] { renderer.render(0, 300); })}) {
        try {
            attempt();
            ADD_FAILURE() << "drawn";
        } catch (const OperationError& error) {
            EXPECT_EQ(error.message(), u"Page is too large");
        }
    }
    EXPECT_EQ(renderer.render(0, 6).width(), 1200);  // the same page, small enough
}

TEST_F(PdfPageRendererTest, BadFilesFailWithTheOpeningMessages)
{
    const QByteArray whole = readFile(writeTestPdf(path("whole.pdf"), pagesOfText(2)));
    writeFile(path("truncated.pdf"), whole.left(whole.size() / 3));
    writeTestPdf(path("locked.pdf"), {.userPassword = QStringLiteral("secret")});
    void* jpeg = nullptr;
    size_t jpegSize = 0;
    VImage::black(16, 16).write_to_buffer(".jpg", &jpeg, &jpegSize);
    writeFile(path("photo.pdf"), QByteArray(static_cast<const char*>(jpeg), qsizetype(jpegSize)));
    g_free(jpeg);

    EXPECT_EQ(failure(path("whole.pdf")), u"rendered");
    EXPECT_EQ(failure(path("truncated.pdf")), u"Can't open this PDF");
    EXPECT_EQ(failure(path("locked.pdf")), u"This PDF is password-protected");
    EXPECT_EQ(failure(path("photo.pdf")), u"Can't open this PDF");
    EXPECT_EQ(failure(path("missing.pdf")), u"Can't open this PDF");
}

}  // namespace
