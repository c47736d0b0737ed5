#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

class QTextDocument;

namespace wendrel::document::odt {

struct PackagedPicture {
    QString path;  // inside the package: "Pictures/1.png"
    QString mimeType;
    QByteArray bytes;
};

struct OdtContent {
    QByteArray contentXml;
    QList<PackagedPicture> pictures;
};

// content.xml of the document: its body, and the automatic styles the body names (one text
// style per combination of inline styles, one list style per list shape, table and cell
// styles). The named paragraph styles it refers to are in stylesXml().
OdtContent writeOdtContent(const QTextDocument& document);

// styles.xml: the paragraph styles every body refers to (Standard, Text body, Heading 1-6 with
// their outline levels, Table Contents), the link and code text styles, the outline.
QByteArray stylesXml();

}  // namespace wendrel::document::odt
