// libFuzzer target for the plain-text, Markdown and HTML readers: the first byte picks the
// reader, the rest is the text (UTF-8). Pictures are looked up in a folder holding one, so
// relative sources are read too. Every input ends in an OperationError or in a document the
// writers can write; never a crash, a hang or runaway memory.
#include "FuzzSupport.h"

#include "documents/text/TextReaders.h"

#include <QBuffer>
#include <QDir>
#include <QImage>
#include <QTextDocument>

using namespace wendrel;
using namespace wendrel::fuzz;

namespace {

// A folder with a.png, for sources such as "a.png" and "./a.png".
QString pictureFolder()
{
    static const QString folder = [] {
        QDir scratch(scratchFolder());
        REQUIRE(scratch.mkpath(QStringLiteral("pictures")));
        QImage image(3, 2, QImage::Format_RGB32);
        image.fill(Qt::darkCyan);
        QByteArray png;
        QBuffer device(&png);
        device.open(QIODevice::WriteOnly);
        image.save(&device, "PNG");
        scratchFile(QStringLiteral("pictures/a.png"), png);
        return scratch.filePath(QStringLiteral("pictures"));
    }();
    return folder;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    ensureGuiApplication();
    pictureFolder();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const QString text = QString::fromUtf8(bytesOf(data + 1, size - 1));
    const int reader = data[0] % 3;
    readAndWriteEveryWay([&] {
        switch (reader) {
        case 0: return document::readPlainText(text);
        case 1: return document::readMarkdown(text, pictureFolder());
        default: return document::readHtml(text, pictureFolder());
        }
    });
    return 0;
}
