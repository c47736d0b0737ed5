#include "ring/RingGeometry.h"
#include "ring/RingModel.h"
#include "ring/RingPainter.h"
#include "ring/SymbolIcons.h"
#include "operations/JobRunner.h"
#include "operations/OperationCatalog.h"
#include "support/JobHarness.h"
#include "support/TestEnvironment.h"

#include <QDir>
#include <QPainter>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <numbers>

using namespace wendrel;
using namespace wendrel::test;

namespace {

// Titles and symbols as long and as varied as the real rings'.
const QStringList titles = {QStringLiteral("JPEG"),  QStringLiteral("Remove Background"), QStringLiteral("WebP"),
                            QStringLiteral("Flip"),  QStringLiteral("Black & White"),     QStringLiteral("Icon"),
                            QStringLiteral("AVIF"),  QStringLiteral("Fit 1920"),          QStringLiteral("Square"),
                            QStringLiteral("Unzip")};
const QStringList symbols = {QStringLiteral("photo"), QStringLiteral("person.crop.rectangle"),
                             QStringLiteral("photo"), QStringLiteral("arrow.left.and.right.righttriangle.left.righttriangle.right"),
                             QStringLiteral("circle.lefthalf.filled"), QStringLiteral("app"),
                             QStringLiteral("photo"), QStringLiteral("arrow.down.right.and.arrow.up.left"),
                             QStringLiteral("crop"), QStringLiteral("archivebox")};

OperationOutcome nothing(const QStringList&, const OperationContext&) { return OperationOutcome::done(QString()); }

// The ring for one file with `count` entries, painted; with `titled` false every title is empty,
// so comparing the two pictures shows exactly where titles were drawn.
QImage paintedRing(int count, bool titled, std::optional<int> hovered)
{
    QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("notes.txt"));
    writeFile(file, "notes");
    OperationCatalog catalog;
    for (int index = 0; index < count; ++index) {
        catalog.add(Op::make({.entry = {.id = EntryId::atRunTime(QStringLiteral("test.%1").arg(index)),
                                        .title = titled ? titles[index] : QString(),
                                        .symbol = symbols[index],
                                        .ring = RingKind::tools,
                                        .inputs = {ContentType::item()},
                                        .excludes = {},
                                        .description = {}},
                              .combined = nothing}));
    }
    JobRunner runner;
    RingModel model(catalog, runner);
    model.load(RingKind::tools, {file}, true, false);
    if (hovered)
        model.setHovered(hovered, std::chrono::steady_clock::now());
    QImage image(int(RingGeometry::panelSize), int(RingGeometry::panelSize), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    QPalette palette;
    RingPainter(model, RingTheme::from(palette), 1).paint(painter);
    return image;
}

// Pixels that differ between two pictures inside a square around a point.
int differingPixels(const QImage& one, const QImage& other, QPointF around, int halfSide)
{
    int differing = 0;
    for (int y = int(around.y()) - halfSide; y <= int(around.y()) + halfSide; ++y)
        for (int x = int(around.x()) - halfSide; x <= int(around.x()) + halfSide; ++x)
            differing += one.pixel(x, y) != other.pixel(x, y);
    return differing;
}

}  // namespace

// Every segment shows its title, hovered or not, whatever the number of segments on the page:
// a page holding a single entry once drew its icon without a title.
TEST(RingPainter, EverySegmentCountShowsEveryTitle)
{
    const QString shots = qEnvironmentVariable("WENDREL_SEGMENT_SHOTS");
    for (int count = 1; count <= RingGeometry::pageSize; ++count) {
        for (const std::optional<int> hovered : {std::optional<int>(), std::optional<int>(count - 1)}) {
            const QImage titled = paintedRing(count, true, hovered);
            const QImage untitled = paintedRing(count, false, hovered);
            const double labelRadius = (RingGeometry::innerRadius + RingGeometry::outerRadius) / 2;
            for (int index = 0; index < count; ++index) {
                const QPointF label = RingPainter::pointAt(RingGeometry::segmentAngle(index, count), labelRadius);
                EXPECT_GT(differingPixels(titled, untitled, label, 30), 40)
                    << "segment " << index << " of " << count << (hovered ? ", last hovered" : "");
            }
            if (!shots.isEmpty() && hovered)
                titled.save(QDir(shots).filePath(QStringLiteral("segments-%1.png").arg(count, 2, 10, QLatin1Char('0'))));
        }
    }
}

// Flip mirrors left to right, so its icon's arrowheads sit left and right of a vertical axis:
// more ink in the side strips than in the top and bottom ones.
TEST(RingPainter, FlipIconMirrorsLeftToRight)
{
    const QImage icon =
        symbolPixmap(QStringLiteral("arrow.left.and.right.righttriangle.left.righttriangle.right"), Qt::black, 48, 1)
            .toImage();
    int sides = 0;
    int topAndBottom = 0;
    for (int y = 0; y < 48; ++y) {
        for (int x = 0; x < 48; ++x) {
            const bool inked = qAlpha(icon.pixel(x, y)) > 128;
            sides += inked && (x < 16 || x >= 32);
            topAndBottom += inked && (y < 16 || y >= 32);
        }
    }
    EXPECT_GT(sides, 2 * topAndBottom);
}
