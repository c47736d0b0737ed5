#include "TestPdfs.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>

#include <qpdf/QPDF.hh>
#include <qpdf/QPDFObjectHandle.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFWriter.hh>

namespace wendrel::test {

namespace {

QPDFObjectHandle pageObject(QPDF& pdf, const TestPage& page, int number, const QPDFObjectHandle& font)
{
    const QString text = page.text.isEmpty() ? QStringLiteral("Page %1").arg(number) : page.text;
    const std::string content = "BT /F1 24 Tf 72 72 Td (" + text.toStdString() + ") Tj ET\n";
    QPDFObjectHandle contents = QPDFObjectHandle::newStream(&pdf, content);

    QPDFObjectHandle resources = QPDFObjectHandle::newDictionary();
    QPDFObjectHandle fonts = QPDFObjectHandle::newDictionary();
    fonts.replaceKey("/F1", font);
    resources.replaceKey("/Font", fonts);

    QPDFObjectHandle dictionary = QPDFObjectHandle::newDictionary();
    dictionary.replaceKey("/Type", QPDFObjectHandle::newName("/Page"));
    dictionary.replaceKey("/MediaBox", QPDFObjectHandle::newArray(QPDFObjectHandle::Rectangle(0, 0, page.width, page.height)));
    dictionary.replaceKey("/Contents", contents);
    dictionary.replaceKey("/Resources", resources);
    if (page.rotate != 0)
        dictionary.replaceKey("/Rotate", QPDFObjectHandle::newInteger(page.rotate));
    return pdf.makeIndirectObject(dictionary);
}

void addOutlines(QPDF& pdf, const QStringList& titles)
{
    const std::vector<QPDFObjectHandle> pages = pdf.getAllPages();
    QPDFObjectHandle outlines = pdf.makeIndirectObject(QPDFObjectHandle::newDictionary());
    outlines.replaceKey("/Type", QPDFObjectHandle::newName("/Outlines"));
    QPDFObjectHandle previous;
    QPDFObjectHandle first;
    for (int i = 0; i < titles.size(); ++i) {
        QPDFObjectHandle item = pdf.makeIndirectObject(QPDFObjectHandle::newDictionary());
        item.replaceKey("/Title", QPDFObjectHandle::newUnicodeString(titles[i].toStdString()));
        item.replaceKey("/Parent", outlines);
        QPDFObjectHandle destination = QPDFObjectHandle::newArray();
        destination.appendItem(pages[size_t(i) % pages.size()]);
        destination.appendItem(QPDFObjectHandle::newName("/Fit"));
        item.replaceKey("/Dest", destination);
        if (previous.isInitialized()) {
            previous.replaceKey("/Next", item);
            item.replaceKey("/Prev", previous);
        } else {
            first = item;
        }
        previous = item;
    }
    outlines.replaceKey("/First", first);
    outlines.replaceKey("/Last", previous);
    outlines.replaceKey("/Count", QPDFObjectHandle::newInteger(titles.size()));
    pdf.getRoot().replaceKey("/Outlines", outlines);
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

QString runTool(const QString& program, const QStringList& arguments, bool* succeeded = nullptr)
{
    QProcess process;
    process.start(program, arguments);
    const bool finished = process.waitForFinished(120'000);
    if (succeeded)
        *succeeded = finished && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
    return QString::fromUtf8(process.readAllStandardOutput());
}

QJsonArray qpdfJson(const QString& path, const QString& key)
{
    const QString json = runTool(QStringLiteral("qpdf"), {QStringLiteral("--json"), QStringLiteral("--json-key=") + key, path});
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

}  // namespace

TestPdf pagesOfText(int count)
{
    TestPdf pdf;
    pdf.pages.clear();
    for (int i = 0; i < count; ++i)
        pdf.pages.append(TestPage{});
    return pdf;
}

QString writeTestPdf(const QString& path, const TestPdf& spec)
{
    QPDF pdf;
    pdf.emptyPDF();
    QPDFObjectHandle font = pdf.makeIndirectObject(QPDFObjectHandle::parse(
        "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica /Encoding /WinAnsiEncoding >>"));
    QPDFPageDocumentHelper pages(pdf);
    for (int i = 0; i < spec.pages.size(); ++i)
        pages.addPage(QPDFPageObjectHelper(pageObject(pdf, spec.pages[i], i + 1, font)), false);
    if (!spec.outlineTitles.isEmpty())
        addOutlines(pdf, spec.outlineTitles);
    addNavigation(pdf, spec);

    const QByteArray fileName = QFile::encodeName(path);
    QPDFWriter writer(pdf, fileName.constData());
    if (spec.userPassword) {
        const std::string password = spec.userPassword->toStdString();
        writer.setR6EncryptionParameters(password.c_str(), password.c_str(), true, true, true, true, true, true,
                                         qpdf_r3p_full, true);
    }
    writer.write();
    return path;
}

bool qpdfCheckPasses(const QString& path, const QString& password)
{
    QStringList arguments{QStringLiteral("--check"), path};
    if (!password.isEmpty())
        arguments.prepend(QStringLiteral("--password=") + password);
    bool succeeded = false;
    runTool(QStringLiteral("qpdf"), arguments, &succeeded);
    return succeeded;
}

QString pdfToText(const QString& path, const QString& password)
{
    QStringList arguments{path, QStringLiteral("-")};
    if (!password.isEmpty())
        arguments = QStringList{QStringLiteral("-upw"), password} + arguments;
    return runTool(QStringLiteral("pdftotext"), arguments);
}

int pdfPageCount(const QString& path)
{
    bool succeeded = false;
    const QString info = runTool(QStringLiteral("pdfinfo"), {path}, &succeeded);
    const QRegularExpressionMatch match = QRegularExpression(QStringLiteral("^Pages:\\s+(\\d+)"),
                                                             QRegularExpression::MultilineOption)
                                              .match(info);
    return succeeded && match.hasMatch() ? match.captured(1).toInt() : -1;
}

QList<QSizeF> pdfPageSizes(const QString& path)
{
    const QString info = runTool(QStringLiteral("pdfinfo"), {QStringLiteral("-f"), QStringLiteral("1"),
                                                              QStringLiteral("-l"), QStringLiteral("100000"), path});
    QList<QSizeF> sizes;
    static const QRegularExpression size(QStringLiteral("^Page +\\d+ size: +([\\d.]+) x ([\\d.]+) pts"),
                                         QRegularExpression::MultilineOption);
    for (const QRegularExpressionMatch& match : size.globalMatch(info))
        sizes.append(QSizeF(match.captured(1).toDouble(), match.captured(2).toDouble()));
    return sizes;
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

}  // namespace wendrel::test
