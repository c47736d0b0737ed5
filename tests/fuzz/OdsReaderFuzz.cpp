// libFuzzer target for the ODS reader. Bytes starting with "PK" are a whole package; any others
// are the XML of content.xml inside a valid package, so mutations reach the XML paths. Every
// input ends in an OperationError or in rows the writers write; never a crash, a hang or
// runaway memory.
#include "FuzzSupport.h"
#include "SheetFuzzing.h"

using namespace wendrel;
using namespace wendrel::fuzz;

namespace {

const QByteArray manifest = R"(<?xml version="1.0" encoding="UTF-8"?>
<manifest:manifest xmlns:manifest="urn:oasis:names:tc:opendocument:xmlns:manifest:1.0" manifest:version="1.2">
<manifest:file-entry manifest:full-path="/" manifest:media-type="application/vnd.oasis.opendocument.spreadsheet"/>
<manifest:file-entry manifest:full-path="content.xml" manifest:media-type="text/xml"/>
</manifest:manifest>)";

QByteArray packageOf(const QByteArray& bytes)
{
    if (bytes.startsWith("PK"))
        return bytes;
    return zipPackage({{QStringLiteral("mimetype"), "application/vnd.oasis.opendocument.spreadsheet"},
                       {QStringLiteral("META-INF/manifest.xml"), manifest},
                       {QStringLiteral("content.xml"), bytes}});
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    convertEveryWay(scratchFile(QStringLiteral("input.ods"), packageOf(bytesOf(data, size))), SheetFormat::ods);
    return 0;
}
