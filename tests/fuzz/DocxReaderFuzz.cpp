// libFuzzer target for the Word document reader. Bytes starting with "PK" are a whole package;
// any others are the XML of the document, styles and numbering parts (split at partSeparator)
// inside a valid package with a picture and a link, so mutations reach the XML paths. Every
// input ends in an OperationError or in a document the writers can write; never a crash, a
// hang or runaway memory.
#include "FuzzSupport.h"

#include "documents/docx/DocxReader.h"

#include <QTextDocument>

using namespace wendrel;
using namespace wendrel::fuzz;

namespace {

const QByteArray contentTypes = R"(<?xml version="1.0" encoding="UTF-8"?>
<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types">
<Default Extension="rels" ContentType="application/vnd.openxmlformats-package.relationships+xml"/>
<Default Extension="xml" ContentType="application/xml"/>
<Default Extension="png" ContentType="image/png"/>
<Override PartName="/word/document.xml" ContentType="application/vnd.openxmlformats-officedocument.wordprocessingml.document.main+xml"/>
</Types>)";

const QByteArray packageRelationships = R"(<?xml version="1.0" encoding="UTF-8"?>
<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">
<Relationship Id="rId1" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/officeDocument" Target="word/document.xml"/>
</Relationships>)";

const QByteArray documentRelationships = R"(<?xml version="1.0" encoding="UTF-8"?>
<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">
<Relationship Id="rIdS" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/styles" Target="styles.xml"/>
<Relationship Id="rIdN" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/numbering" Target="numbering.xml"/>
<Relationship Id="rIdP" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/image" Target="media/a.png"/>
<Relationship Id="rIdL" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/hyperlink" Target="https://example.org/" TargetMode="External"/>
</Relationships>)";

QByteArray packageOf(const QByteArray& bytes)
{
    if (bytes.startsWith("PK"))
        return bytes;
    static const QByteArray png = smallPng();
    const QList<QByteArray> xml = splitParts(bytes, 3);
    return zipPackage({{QStringLiteral("[Content_Types].xml"), contentTypes},
                       {QStringLiteral("_rels/.rels"), packageRelationships},
                       {QStringLiteral("word/_rels/document.xml.rels"), documentRelationships},
                       {QStringLiteral("word/document.xml"), xml[0]},
                       {QStringLiteral("word/styles.xml"), xml[1]},
                       {QStringLiteral("word/numbering.xml"), xml[2]},
                       {QStringLiteral("word/media/a.png"), png}});
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    ensureGuiApplication();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QString path = scratchFile(QStringLiteral("input.docx"), packageOf(bytesOf(data, size)));
    readAndWriteEveryWay([&] { return readDocx(path); });
    return 0;
}
