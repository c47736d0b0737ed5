#include "DocxTemplates.h"

namespace wendrel::docx {

namespace {

constexpr char declaration[] = R"(<?xml version="1.0" encoding="UTF-8" standalone="yes"?>)"
                               "\n";

constexpr char wordNamespaces[] =
    R"(xmlns:w="http://schemas.openxmlformats.org/wordprocessingml/2006/main" )"
    R"(xmlns:r="http://schemas.openxmlformats.org/officeDocument/2006/relationships")";

QByteArray headingStyle(int level)
{
    // Sizes in half-points: 16, 14, 13, 12, 11 and 11 points.
    static constexpr int sizes[] = {32, 28, 26, 24, 22, 22};
    const QByteArray number = QByteArray::number(level);
    return R"(<w:style w:type="paragraph" w:styleId="Heading)" + number + R"(">)"
           + R"(<w:name w:val="heading )" + number + R"("/><w:basedOn w:val="Normal"/><w:next w:val="Normal"/>)"
           + R"(<w:uiPriority w:val="9"/><w:qFormat/>)"
           + R"(<w:pPr><w:keepNext/><w:keepLines/><w:spacing w:before="240" w:after="120"/>)"
           + R"(<w:outlineLvl w:val=")" + QByteArray::number(level - 1) + R"("/></w:pPr>)"
           + R"(<w:rPr><w:b/><w:bCs/>)" + (level == 6 ? QByteArray("<w:i/>") : QByteArray())
           + R"(<w:sz w:val=")" + QByteArray::number(sizes[level - 1]) + R"("/><w:szCs w:val=")"
           + QByteArray::number(sizes[level - 1]) + R"("/></w:rPr></w:style>)";
}

QByteArray numberingLevel(int level, bool ordered)
{
    static constexpr const char* bullets[] = {"\xe2\x80\xa2", "\xe2\x97\xa6", "\xe2\x96\xaa"};  // • ◦ ▪
    const QByteArray format = ordered
                                  ? R"(<w:numFmt w:val="decimal"/><w:lvlText w:val="%)" + QByteArray::number(level + 1) + R"(."/>)"
                                  : R"(<w:numFmt w:val="bullet"/><w:lvlText w:val=")" + QByteArray(bullets[level % 3]) + R"("/>)";
    return R"(<w:lvl w:ilvl=")" + QByteArray::number(level) + R"("><w:start w:val="1"/>)" + format
           + R"(<w:lvlJc w:val="left"/><w:pPr><w:ind w:left=")" + QByteArray::number(720 * (level + 1))
           + R"(" w:hanging="360"/></w:pPr></w:lvl>)";
}

QByteArray abstractNumbering(int id, bool ordered)
{
    QByteArray xml = R"(<w:abstractNum w:abstractNumId=")" + QByteArray::number(id)
                     + R"("><w:multiLevelType w:val="hybridMultilevel"/>)";
    for (int level = 0; level < 9; ++level)
        xml += numberingLevel(level, ordered);
    return xml + "</w:abstractNum>";
}

}  // namespace

QByteArray contentTypesXml()
{
    return declaration + QByteArray(R"(<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types">)"
        R"(<Default Extension="rels" ContentType="application/vnd.openxmlformats-package.relationships+xml"/>)"
        R"(<Default Extension="xml" ContentType="application/xml"/>)"
        R"(<Default Extension="png" ContentType="image/png"/>)"
        R"(<Default Extension="jpeg" ContentType="image/jpeg"/>)"
        R"(<Default Extension="gif" ContentType="image/gif"/>)"
        R"(<Override PartName="/word/document.xml" ContentType="application/vnd.openxmlformats-officedocument.wordprocessingml.document.main+xml"/>)"
        R"(<Override PartName="/word/styles.xml" ContentType="application/vnd.openxmlformats-officedocument.wordprocessingml.styles+xml"/>)"
        R"(<Override PartName="/word/numbering.xml" ContentType="application/vnd.openxmlformats-officedocument.wordprocessingml.numbering+xml"/>)"
        R"(<Override PartName="/word/settings.xml" ContentType="application/vnd.openxmlformats-officedocument.wordprocessingml.settings+xml"/>)"
        R"(<Override PartName="/docProps/core.xml" ContentType="application/vnd.openxmlformats-package.core-properties+xml"/>)"
        R"(<Override PartName="/docProps/app.xml" ContentType="application/vnd.openxmlformats-officedocument.extended-properties+xml"/>)"
        R"(</Types>)");
}

QByteArray packageRelationshipsXml()
{
    return declaration + QByteArray(R"(<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">)"
        R"(<Relationship Id="rId1" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/officeDocument" Target="word/document.xml"/>)"
        R"(<Relationship Id="rId2" Type="http://schemas.openxmlformats.org/package/2006/relationships/metadata/core-properties" Target="docProps/core.xml"/>)"
        R"(<Relationship Id="rId3" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/extended-properties" Target="docProps/app.xml"/>)"
        R"(</Relationships>)");
}

QByteArray documentRelationshipsHead()
{
    return declaration + QByteArray(R"(<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">)"
        R"(<Relationship Id="rId1" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/styles" Target="styles.xml"/>)"
        R"(<Relationship Id="rId2" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/numbering" Target="numbering.xml"/>)"
        R"(<Relationship Id="rId3" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/settings" Target="settings.xml"/>)");
}

