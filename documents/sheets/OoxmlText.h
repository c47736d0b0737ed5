#pragma once

#include <QByteArray>
#include <QString>

namespace wendrel {

// Text as workbook XML holds it. XML can't carry most control characters, so workbooks write
// them as _xHHHH_ (and a literal "_x0041_" in the text as _x005F_x0041_, its underscore
// escaped the same way); &, < and > become entities.
void appendOoxmlText(QByteArray& xml, QStringView text);

// The reverse of the _xHHHH_ escape, for text a reader has already unescaped as XML.
QString decodeOoxmlEscapes(const QString& text);

}  // namespace wendrel
