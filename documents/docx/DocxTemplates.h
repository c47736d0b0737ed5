#pragma once

#include <QByteArray>

namespace wendrel::docx {

// The parts of a written package that don't depend on the document. Relationship ids rId1-rId3
// of the main part are taken by styles, numbering and settings; the body's own start at rId100.

QByteArray contentTypesXml();
QByteArray packageRelationshipsXml();
QByteArray stylesXml();
QByteArray settingsXml();
QByteArray appPropertiesXml();

// The head of word/_rels/document.xml.rels: everything up to the body's own relationships.
QByteArray documentRelationshipsHead();

// The head of word/numbering.xml: the bullet (abstract id 1) and decimal (abstract id 2)
// numberings of nine levels, up to where each list's own w:num follows.
QByteArray numberingHead();

inline constexpr int bulletAbstractNumbering = 1;
inline constexpr int decimalAbstractNumbering = 2;

}  // namespace wendrel::docx
