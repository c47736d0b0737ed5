#include "TestPdfs.h"

#include <QFile>
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

QString runTool(const QString& program, const QStringList& arguments, bool* succeeded = nullptr)
{
    QProcess process;
    process.start(program, arguments);
    const bool finished = process.waitForFinished(120'000);
    if (succeeded)
        *succeeded = finished && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
    return QString::fromUtf8(process.readAllStandardOutput());
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

}  // namespace wendrel::test
