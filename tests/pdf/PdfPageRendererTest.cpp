#include "imaging/pdf/PdfPageGeometry.h"
#include "imaging/pdf/PdfPageRenderer.h"

#include "PicturePdfs.h"
#include "imaging/TestPictures.h"
#include "operations/OperationContext.h"
#include "operations/OperationError.h"
#include "support/TestEnvironment.h"

#include <QTemporaryDir>

#include <vips/vips8>

#include <gtest/gtest.h>

#include <functional>

using namespace wendrel;
using namespace wendrel::test;
using vips::VImage;

namespace {

// Any rotation comes to a quarter turn; a page's pixels are its media box at the resolution,
// turned, never less than a pixel and never more than a bitmap can hold. (The usual turns and
// sizes are drawn for real below.)
TEST(PdfPageGeometryTest, RotationsNormaliseAndPixelSizesStayWithinLimits)
{
    const struct {
        int degrees, expected;
    } turns[] = {{360, 0}, {450, 90}, {720, 0}, {-180, 180}, {-450, 270}, {45, 0}, {-30, 0}};
    for (const auto& c : turns)
        EXPECT_EQ(normalisedRotation(c.degrees), c.expected) << c.degrees;

    const struct {
        QSizeF box;
        int rotation;
        double dpi;
        std::optional<QSize> expected;
    } cases[] = {
        {QSizeF(612, 792), 450, 300, QSize(3300, 2550)},
        {QSizeF(595.276, 841.89), 90, 300, QSize(3508, 2480)},  // A4, rounded
        {QSizeF(0.1, 0.1), 0, 72, QSize(1, 1)},
        {QSizeF(14400, 14400), 0, 300, std::nullopt},      // 200 inches square
        {QSizeF(14400, 72), 90, 300, std::nullopt},        // a 200-inch strip: one side too long
        {QSizeF(2384, 3370), 0, 300, QSize(9933, 14042)},  // A0 still fits
        {QSizeF(612, 792), 0, 0, std::nullopt},
    };
    for (const auto& c : cases)
        EXPECT_EQ(renderedPixelSize(c.box, c.rotation, c.dpi), c.expected) << c.box.width() << " rotated " << c.rotation << " at " << c.dpi;
}

class PdfPageRendererTest : public ::testing::Test {
protected:
    QString path(const char* name) const { return folder.filePath(QString::fromUtf8(name)); }

    QTemporaryDir folder;
    QTemporaryDir scratch;
    OperationContext context{scratch.path()};
};

// The message an attempt fails with, or "done".
QString messageOf(const std::function<void()>& attempt)
{
    try {
        attempt();
        return QStringLiteral("done");
    } catch (const OperationError& error) {
        return error.message();
    }
}

bool isRed(const std::vector<double>& rgb) { return rgb.size() == 3 && rgb[0] > 200 && rgb[1] < 60 && rgb[2] < 60; }
bool isWhite(const std::vector<double>& rgb) { return rgb == std::vector<double>{255, 255, 255}; }

// Each page is drawn whole, its media box turned by its own /Rotate, as 8-bit sRGB: the red
// square in the lower-left corner of the unturned page ends up in the corner a viewer shows it
// in, white across from it. Crop boxes, the page's own or inherited from the page tree, hide the
// square's half from a viewer but not from the picture. A renderer reopened for another thread
// draws the same pixels, and the original stays as it was.
TEST_F(PdfPageRendererTest, PagesAreDrawnWholeAndTurnedTheRightWayUp)
{
    const QRectF letter(0, 0, 612, 792), landscape(0, 0, 288, 144), square(0, 0, 288, 288), rightHalf(144, 0, 144, 288);
    const QRectF shifted(100, -50, 300, 150);  // a box that does not start at the origin
    const QList<MarkedPage> pages{{letter},
                                  {letter, std::nullopt, 90},
                                  {shifted, std::nullopt, -90},
                                  {shifted, std::nullopt, 540},
                                  {landscape, std::nullopt, 180},
                                  {landscape, std::nullopt, 270},
                                  {square, rightHalf},
                                  {square}};
    const QString file = writeMarkedPdf(path("pages.pdf"), {.pages = pages, .inheritedCropBox = rightHalf});
    const QByteArray before = readFile(file);
    const PdfPageRenderer renderer(file, context);
    const PdfPageRenderer reopened = renderer.reopened();
    ASSERT_EQ(renderer.pageCount(), 8);
    ASSERT_EQ(reopened.pageCount(), 8);
    const struct {
        int page;
        double dpi;
        QSizeF points;
        QSize pixels;
        bool left, top;  // where the mark is seen
    } cases[] = {
        {0, 72, {612, 792}, {612, 792}, true, false},      {0, 150, {612, 792}, {1275, 1650}, true, false},
        {1, 72, {792, 612}, {792, 612}, true, true},       {2, 144, {150, 300}, {300, 600}, false, false},
        {3, 144, {300, 150}, {600, 300}, false, true},     {4, 72, {288, 144}, {288, 144}, false, true},
        {5, 72, {144, 288}, {144, 288}, false, false},     {6, 72, {288, 288}, {288, 288}, true, false},
        {7, 72, {288, 288}, {288, 288}, true, false},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(renderer.displayedPageSize(c.page), c.points) << c.page;
        EXPECT_EQ(renderer.pixelSize(c.page, c.dpi), c.pixels) << c.page << " at " << c.dpi;
        const VImage image = renderer.render(c.page, c.dpi);
        ASSERT_EQ(QSize(image.width(), image.height()), c.pixels) << c.page << " at " << c.dpi;
        EXPECT_EQ(image.bands(), 3);
        EXPECT_EQ(image.format(), VIPS_FORMAT_UCHAR);
        EXPECT_EQ(image.interpretation(), VIPS_INTERPRETATION_sRGB);
        const int right = image.width() - 1, bottom = image.height() - 1;
        const int x = c.left ? 10 : right - 10, y = c.top ? 10 : bottom - 10;
        EXPECT_TRUE(isRed(pixel(image, x, y))) << "page " << c.page;
        EXPECT_TRUE(isWhite(pixel(image, right - x, bottom - y))) << "page " << c.page;
        EXPECT_EQ(reopened.render(c.page, c.dpi).avg(), image.avg()) << "page " << c.page;
    }
    EXPECT_EQ(readFile(file), before);
}

TEST_F(PdfPageRendererTest, AWallSizedPageIsTooLargeAndBadFilesFailWithTheOpeningMessages)
{
    const PdfPageRenderer wall(writeMarkedPdf(path("wall.pdf"), {.pages = {{{0, 0, 14400, 14400}}}}), context);
    EXPECT_EQ(messageOf([&] { wall.pixelSize(0, 300); }), u"Page is too large");
    EXPECT_EQ(messageOf([&] { wall.render(0, 300); }), u"Page is too large");
    EXPECT_EQ(wall.render(0, 6).width(), 1200);  // the same page, small enough

    QList<BadPdf> cases = writeBadPdfs(folder.path());
    cases.append({path("missing.pdf"), QStringLiteral("Can't open this PDF")});
    for (const BadPdf& bad : cases)
        EXPECT_EQ(messageOf([&] { PdfPageRenderer(bad.path, context).render(0, 72); }), bad.message) << bad.path.toStdString();
}

}  // namespace
