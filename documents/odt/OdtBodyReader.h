#pragma once

#include <QByteArray>
#include <QString>

#include <functional>
#include <optional>

class QTextDocument;
class QXmlStreamReader;

namespace wendrel::document::odt {

class OdtStyles;

// The bytes of a picture inside the package ("Pictures/1.png"); nothing when there is none
// or it is too large.
using PackagePictures = std::function<std::optional<QByteArray>(const QString& path)>;

// Reads office:text (the reader standing on its start) into `document` in the document
// model's shape. Throws OperationError on a document too deeply nested or too large.
void readOdtBody(QXmlStreamReader& xml, const OdtStyles& styles, const PackagePictures& pictures,
                 QTextDocument& document);

}  // namespace wendrel::document::odt
