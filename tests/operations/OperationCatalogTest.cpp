#include "operations/OperationCatalog.h"

#include "operations/Op.h"
#include "operations/OpGroup.h"
#include "operations/OperationError.h"
#include "support/TestEnvironment.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace wendrel;

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
        .id = QString::fromUtf8(id),
        .title = QString::fromUtf8(title ? title : id),
        .symbol = {},
        .ring = ring,
        .combinesInputs = false,
        .inputs = std::move(inputs),
        .excludes = std::move(excludes),
        .excludesExactly = std::move(excludesExactly),
        .description = {},
        .body = unused,
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
    OperationCatalog catalog;
};

}  // namespace

TEST_F(CatalogMatching, PngFitsEveryImageTargetButPng)
{
    EXPECT_EQ(ids(catalog.fitting(RingKind::convert, {png})),
              (QStringList{QStringLiteral("image.jpg"), QStringLiteral("image.heic"),
                           QStringLiteral("archive.zip")}));
}

TEST_F(CatalogMatching, PdfAndSvgFitNoImageTarget)
{
    EXPECT_EQ(ids(catalog.fitting(RingKind::convert, {pdf})), QStringList{QStringLiteral("archive.zip")});
    EXPECT_EQ(ids(catalog.fitting(RingKind::convert, {svg})), QStringList{QStringLiteral("archive.zip")});
    EXPECT_EQ(ids(catalog.fitting(RingKind::tools, {pdf})), QStringList{QStringLiteral("pdf.merge")});
}

TEST_F(CatalogMatching, FolderFitsOnlyItemEntriesAndNotMail)
{
    const QString docs = folder.path() + QStringLiteral("/Docs/");
    EXPECT_EQ(ids(catalog.fitting(RingKind::convert, {docs})), QStringList{QStringLiteral("archive.zip")});
    EXPECT_TRUE(catalog.fitting(RingKind::tools, {docs}).isEmpty());
    EXPECT_EQ(ids(catalog.fitting(RingKind::actions, {docs})),
              QStringList{QStringLiteral("action.copyPath")});
}

TEST_F(CatalogMatching, EveryFileMustFit)
{
    EXPECT_EQ(ids(catalog.fitting(RingKind::tools, {png, pdf})), QStringList{QStringLiteral("pdf.merge")});
}

TEST_F(CatalogMatching, RefusalNamesTheEntry)
{
    const FileOperationPtr half = catalog.find(QStringLiteral("image.half"));
    ASSERT_TRUE(half);
    EXPECT_EQ(OperationCatalog::refusal(*half, {png, pdf}),
              std::optional<QString>(QStringLiteral("Resize 50% doesn't work with this file")));
    EXPECT_EQ(OperationCatalog::refusal(*half, {png}), std::nullopt);
}

TEST(OpAccepts, ExcludesExactlyRefusesOnlyThatType)
{
    // Everything plain-text except WebVTT itself: SubRip stays acceptable.
    const FileOperationPtr operation = entry("subtitle.only", RingKind::convert, {ContentType::plainText()},
                                             {}, {ContentType::webVtt()});
    EXPECT_FALSE(operation->accepts(ContentType::webVtt()));
    EXPECT_TRUE(operation->accepts(ContentType::subRip()));
    EXPECT_TRUE(operation->accepts(ContentType::plainText()));
}

TEST(OpAccepts, EmptyInputsAcceptNothing)
{
    EXPECT_FALSE(entry("nothing", RingKind::tools, {})->accepts(ContentType::png()));
}

TEST(OperationCatalogOrder, FollowsRingOrderWhateverTheRegistrationOrder)
{
    OperationCatalog catalog;
    catalog.add(entry("archive.zip", RingKind::convert, {ContentType::item()}));
    catalog.add(entry("subtitle.vtt", RingKind::convert, {ContentType::item()}));
    catalog.add(entry("image.gif", RingKind::convert, {ContentType::item()}));
    catalog.add(entry("image.jpg", RingKind::convert, {ContentType::item()}));
    catalog.add(entry("subtitle.srt", RingKind::convert, {ContentType::item()}));
    EXPECT_EQ(ids(catalog.entries(RingKind::convert)),
              (QStringList{QStringLiteral("image.jpg"), QStringLiteral("image.gif"),
                           QStringLiteral("subtitle.srt"), QStringLiteral("subtitle.vtt"),
                           QStringLiteral("archive.zip")}));
}

TEST(OperationCatalogOrder, UnknownIdsFollowInRegistrationOrder)
{
    OperationCatalog catalog;
    catalog.add(entry("preset.warm", RingKind::tools, {ContentType::item()}));
    catalog.add(entry("image.half", RingKind::tools, {ContentType::item()}));
    catalog.add(entry("preset.cold", RingKind::tools, {ContentType::item()}));
    EXPECT_EQ(ids(catalog.entries(RingKind::tools)),
              (QStringList{QStringLiteral("image.half"), QStringLiteral("preset.warm"),
                           QStringLiteral("preset.cold")}));
}

TEST(OperationCatalogOrder, DuplicateIdIsRefused)
{
    OperationCatalog catalog;
    EXPECT_TRUE(catalog.add(entry("image.jpg", RingKind::convert, {ContentType::image()})));
    EXPECT_FALSE(catalog.add(entry("image.jpg", RingKind::convert, {ContentType::item()})));
    EXPECT_EQ(catalog.entries(RingKind::convert).size(), 1);
    EXPECT_EQ(catalog.find(QStringLiteral("image.jpg"))->inputs(), QList<ContentType>{ContentType::image()});
}

TEST(OpGroupBehaviour, RunningAGroupAsksForAChild)
{
    QStringList askedFor;
    const FileOperationPtr group = OpGroup::make({
        .id = QStringLiteral("image.presets"),
        .title = QStringLiteral("Presets"),
        .symbol = {},
        .ring = RingKind::tools,
        .inputs = {ContentType::image()},
        .excludes = {ContentType::svg()},
        .description = {},
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
    EXPECT_EQ(ids(group->children(files)),
              (QStringList{QStringLiteral("preset.one"), QStringLiteral("preset.two")}));
    EXPECT_EQ(askedFor, files);

    try {
        group->run(files, OperationContext(QStringLiteral("/nonexistent")));
        FAIL() << "running a group must throw";
    } catch (const OperationError& error) {
        EXPECT_EQ(error.message(), u"Choose an item from the group");
    }
}
