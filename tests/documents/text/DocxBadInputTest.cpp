#include "DocumentSamples.h"
#include "DocxTestPackages.h"
#include "support/TestEnvironment.h"
#include "documents/ZipTestTools.h"

#include <QTemporaryDir>
#include <QTextDocument>

#include <gtest/gtest.h>

#include <functional>

namespace wendrel::test {

namespace {

const QString documentPart = QStringLiteral("word/document.xml");

const QByteArray pictureRelationships = R"(<?xml version="1.0"?>
<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">
 <Relationship Id="rIdP" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/image" Target="media/a.png"/>
</Relationships>)";

QString pictureRun()
{
    return QStringLiteral("<w:r><w:drawing><wp:inline><a:blip r:embed=\"rIdP\"/></wp:inline></w:drawing></w:r>");
}

// The package with the central directory's uncompressed size of `part` set to `size`.
QByteArray withStatedSize(QByteArray archive, const QString& part, quint32 size)
{
    for (const qsizetype offset : centralRecordOffsets(archive)) {
        const QByteArray name = archive.mid(offset + 46, le16(archive, offset + 28));
        if (name == part.toUtf8())
            putLe32(archive, offset + 24, size);
    }
    return archive;
}

QString nestedTables(int depth)
{
    QString body;
    for (int level = 0; level < depth; ++level)
        body += QStringLiteral("<w:tbl><w:tr><w:tc>");
    body += QStringLiteral("<w:p/>");
    for (int level = 0; level < depth; ++level)
        body += QStringLiteral("</w:tc></w:tr></w:tbl><w:p/>");
    return body;
}

struct BadInput {
    const char* name;
    std::function<QByteArray()> bytes;
    const char* message;  // a part of the error's message
};

const BadInput badInputs[] = {
    {"BinaryRenamed", [] { return QByteArray("\x7f" "ELF\x02\x01\x01\0\0\0\0\0\0\0\0\0", 16).repeated(64); },
     "Not a ZIP archive"},
    {"EmptyFile", [] { return QByteArray(); }, "Not a ZIP archive"},
    {"ZipWithoutDocumentPart",
     [] { return docxPackage({{QStringLiteral("notes.txt"), "just text"}}); }, "no document part"},
    {"BillionLaughs",
     [] {
         return docxPackage({{documentPart,
                              R"(<?xml version="1.0"?><!DOCTYPE w [<!ENTITY a "aaaaaaaaaa">)"
                              R"(<!ENTITY b "&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;"><!ENTITY c "&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;">)"
                              R"(<!ENTITY d "&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;"><!ENTITY e "&d;&d;&d;&d;&d;&d;&d;&d;&d;&d;">]>)"
                              R"(<w:document xmlns:w="http://schemas.openxmlformats.org/wordprocessingml/2006/main">)"
                              R"(<w:body><w:p><w:r><w:t>&e;&e;&e;&e;&e;&e;&e;&e;&e;&e;</w:t></w:r></w:p></w:body></w:document>)"}});
     },
     "declares a DTD"},
    {"DtdInStyles",
     [] {
         return docxPackage({{documentPart, documentXml(QStringLiteral("<w:p/>"))},
                             {QStringLiteral("word/_rels/document.xml.rels"),
                              R"(<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">)"
                              R"(<Relationship Id="s" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/styles" Target="styles.xml"/>)"
                              R"(</Relationships>)"},
                             {QStringLiteral("word/styles.xml"), R"(<!DOCTYPE x SYSTEM "file:///etc/passwd"><w:styles/>)"}});
     },
     "declares a DTD"},
    {"MalformedXml",
     [] { return docxPackage({{documentPart, documentXml(QStringLiteral("<w:p><w:r><w:t>open"))}}); },
     "not well-formed"},
    {"PartClaimingAGigabyte",
     [] {
         return withStatedSize(docxPackage({{documentPart, documentXml(QStringLiteral("<w:p/>"))}}), documentPart,
                               1u << 30);
     },
     "too large"},
    {"PartInflatingPastItsSize",
     [] {
         const QString body = QStringLiteral("<w:p><w:r><w:t>%1</w:t></w:r></w:p>").arg(QString(100'000, u'z'));
         return withStatedSize(docxPackage({{documentPart, documentXml(body)}}), documentPart, 1000);
     },
     "Damaged ZIP archive"},
    {"PictureClaimingAGigabyte",
     [] {
         return withStatedSize(docxPackage({{documentPart, documentXml(QStringLiteral("<w:p>%1</w:p>").arg(pictureRun()))},
                                            {QStringLiteral("word/_rels/document.xml.rels"), pictureRelationships},
                                            {QStringLiteral("word/media/a.png"), samplePng()}}),
                               QStringLiteral("word/media/a.png"), 1u << 30);
     },
     "too large"},
    {"TablesNestedTooDeeply", [] { return docxPackage({{documentPart, documentXml(nestedTables(100))}}); },
     "too deeply nested"},
    {"TableTooWide",
     [] {
         const QString spanning = QStringLiteral("<w:tc><w:tcPr><w:gridSpan w:val=\"999999\"/></w:tcPr><w:p/></w:tc>");
         return docxPackage({{documentPart, documentXml(QStringLiteral("<w:tbl><w:tr>%1%1</w:tr></w:tbl>").arg(spanning))}});
     },
     "too large"},
    {"TooManyPictures",
     [] {
         return docxPackage({{documentPart, documentXml(QStringLiteral("<w:p>%1</w:p>").arg(pictureRun().repeated(10'001)))},
                             {QStringLiteral("word/_rels/document.xml.rels"), pictureRelationships},
                             {QStringLiteral("word/media/a.png"), samplePng()}});
     },
     "too many pictures"},
};

}  // namespace

TEST(DocxBadInputTest, EachGivesAnErrorNotACrash)
{
    QTemporaryDir folder;
    const ReadResult missing = readDocxFile(folder.filePath(QStringLiteral("absent.docx")));
    EXPECT_EQ(missing.document, nullptr);
    EXPECT_TRUE(missing.error.startsWith(QStringLiteral("Couldn't open the document"))) << missing.error.toStdString();
    for (const BadInput& bad : badInputs) {
        const QString path = folder.filePath(QStringLiteral("bad.docx"));
        writeFile(path, bad.bytes());
        const ReadResult read = readDocxFile(path);
        EXPECT_EQ(read.document, nullptr) << bad.name;
        EXPECT_TRUE(read.error.contains(QString::fromUtf8(bad.message))) << bad.name << ": " << read.error.toStdString();
    }
}

}  // namespace wendrel::test
