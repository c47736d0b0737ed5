#include "imaging/VipsRuntime.h"

#include "PicturePdfs.h"
#include "TestPdfs.h"
#include "imaging/TestPictures.h"
#include "support/JobHarness.h"
#include "support/TestEnvironment.h"

#include <QFileInfo>

#include <qpdf/QPDF.hh>
#include <qpdf/QPDFOutlineDocumentHelper.hh>
#include <vips/vips8>

#include <gtest/gtest.h>

using namespace wendrel;
using namespace wendrel::test;
using namespace Qt::StringLiterals;

namespace {

class PdfMergeTest : public PdfEntryTest {
protected:
    void SetUp() override
    {
        PdfEntryTest::SetUp();
        startVips();
    }

    QString pdf(const char* name, const TestPdf& document) { return writeTestPdf(path(name), document); }
    QString picture(const char* name, int width, int height)
    {
        save(vips::VImage::black(width, height, vips::VImage::option()->set("bands", 3)), path(name));
        return path(name);
    }

    JobReport merge(const QStringList& files) { return runJob(runner, catalog.find(QStringLiteral("pdf.merge")), files); }

    // The merged file of a merge that must succeed, named after the first file and checked
    // whole by qpdf.
    QString merged(const QStringList& files)
    {
        const JobReport report = merge(files);
        EXPECT_TRUE(report.succeeded) << report.message.toStdString();
        EXPECT_EQ(report.results, QStringList{path(QFileInfo(files.first()).completeBaseName() + QStringLiteral(" Merged.pdf"))});
        EXPECT_TRUE(qpdfCheckPasses(report.results.value(0)));
        return report.results.value(0);
    }
};

QStringList pageTexts(const QString& file)
{
    QStringList pages = pdfToText(file).split(u'\f');
    pages.removeLast();  // after the last page's form feed
    for (QString& page : pages)
        page = page.trimmed();
    return pages;
}

TEST_F(PdfMergeTest, RefusesWhatItCannotMergeAndWritesNothing)
{
    const QString alpha = pdf("Alpha.pdf", pagesOfText(2));
    writeFile(path(QStringLiteral("Torn.png")), "not a picture");
    QList<std::pair<QStringList, QString>> cases{{{alpha}, QStringLiteral("Drop two or more files to merge")},
                                                 {{alpha, path(QStringLiteral("Torn.png"))}, QStringLiteral("Can't read this image")}};
    for (const BadPdf& bad : writeBadPdfs(folder.path()))
        cases.append({{alpha, bad.path, alpha}, bad.message});
    const QStringList before = folderEntries(folder.path());
    for (const auto& [files, message] : cases) {
        const JobReport report = merge(files);
        EXPECT_FALSE(report.succeeded) << files.join(u' ').toStdString();
        EXPECT_EQ(report.message, message) << files.join(u' ').toStdString();
    }
    EXPECT_EQ(folderEntries(folder.path()), before);
}

// The page, from 0, a link annotation or bookmark goes to.
int targetPage(QPDF& pdf, QPDFObjectHandle holder)
{
    QPDFObjectHandle destination = holder.getKey("/Dest");
    if (destination.isName() || destination.isString())
        destination = QPDFOutlineDocumentHelper(pdf).resolveNamedDest(destination);
    if (destination.isDictionary())
        destination = destination.getKey("/D");
    const std::vector<QPDFObjectHandle>& pages = pdf.getAllPages();
    for (size_t i = 0; destination.isArray() && i < pages.size(); ++i) {
        if (pages[i].getObjGen() == destination.getArrayItem(0).getObjGen())
            return int(i);
    }
    return -1;
}

// Files join in drop order: a PDF's pages as they are, a picture on a page of its own (fitted
// when it is large). Each source's bookmarks go under an entry named after it, closed items
// staying closed; its links, named destinations and page labels move with its pages. A name an
// earlier source used is renamed, never onto another name of the same source ("intro" and
// "intro-2" both clash in the Guide's copies), and links and bookmarks by name follow.
TEST_F(PdfMergeTest, PagesBookmarksLinksNamesAndLabelsMoveInDropOrder)
{
    TestPdf notes{.pages = {{.text = u"Notes"_s}}};
    notes.namedDestinations = {{QStringLiteral("intro"), 0}};
    notes.links = {{.fromPage = 0, .target = {.name = QStringLiteral("intro")}}};
    TestPdf guide = pagesOfText(4);
    guide.bookmarks = {
        {.title = QStringLiteral("Intro"), .target = {0}},
        {.title = QStringLiteral("Part"), .target = {1}, .children = {{.title = QStringLiteral("Détails 日本"), .target = {2}}}},
        {.title = QStringLiteral("Appendix"), .target = {2}, .children = {{.title = QStringLiteral("Table"), .target = {1}}},
         .open = false},
        {.title = QStringLiteral("By name"), .target = {.name = QStringLiteral("intro")}},
    };
    guide.namedDestinations = {{QStringLiteral("intro"), 2}, {QStringLiteral("intro-2"), 0}};
    guide.links = {{.fromPage = 0, .target = {2}},
                   {.fromPage = 1, .target = {.name = QStringLiteral("intro")}},
                   {.fromPage = 2, .target = {.name = QStringLiteral("intro-2")}}};
    guide.pageLabels = QStringLiteral("0 << /S /r >> 2 << /S /D /P (A-) >>");
    const QString guideFile = pdf("Guide.pdf", guide);

    const QString result =
        merged({pdf("Notes.pdf", notes), guideFile, picture("Photo.jpg", 4000, 3000), guideFile, picture("Small.png", 300, 200)});
    EXPECT_EQ(pageTexts(result).join(u'|'), u"Notes|Page 1|Page 2|Page 3|Page 4||Page 1|Page 2|Page 3|Page 4|"_s);
    QList<QSizeF> sizes(11, QSizeF(612, 792));
    sizes[5] = QSizeF(1190, 892.5);
    sizes[10] = QSizeF(300, 200);
    EXPECT_EQ(pdfPageSizes(result), sizes);
    EXPECT_EQ(pdfOutline(result), u"Notes:1, "
                                  u"Guide:2[Intro:2, Part:3[Détails 日本:4], Appendix:4{Table:3}, By name:4], "
                                  u"Photo:6, "
                                  u"Guide:7[Intro:7, Part:8[Détails 日本:9], Appendix:9{Table:8}, By name:9], "
                                  u"Small:11"_s);
    EXPECT_EQ(pdfPageLabels(result).join(u' '), u"D1 r1 r2 DA-1 DA-2 D6 r1 r2 DA-1 DA-2 D11"_s);
    QPDF merged;
    merged.processFile(result.toUtf8().constData());
    // Every item shows but what each closed Appendix holds: 1 + 6 + 1 + 6 + 1.
    EXPECT_EQ(merged.getRoot().getKey("/Outlines").getKey("/Count").getIntValue(), 15);
    const struct {
        int fromPage;
        int toPage;
    } links[] = {{0, 0}, {1, 3}, {2, 3}, {3, 1}, {6, 8}, {7, 8}, {8, 6}};
    for (const auto& link : links) {
        QPDFObjectHandle page = merged.getAllPages().at(size_t(link.fromPage));
        QPDFObjectHandle annotations = page.getKey("/Annots");
        ASSERT_TRUE(annotations.isArray()) << link.fromPage;
        EXPECT_EQ(targetPage(merged, annotations.getArrayItem(0)), link.toPage) << "link on page " << link.fromPage;
    }
}

// Loops a damaged or hostile file may hold, where each would send a naive reader round forever.
TEST_F(PdfMergeTest, LoopsInBookmarksNamesAndActionsEndTheReadingNotTheMerge)
{
    TestPdf document = pagesOfText(2);
    document.bookmarks = {{.title = QStringLiteral("A"), .target = {0}}, {.title = QStringLiteral("B"), .target = {1}}};
    document.namedDestinations = {{QStringLiteral("x"), 1}};
    document.links = {{.fromPage = 0, .target = {.name = QStringLiteral("x")}}};
    const QString written = pdf("Written.pdf", document);

    QPDF looped;
    looped.processFile(written.toUtf8().constData());
    QPDFObjectHandle first = looped.getRoot().getKey("/Outlines").getKey("/First");
    first.replaceKey("/First", first);                       // A is its own child
    first.getKey("/Next").replaceKey("/Next", first);        // B is followed by A again
    QPDFObjectHandle tree = looped.getRoot().getKey("/Names").getKey("/Dests");
    tree.replaceKey("/Kids", QPDFObjectHandle::newArray(std::vector<QPDFObjectHandle>{tree}));  // its own kid
    QPDFObjectHandle page = looped.getAllPages().front();
    QPDFObjectHandle link = page.getKey("/Annots").getArrayItem(0);
    QPDFObjectHandle action = looped.makeIndirectObject(QPDFObjectHandle::parse("<< /S /GoTo /D (x) >>"));
    action.replaceKey("/Next", action);                      // an action that follows itself
    link.removeKey("/Dest");
    link.replaceKey("/A", action);
    const QString loops = writeQpdf(looped, path(QStringLiteral("Loops.pdf")));

    // Twice, so the second copy's names collide and its actions are rewritten.
    const QString result = merged({loops, loops});
    EXPECT_EQ(pdfOutline(result), u"Loops:1[A:1, B:2], Loops:3[A:3, B:4]"_s);
    EXPECT_EQ(pdfPageLabels(result), QStringList(4, u"-"_s)) << "no source has page labels: none are made up";
    QPDF merged;
    merged.processFile(result.toUtf8().constData());
    QPDFObjectHandle secondPage = merged.getAllPages().at(2);
    EXPECT_EQ(secondPage.getKey("/Annots").getArrayItem(0).getKey("/A").getKey("/D").getUTF8Value(), "x-2");
}

}  // namespace
