#include "OdtContentWriter.h"

namespace wendrel::document::odt {

QByteArray stylesXml()
{
    // Heading sizes as the office suites' own defaults: 130 % for the first level down to 85 %.
    static const char* const headingSizes[] = {"130%", "115%", "101%", "95%", "85%", "85%"};
    QByteArray headings;
    for (int level = 1; level <= 6; ++level) {
        headings += QByteArrayLiteral("<style:style style:name=\"Heading_20_") + QByteArray::number(level)
                    + "\" style:display-name=\"Heading " + QByteArray::number(level)
                    + "\" style:family=\"paragraph\" style:parent-style-name=\"Heading\""
                      " style:next-style-name=\"Text_20_body\" style:default-outline-level=\""
                    + QByteArray::number(level) + "\" style:class=\"text\">"
                      "<style:text-properties fo:font-size=\"" + headingSizes[level - 1]
                    + "\" fo:font-weight=\"bold\" style:font-weight-asian=\"bold\" style:font-weight-complex=\"bold\"/>"
                      "</style:style>";
    }
    QByteArray outline;
    for (int level = 1; level <= 10; ++level) {
        outline += "<text:outline-level-style text:level=\"" + QByteArray::number(level)
                   + "\" style:num-format=\"\"/>";
    }

    return QByteArrayLiteral(
               "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
               "<office:document-styles"
               " xmlns:office=\"urn:oasis:names:tc:opendocument:xmlns:office:1.0\""
               " xmlns:style=\"urn:oasis:names:tc:opendocument:xmlns:style:1.0\""
               " xmlns:text=\"urn:oasis:names:tc:opendocument:xmlns:text:1.0\""
               " xmlns:table=\"urn:oasis:names:tc:opendocument:xmlns:table:1.0\""
               " xmlns:fo=\"urn:oasis:names:tc:opendocument:xmlns:xsl-fo-compatible:1.0\""
               " xmlns:svg=\"urn:oasis:names:tc:opendocument:xmlns:svg-compatible:1.0\""
               " office:version=\"1.3\">"
               "<office:font-face-decls>"
               "<style:font-face style:name=\"Liberation Mono\" svg:font-family=\"&apos;Liberation Mono&apos;\""
               " style:font-family-generic=\"modern\" style:font-pitch=\"fixed\"/>"
               "</office:font-face-decls>"
               "<office:styles>"
               "<style:default-style style:family=\"paragraph\">"
               "<style:paragraph-properties style:writing-mode=\"page\"/>"
               "</style:default-style>"
               "<style:style style:name=\"Standard\" style:family=\"paragraph\" style:class=\"text\"/>"
               "<style:style style:name=\"Text_20_body\" style:display-name=\"Text body\" style:family=\"paragraph\""
               " style:parent-style-name=\"Standard\" style:class=\"text\">"
               "<style:paragraph-properties fo:margin-top=\"0cm\" fo:margin-bottom=\"0.247cm\"/>"
               "</style:style>"
               "<style:style style:name=\"Heading\" style:family=\"paragraph\" style:parent-style-name=\"Standard\""
               " style:next-style-name=\"Text_20_body\" style:class=\"text\">"
               "<style:paragraph-properties fo:margin-top=\"0.423cm\" fo:margin-bottom=\"0.212cm\""
               " fo:keep-with-next=\"always\"/>"
               "<style:text-properties fo:font-size=\"14pt\"/>"
               "</style:style>")
           + headings
           + QByteArrayLiteral(
               "<style:style style:name=\"List_20_Contents\" style:display-name=\"List Contents\""
               " style:family=\"paragraph\" style:parent-style-name=\"Standard\" style:class=\"list\"/>"
               "<style:style style:name=\"Table_20_Contents\" style:display-name=\"Table Contents\""
               " style:family=\"paragraph\" style:parent-style-name=\"Standard\" style:class=\"extra\"/>"
               "<style:style style:name=\"Internet_20_link\" style:display-name=\"Internet link\""
               " style:family=\"text\">"
               "<style:text-properties fo:color=\"#000080\" style:text-underline-style=\"solid\""
               " style:text-underline-width=\"auto\" style:text-underline-color=\"font-color\"/>"
               "</style:style>"
               "<style:style style:name=\"Source_20_Text\" style:display-name=\"Source Text\" style:family=\"text\">"
               "<style:text-properties style:font-name=\"Liberation Mono\" fo:font-family=\"&apos;Liberation Mono&apos;\""
               " style:font-family-generic=\"modern\" style:font-pitch=\"fixed\"/>"
               "</style:style>"
               "<text:outline-style style:name=\"Outline\">")
           + outline
           + QByteArrayLiteral(
               "</text:outline-style>"
               "</office:styles>"
               "<office:automatic-styles>"
               "<style:page-layout style:name=\"pm1\">"
               "<style:page-layout-properties fo:margin-top=\"2cm\" fo:margin-bottom=\"2cm\""
               " fo:margin-left=\"2cm\" fo:margin-right=\"2cm\"/>"
               "</style:page-layout>"
               "</office:automatic-styles>"
               "<office:master-styles>"
               "<style:master-page style:name=\"Standard\" style:page-layout-name=\"pm1\"/>"
               "</office:master-styles>"
               "</office:document-styles>\n");
}

}  // namespace wendrel::document::odt
