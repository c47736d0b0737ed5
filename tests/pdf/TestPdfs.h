#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace wendrel::test {

// One page of a test document: its media box in points, its /Rotate and the line of text
// drawn on it (in a standard font, so the document needs no font file).
struct TestPage {
    double width = 612;
    double height = 792;
    int rotate = 0;
    QString text{};  // empty: "Page N"
};

struct TestPdf {
    QList<TestPage> pages{TestPage{}};
    QStringList outlineTitles{};  // a bookmark per title, to pages 1, 2, 3… in turn
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

}  // namespace wendrel::test
