#include "TestPdfs.h"

#include "imaging/ImagingOperations.h"
#include "imaging/TestPictures.h"
#include "operations/settings/SettingsStore.h"
#include "support/JobHarness.h"
#include "support/TestEnvironment.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

#include <qpdf/QPDF.hh>
#include <qpdf/QPDFObjectHandle.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFWriter.hh>

namespace wendrel::test {

namespace {

QPDFObjectHandle pageObject(QPDF& pdf, const TestPage& page, int number, const std::string& font,
                            const QPDFObjectHandle& resources)
{
    const QString text = page.text.isEmpty() ? QStringLiteral("Page %1").arg(number) : page.text;
    QPDFObjectHandle dictionary = QPDFObjectHandle::parse("<< /Type /Page >>");
    dictionary.replaceKey("/MediaBox", QPDFObjectHandle::newArray(QPDFObjectHandle::Rectangle(0, 0, page.width, page.height)));
    dictionary.replaceKey("/Contents", QPDFObjectHandle::newStream(&pdf, "BT " + font + " 24 Tf 72 72 Td (" + text.toStdString() + ") Tj ET\n"));
    dictionary.replaceKey("/Resources", resources);
    if (page.rotate != 0)
        dictionary.replaceKey("/Rotate", QPDFObjectHandle::newInteger(page.rotate));
    return pdf.makeIndirectObject(dictionary);
}

QPDFObjectHandle destination(QPDF& pdf, const TestTarget& target)
{
    if (!target.name.isEmpty())
        return QPDFObjectHandle::newString(target.name.toStdString());
    return QPDFObjectHandle::newArray(std::vector<QPDFObjectHandle>{pdf.getAllPages().at(size_t(target.page)),
                                                                    QPDFObjectHandle::newName("/Fit")});
}

// Chains `bookmarks` below `parent`; returns how many items show below it.
int addBookmarks(QPDF& pdf, QPDFObjectHandle parent, const std::vector<TestBookmark>& bookmarks)
{
    int shown = 0;
    QPDFObjectHandle previous;
    for (const TestBookmark& bookmark : bookmarks) {
        QPDFObjectHandle item = pdf.makeIndirectObject(QPDFObjectHandle::newDictionary());
        item.replaceKey("/Title", QPDFObjectHandle::newUnicodeString(bookmark.title.toStdString()));
        item.replaceKey("/Parent", parent);
        item.replaceKey("/Dest", destination(pdf, bookmark.target));
        const int below = addBookmarks(pdf, item, bookmark.children);
        if (below > 0)
            item.replaceKey("/Count", QPDFObjectHandle::newInteger(bookmark.open ? below : -below));
        if (previous.isInitialized()) {
            previous.replaceKey("/Next", item);
            item.replaceKey("/Prev", previous);
        } else {
            parent.replaceKey("/First", item);
        }
        parent.replaceKey("/Last", item);
        previous = item;
        shown += 1 + (bookmark.open ? below : 0);
    }
    return shown;
}

void addNavigation(QPDF& pdf, const TestPdf& document)
{
    if (!document.bookmarks.empty()) {
        QPDFObjectHandle outlines = pdf.makeIndirectObject(QPDFObjectHandle::parse("<< /Type /Outlines >>"));
        outlines.replaceKey("/Count", QPDFObjectHandle::newInteger(addBookmarks(pdf, outlines, document.bookmarks)));
        pdf.getRoot().replaceKey("/Outlines", outlines);
    }
    if (!document.namedDestinations.isEmpty()) {
        QPDFObjectHandle names = QPDFObjectHandle::newArray();  // in byte order, as the tests give them
        for (const auto& [name, page] : document.namedDestinations) {
            names.appendItem(QPDFObjectHandle::newString(name.toStdString()));
            names.appendItem(destination(pdf, {page}));
        }
        QPDFObjectHandle tree = QPDFObjectHandle::newDictionary();
        tree.replaceKey("/Names", names);
        pdf.getRoot().replaceKey("/Names", QPDFObjectHandle::parse("<< >>"));
        pdf.getRoot().getKey("/Names").replaceKey("/Dests", pdf.makeIndirectObject(tree));
    }
    for (const TestLink& link : document.links) {
        QPDFObjectHandle annotation = pdf.makeIndirectObject(
            QPDFObjectHandle::parse("<< /Type /Annot /Subtype /Link /Rect [72 72 300 100] /Border [0 0 0] >>"));
        annotation.replaceKey("/Dest", destination(pdf, link.target));
        QPDFObjectHandle page = pdf.getAllPages().at(size_t(link.fromPage));
        if (!page.hasKey("/Annots"))
            page.replaceKey("/Annots", QPDFObjectHandle::newArray());
        page.getKey("/Annots").appendItem(annotation);
    }
    if (!document.pageLabels.isEmpty())
        pdf.getRoot().replaceKey("/PageLabels", QPDFObjectHandle::parse("<< /Nums [" + document.pageLabels.toStdString() + "] >>"));
}

QJsonArray qpdfJson(const QString& path, const QString& key)
{
    const QString json = toolOutput(QStringLiteral("qpdf"), {QStringLiteral("--json"), QStringLiteral("--json-key=") + key, path});
    return QJsonDocument::fromJson(json.toUtf8()).object().value(key).toArray();
}

QString outlineText(const QJsonArray& items)
{
    QStringList parts;
    for (const QJsonValue& value : items) {
        const QJsonObject item = value.toObject();
        QString part = item[u"title"].toString() + u':' + QString::number(item[u"destpageposfrom1"].toInt());
        const QJsonArray kids = item[u"kids"].toArray();
        if (!kids.isEmpty()) {
            const bool open = item[u"open"].toBool();
            part += (open ? u'[' : u'{') + outlineText(kids) + (open ? u']' : u'}');
        }
        parts.append(part);
    }
    return parts.join(u", ");
}

// pdfinfo's line about `what` for every page, "Page    3 rot:  90".
QRegularExpressionMatchIterator pdfinfoPageLines(const QString& path, const char* what)
{
    const QString info = toolOutput(QStringLiteral("pdfinfo"), {QStringLiteral("-f"), QStringLiteral("1"), QStringLiteral("-l"),
                                                                QStringLiteral("100000"), path});
    return QRegularExpression(QStringLiteral("^Page +\\d+ ") + QString::fromLatin1(what), QRegularExpression::MultilineOption)
        .globalMatch(info);
}

}  // namespace

TestPdf pagesOfText(int count) { return {.pages = QList<TestPage>(count)}; }

QString writeTestPdf(const QString& path, const TestPdf& document)
{
    QPDF pdf;
    pdf.emptyPDF();
    QPDFObjectHandle shared = pdf.makeIndirectObject(QPDFObjectHandle::parse("<< /Font << >> >>"));
    std::map<QString, QPDFObjectHandle> fonts;  // one object per face, however many pages use it
    QPDFPageDocumentHelper pages(pdf);
    for (int i = 0; i < document.pages.size(); ++i) {
        const TestPage& page = document.pages[i];
        QPDFObjectHandle& font = fonts[page.font];
        if (!font.isInitialized()) {
            font = pdf.makeIndirectObject(QPDFObjectHandle::parse(
                "<< /Type /Font /Subtype /Type1 /BaseFont /" + page.font.toStdString() + " /Encoding /WinAnsiEncoding >>"));
        }
        const std::string key = document.sharedResources ? "/F" + std::to_string(i + 1) : "/F1";
        QPDFObjectHandle resources = document.sharedResources ? shared : QPDFObjectHandle::parse("<< /Font << >> >>");
        resources.getKey("/Font").replaceKey(key, font);
        pages.addPage(QPDFPageObjectHelper(pageObject(pdf, page, i + 1, key, resources)), false);
    }
    addNavigation(pdf, document);
    if (document.treeRotate != 0)
        pdf.getRoot().getKey("/Pages").replaceKey("/Rotate", QPDFObjectHandle::newInteger(document.treeRotate));

    const QByteArray fileName = QFile::encodeName(path);
    QPDFWriter writer(pdf, fileName.constData());
    if (document.userPassword) {
        const std::string password = document.userPassword->toStdString();
        writer.setR6EncryptionParameters(password.c_str(), password.c_str(), true, true, true, true, true, true,
                                         qpdf_r3p_full, true);
    }
    writer.write();
    return path;
}

bool qpdfCheckPasses(const QString& path, const QString& password)
{
    return runTool(QStringLiteral("qpdf"), {QStringLiteral("--check"), QStringLiteral("--password=") + password, path});
}

QString pdfToText(const QString& path, const QString& password)
{
    return toolOutput(QStringLiteral("pdftotext"), {QStringLiteral("-upw"), password, path, QStringLiteral("-")});
}

int pdfPageCount(const QString& path)
{
    const QRegularExpressionMatch match = QRegularExpression(QStringLiteral("^Pages:\\s+(\\d+)"), QRegularExpression::MultilineOption)
                                              .match(toolOutput(QStringLiteral("pdfinfo"), {path}));
    return match.hasMatch() ? match.captured(1).toInt() : -1;
}

QList<QSizeF> pdfPageSizes(const QString& path)
{
    QList<QSizeF> sizes;
    for (const QRegularExpressionMatch& match : pdfinfoPageLines(path, "size: +([\\d.]+) x ([\\d.]+) pts"))
        sizes.append(QSizeF(match.captured(1).toDouble(), match.captured(2).toDouble()));
    return sizes;
}

QList<int> pdfPageRotations(const QString& path)
{
    QList<int> rotations;
    for (const QRegularExpressionMatch& match : pdfinfoPageLines(path, "rot: +(-?\\d+)"))
        rotations.append(match.captured(1).toInt());
    return rotations;
}

QString pdfOutline(const QString& path) { return outlineText(qpdfJson(path, QStringLiteral("outlines"))); }

QStringList pdfPageLabels(const QString& path)
{
    QStringList labels;
    for (const QJsonValue& page : qpdfJson(path, QStringLiteral("pages"))) {
        const QJsonObject label = page.toObject()[u"label"].toObject();
        // Strings come as "u:text" in qpdf's JSON.
        labels.append(label.isEmpty() ? QStringLiteral("-")
                                      : label[u"/S"].toString().mid(1) + label[u"/P"].toString().mid(2)
                                            + QString::number(label[u"/St"].toInt(1)));
    }
    return labels;
}

void PdfEntryTest::SetUp()
{
    QFile::remove(SettingsStore::filePath());
    registerImagingOperations(catalog);
}

void PdfEntryTest::TearDown()
{
    QFile::remove(SettingsStore::filePath());
    EXPECT_TRUE(leftoverScratchFolders().isEmpty());
}

JobReport PdfEntryTest::run(const char* id, const QString& file, const QJsonObject& answers)
{
    const FileOperationPtr entry = catalog.find(QString::fromUtf8(id));
    if (!entry) {
        ADD_FAILURE() << "no entry " << id;
        return {};
    }
    return runJob(runner, JobRequest{.operation = entry, .paths = {file}, .answers = answers});
}

}  // namespace wendrel::test
