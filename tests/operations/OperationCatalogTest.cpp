#include "operations/OperationCatalog.h"

#include "operations/Op.h"
#include "operations/OpGroup.h"
#include "operations/OperationError.h"
#include "support/TestEnvironment.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace wendrel;
using namespace Qt::Literals::StringLiterals;

namespace {

OperationOutcome unused(const QStringList&, const OperationContext&)
{
    return OperationOutcome::done(QStringLiteral("ran"));
}

FileOperationPtr entry(const char* id, RingKind ring, QList<ContentType> inputs,
                       QList<ContentType> excludes = {}, QList<ContentType> excludesExactly = {},
                       const char* title = nullptr)
{
    return Op::make({
        .entry = {.id = EntryId::atRunTime(QString::fromUtf8(id)), .title = QString::fromUtf8(title ? title : id),
                  .ring = ring, .inputs = std::move(inputs), .excludes = std::move(excludes)},
        .excludesExactly = std::move(excludesExactly),
        .combined = unused,
    });
}

// An image target as the image layer defines them: every image except its own format, PDF and SVG.
FileOperationPtr imageTarget(const char* id, const ContentType& own)
{
    return entry(id, RingKind::convert, {ContentType::image()},
                 {own, ContentType::pdf(), ContentType::svg()});
}

QStringList ids(const QList<FileOperationPtr>& entries)
{
    QStringList result;
    for (const FileOperationPtr& operation : entries)
        result.append(operation->id());
    return result;
}

class CatalogMatching : public ::testing::Test {
protected:
    void SetUp() override
    {
        catalog.add(imageTarget("image.jpg", ContentType::jpeg()));
        catalog.add(imageTarget("image.png", ContentType::png()));
        catalog.add(imageTarget("image.heic", ContentType::heic()));
        catalog.add(entry("archive.zip", RingKind::convert, {ContentType::item()}));
        catalog.add(entry("image.half", RingKind::tools, {ContentType::image()},
                          {ContentType::pdf(), ContentType::svg()}, {}, "Resize 50%"));
        catalog.add(entry("pdf.merge", RingKind::tools, {ContentType::pdf(), ContentType::image()}));
        catalog.add(entry("action.copyPath", RingKind::actions, {ContentType::item()}));
        catalog.add(entry("action.mail", RingKind::actions, {ContentType::item()},
                          {ContentType::folder()}));
        test::writeFile(png, QByteArray("\x89PNG\r\n\x1a\n", 8));
        test::writeFile(pdf, "%PDF-1.4\n");
        test::writeFile(svg, "<svg xmlns=\"http://www.w3.org/2000/svg\"/>");
    }

    QTemporaryDir folder;
    QString png = folder.filePath(QStringLiteral("Photo.png"));
    QString pdf = folder.filePath(QStringLiteral("Report.pdf"));
    QString svg = folder.filePath(QStringLiteral("Logo.svg"));
    QString docs = folder.path() + QStringLiteral("/Docs/");
    OperationCatalog catalog;
};

}  // namespace

// Which entries each ring offers for the files in hand: every file must fit.
TEST_F(CatalogMatching, EachRingOffersWhatFitsEveryFile)
{
    struct Row {
        QStringList files;
        RingKind ring;
        QStringList expected;
    };
    const QList<Row> rows{
        {{png}, RingKind::convert, {u"image.jpg"_s, u"image.heic"_s, u"archive.zip"_s}},  // not its own format
        {{pdf}, RingKind::convert, {u"archive.zip"_s}},                              // PDFs aren't images
        {{svg}, RingKind::convert, {u"archive.zip"_s}},
        {{pdf}, RingKind::tools, {u"pdf.merge"_s}},
        {{png, pdf}, RingKind::tools, {u"pdf.merge"_s}},
        {{docs}, RingKind::convert, {u"archive.zip"_s}},
        {{docs}, RingKind::tools, {}},
        {{docs}, RingKind::actions, {u"action.copyPath"_s}},  // folders can't be mailed
    };
    for (const Row& row : rows)
        EXPECT_EQ(ids(catalog.fitting(row.ring, row.files)), row.expected) << qPrintable(row.files.join(u' '));

    const FileOperationPtr half = catalog.find(QStringLiteral("image.half"));
    ASSERT_TRUE(half);
    EXPECT_EQ(OperationCatalog::refusal(*half, {png, pdf}),
              std::optional<QString>(QStringLiteral("Resize 50% doesn't work with this file")));
    EXPECT_EQ(OperationCatalog::refusal(*half, {png}), std::nullopt);
}

