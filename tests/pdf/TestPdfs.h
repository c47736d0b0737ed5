#pragma once

#include "operations/JobRunner.h"
#include "operations/OperationCatalog.h"

#include <QJsonObject>
#include <QList>
#include <QSizeF>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <optional>
#include <vector>

namespace wendrel::test {

// One page of a test document: its media box in points, its /Rotate and the line of text
// drawn on it, in one of the standard fonts (so the document needs no font file).
struct TestPage {
    double width = 612;
    double height = 792;
    int rotate = 0;
    QString text{};  // empty: "Page N"
    QString font = QStringLiteral("Helvetica");
};

// Where a bookmark or a link goes: a page by its index, or a name of the /Names /Dests tree.
struct TestTarget {
    int page = 0;
    QString name{};  // when given, the destination is this name instead
};

struct TestBookmark {
    QString title;
    TestTarget target{};
    std::vector<TestBookmark> children{};
    bool open = true;
};

struct TestLink {
    int fromPage = 0;
    TestTarget target{};
};

struct TestPdf {
    QList<TestPage> pages{TestPage{}};
    std::vector<TestBookmark> bookmarks{};
    QList<TestLink> links{};
    QList<std::pair<QString, int>> namedDestinations{};  // name, page index
    QString pageLabels{};  // the content of /PageLabels /Nums, "0 << /S /r >> 2 << /S /D >>"
    std::optional<QString> userPassword{};  // encrypted with AES-256 when given
    int treeRotate = 0;  // the page tree's /Rotate, inherited by pages without their own
    bool sharedResources = false;  // every page draws from one dictionary holding all the fonts
};

// Writes the document to `path` with qpdf and returns the path.
QString writeTestPdf(const QString& path, const TestPdf& pdf = {});

// `count` pages of US Letter, "Page 1" to "Page count".
TestPdf pagesOfText(int count);

// What independent tools say about a PDF: qpdf --check passes; pdftotext's text; pdfinfo's
// page count, page sizes and rotations. Empty/-1 when the tool fails.
bool qpdfCheckPasses(const QString& path, const QString& password = {});
QString pdfToText(const QString& path, const QString& password = {});
int pdfPageCount(const QString& path);
QList<QSizeF> pdfPageSizes(const QString& path);
QList<int> pdfPageRotations(const QString& path);

// The outline as qpdf reads it, one line: "title:page" per bookmark (the page it goes to,
// from 1), its children after it in [ ] when it is open, in { } when it is closed.
// "Guide:1[Intro:1, Part:2{Details:3}], Photo:4".
QString pdfOutline(const QString& path);

// Each page's label as qpdf reads it: style, prefix and number, "r1", "A-3"; "-" when none.
QStringList pdfPageLabels(const QString& path);

// Runs the PDF entries as real jobs on files in a folder of the test's own; remembered answers
// are forgotten before and after, and no job may leave its scratch folder behind.
class PdfEntryTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    QString path(const QString& name) const { return folder.filePath(name); }
    QString path(const char* name) const { return folder.filePath(QString::fromUtf8(name)); }
    JobReport run(const char* id, const QString& file, const QJsonObject& answers = {});

    QTemporaryDir folder;
    OperationCatalog catalog;
    JobRunner runner;
};

}  // namespace wendrel::test