QByteArray stylesXml()
{
    QByteArray xml = declaration + QByteArray(R"(<w:styles )") + wordNamespaces + ">";
    xml += R"(<w:docDefaults><w:rPrDefault><w:rPr>)"
           R"(<w:rFonts w:ascii="Liberation Serif" w:hAnsi="Liberation Serif" w:eastAsia="Noto Serif CJK SC" w:cs="Liberation Serif"/>)"
           R"(<w:sz w:val="24"/><w:szCs w:val="24"/><w:lang w:val="en-US" w:eastAsia="zh-CN" w:bidi="ar-SA"/>)"
           R"(</w:rPr></w:rPrDefault><w:pPrDefault><w:pPr><w:spacing w:after="120" w:line="264" w:lineRule="auto"/></w:pPr></w:pPrDefault>)"
           R"(</w:docDefaults>)";
    xml += R"(<w:style w:type="paragraph" w:default="1" w:styleId="Normal"><w:name w:val="Normal"/><w:qFormat/></w:style>)";
    for (int level = 1; level <= 6; ++level)
        xml += headingStyle(level);
    xml += R"(<w:style w:type="paragraph" w:styleId="ListParagraph"><w:name w:val="List Paragraph"/>)"
           R"(<w:basedOn w:val="Normal"/><w:uiPriority w:val="34"/><w:qFormat/>)"
           R"(<w:pPr><w:spacing w:after="60"/><w:ind w:left="720"/><w:contextualSpacing/></w:pPr></w:style>)";
    xml += R"(<w:style w:type="character" w:default="1" w:styleId="DefaultParagraphFont">)"
           R"(<w:name w:val="Default Paragraph Font"/><w:uiPriority w:val="1"/><w:semiHidden/><w:unhideWhenUsed/></w:style>)";
    xml += R"(<w:style w:type="character" w:styleId="Hyperlink"><w:name w:val="Hyperlink"/>)"
           R"(<w:basedOn w:val="DefaultParagraphFont"/><w:uiPriority w:val="99"/><w:unhideWhenUsed/>)"
           R"(<w:rPr><w:color w:val="0563C1"/><w:u w:val="single"/></w:rPr></w:style>)";
    // Code: the name other readers know monospace text by, with the font that shows it.
    xml += R"(<w:style w:type="character" w:styleId="VerbatimChar"><w:name w:val="Verbatim Char"/>)"
           R"(<w:basedOn w:val="DefaultParagraphFont"/><w:rPr>)"
           R"(<w:rFonts w:ascii="Courier New" w:hAnsi="Courier New" w:cs="Courier New"/><w:sz w:val="20"/></w:rPr></w:style>)";
    xml += R"(<w:style w:type="table" w:default="1" w:styleId="TableNormal"><w:name w:val="Normal Table"/>)"
           R"(<w:uiPriority w:val="99"/><w:semiHidden/><w:unhideWhenUsed/><w:tblPr><w:tblInd w:w="0" w:type="dxa"/>)"
           R"(<w:tblCellMar><w:top w:w="0" w:type="dxa"/><w:left w:w="108" w:type="dxa"/>)"
           R"(<w:bottom w:w="0" w:type="dxa"/><w:right w:w="108" w:type="dxa"/></w:tblCellMar></w:tblPr></w:style>)";
    xml += R"(<w:style w:type="table" w:styleId="TableGrid"><w:name w:val="Table Grid"/><w:basedOn w:val="TableNormal"/>)"
           R"(<w:uiPriority w:val="39"/><w:pPr><w:spacing w:after="0" w:line="240" w:lineRule="auto"/></w:pPr>)"
           R"(<w:tblPr><w:tblBorders>)"
           R"(<w:top w:val="single" w:sz="4" w:space="0" w:color="auto"/>)"
           R"(<w:left w:val="single" w:sz="4" w:space="0" w:color="auto"/>)"
           R"(<w:bottom w:val="single" w:sz="4" w:space="0" w:color="auto"/>)"
           R"(<w:right w:val="single" w:sz="4" w:space="0" w:color="auto"/>)"
           R"(<w:insideH w:val="single" w:sz="4" w:space="0" w:color="auto"/>)"
           R"(<w:insideV w:val="single" w:sz="4" w:space="0" w:color="auto"/>)"
           R"(</w:tblBorders></w:tblPr></w:style>)";
    xml += R"(<w:style w:type="numbering" w:default="1" w:styleId="NoList"><w:name w:val="No List"/>)"
           R"(<w:uiPriority w:val="99"/><w:semiHidden/><w:unhideWhenUsed/></w:style>)";
    return xml + "</w:styles>";
}

QByteArray numberingHead()
{
    return declaration + QByteArray(R"(<w:numbering )") + wordNamespaces + ">"
           + abstractNumbering(bulletAbstractNumbering, false) + abstractNumbering(decimalAbstractNumbering, true);
}

QByteArray settingsXml()
{
    return declaration + QByteArray(R"(<w:settings )") + wordNamespaces + ">"
           + R"(<w:zoom w:percent="100"/><w:defaultTabStop w:val="720"/><w:characterSpacingControl w:val="doNotCompress"/>)"
             R"(<w:compat><w:compatSetting w:name="compatibilityMode" w:uri="http://schemas.microsoft.com/office/word" w:val="15"/></w:compat>)"
             R"(</w:settings>)";
}

QByteArray appPropertiesXml()
{
    return declaration + QByteArray(R"(<Properties xmlns="http://schemas.openxmlformats.org/officeDocument/2006/extended-properties">)"
        R"(<Application>Wendrel</Application><DocSecurity>0</DocSecurity></Properties>)");
}

}  // namespace wendrel::docx