TEST(OpAccepts, ExactExclusionsRefuseOnlyThatTypeAndNoInputsAcceptNothing)
{
    // Everything plain-text except WebVTT itself: SubRip stays acceptable.
    const FileOperationPtr operation = entry("subtitle.only", RingKind::convert, {ContentType::plainText()},
                                             {}, {ContentType::webVtt()});
    EXPECT_FALSE(operation->accepts(ContentType::webVtt()));
    EXPECT_TRUE(operation->accepts(ContentType::subRip()));
    EXPECT_TRUE(operation->accepts(ContentType::plainText()));
    EXPECT_FALSE(entry("nothing", RingKind::tools, {})->accepts(ContentType::png()));
}

// The ring order comes with each entry's id, whatever the order of registration; ids the
// order doesn't list follow in registration order, and an id is registered once.
TEST(OperationCatalogOrder, FollowsTheRingOrderThenRegistrationAndRefusesDuplicates)
{
    OperationCatalog catalog;
    for (const char* id : {"archive.zip", "preset.warm", "subtitle.vtt", "image.gif", "preset.cold", "image.jpg",
                           "subtitle.srt"})
        EXPECT_TRUE(catalog.add(entry(id, RingKind::convert, {ContentType::image()})));
    EXPECT_EQ(ids(catalog.entries(RingKind::convert)),
              (QStringList{u"image.jpg"_s, u"image.gif"_s, u"subtitle.srt"_s, u"subtitle.vtt"_s, u"archive.zip"_s,
                           u"preset.warm"_s, u"preset.cold"_s}));

    EXPECT_FALSE(catalog.add(entry("image.jpg", RingKind::convert, {ContentType::item()})));
    EXPECT_EQ(catalog.entries(RingKind::convert).size(), 7);
    EXPECT_EQ(catalog.find(QStringLiteral("image.jpg"))->inputs(), QList<ContentType>{ContentType::image()});
}

TEST(OpGroupBehaviour, AGroupOpensItsChildrenAndIsNeverRun)
{
    QStringList askedFor;
    const FileOperationPtr group = OpGroup::make({
        .entry = {.id = "image.presets", .title = QStringLiteral("Presets"), .ring = RingKind::tools,
                  .inputs = {ContentType::image()}, .excludes = {ContentType::svg()}},
        .childrenProvider =
            [&](const QStringList& paths) {
                askedFor = paths;
                return QList<FileOperationPtr>{entry("preset.one", RingKind::tools, {ContentType::image()}),
                                               entry("preset.two", RingKind::tools, {ContentType::image()})};
            },
    });
    EXPECT_TRUE(group->isGroup());
    EXPECT_FALSE(group->combinesInputs());
    EXPECT_TRUE(group->accepts(ContentType::png()));
    EXPECT_FALSE(group->accepts(ContentType::svg()));

    const QStringList files{QStringLiteral("/a/one.png"), QStringLiteral("/a/two.png")};
    EXPECT_EQ(ids(group->children(files)), (QStringList{u"preset.one"_s, u"preset.two"_s}));
    EXPECT_EQ(askedFor, files);

    try {
        group->run(files, OperationContext(QStringLiteral("/nonexistent")));
        FAIL() << "running a group must throw";
    } catch (const OperationError& error) {
        EXPECT_EQ(error.message(), u"Choose an item from the group");
    }
}
