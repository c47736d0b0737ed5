#pragma once

#include <QString>

namespace wendrel::document::odt {

// The XML namespaces of an OpenDocument text package, and the sizes the reader holds it to.
inline const QString officeNs = QStringLiteral("urn:oasis:names:tc:opendocument:xmlns:office:1.0");
inline const QString styleNs = QStringLiteral("urn:oasis:names:tc:opendocument:xmlns:style:1.0");
inline const QString textNs = QStringLiteral("urn:oasis:names:tc:opendocument:xmlns:text:1.0");
inline const QString tableNs = QStringLiteral("urn:oasis:names:tc:opendocument:xmlns:table:1.0");
inline const QString drawNs = QStringLiteral("urn:oasis:names:tc:opendocument:xmlns:drawing:1.0");
inline const QString foNs = QStringLiteral("urn:oasis:names:tc:opendocument:xmlns:xsl-fo-compatible:1.0");
inline const QString svgNs = QStringLiteral("urn:oasis:names:tc:opendocument:xmlns:svg-compatible:1.0");
inline const QString xlinkNs = QStringLiteral("http://www.w3.org/1999/xlink");

inline const QString mimeType = QStringLiteral("application/vnd.oasis.opendocument.text");

}  // namespace wendrel::document::odt
