// libFuzzer target for the OpenDocument text reader. Bytes starting with "PK" are a whole
// package; any others are the XML of content.xml and styles.xml (split at partSeparator) inside
// a valid package with a picture, so mutations reach the XML paths. Every input ends in an
// OperationError or in a document the writers can write; never a crash, a hang or runaway memory.
#include "FuzzSupport.h"

#include "documents/odt/OdtReader.h"


using namespace wendrel;
using namespace wendrel::fuzz;

namespace {

const QByteArray manifest = R"(<?xml version="1.0" encoding="UTF-8"?>
<manifest:manifest xmlns:manifest="urn:oasis:names:tc:opendocument:xmlns:manifest:1.0" manifest:version="1.2">
<manifest:file-entry manifest:full-path="/" manifest:media-type="application/vnd.oasis.opendocument.text"/>
<manifest:file-entry manifest:full-path="content.xml" manifest:media-type="text/xml"/>
<manifest:file-entry manifest:full-path="styles.xml" manifest:media-type="text/xml"/>
<manifest:file-entry manifest:full-path="Pictures/a.png" manifest:media-type="image/png"/>
</manifest:manifest>)";

QByteArray packageOf(const QByteArray& bytes)
{
    if (bytes.startsWith("PK"))
        return bytes;
    static const QByteArray png = smallPng();
    const QList<QByteArray> xml = splitParts(bytes, 2);
    return zipPackage({{QStringLiteral("mimetype"), "application/vnd.oasis.opendocument.text"},
                       {QStringLiteral("META-INF/manifest.xml"), manifest},
                       {QStringLiteral("content.xml"), xml[0]},
                       {QStringLiteral("styles.xml"), xml[1]},
                       {QStringLiteral("Pictures/a.png"), png}});
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    ensureGuiApplication();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QString path = scratchFile(QStringLiteral("input.odt"), packageOf(bytesOf(data, size)));
    readAndWriteEveryWay([&] { return document::readOdt(path); });
    return 0;
}
