#pragma once

#include <QList>
#include <QSizeF>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace wendrel::test {

// One page of a test document: its media box in points, its /Rotate and the line of text
// drawn on it (in a standard font, so the document needs no font file).
struct TestPage {
    double width = 612;
    double height = 792;
    int rotate = 0;
    QString text{};  // empty: "Page N"
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
    QStringList outlineTitles{};  // a bookmark per title, to pages 1, 2, 3… in turn
    std::vector<TestBookmark> bookmarks{};  // an outline of its own, when given
    QList<TestLink> links{};
    QList<std::pair<QString, int>> namedDestinations{};  // name, page index
    QString pageLabels{};  // the content of /PageLabels /Nums, "0 << /S /r >> 2 << /S /D >>"
    std::optional<QString> userPassword{};  // encrypted with AES-256 when given
};

// Writes the document to `path` with qpdf and returns the path.
QString writeTestPdf(const QString& path, const TestPdf& pdf = {});

// `count` pages of US Letter, "Page 1" to "Page count".
TestPdf pagesOfText(int count);

// What independent tools say about a PDF: qpdf --check passes; pdftotext's text; pdfinfo's
// page count and page sizes. Empty/-1 when the tool fails.
bool qpdfCheckPasses(const QString& path, const QString& password = {});
QString pdfToText(const QString& path, const QString& password = {});
int pdfPageCount(const QString& path);
QList<QSizeF> pdfPageSizes(const QString& path);

// The outline as qpdf reads it, one line: "title:page" per bookmark (the page it goes to,
// from 1), its children after it in [ ] when it is open, in { } when it is closed.
// "Guide:1[Intro:1, Part:2{Details:3}], Photo:4".
QString pdfOutline(const QString& path);

// Each page's label as qpdf reads it: style, prefix and number, "r1", "A-3"; "-" when none.
QStringList pdfPageLabels(const QString& path);

}  // namespace wendrel::test
