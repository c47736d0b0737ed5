#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

#include <memory>

class QTextDocument;

namespace wendrel::test {

// A WordprocessingML package put together part by part, for reading what other writers make.
// Parts not given get the smallest valid content ([Content_Types].xml and _rels/.rels).
QByteArray docxPackage(QMap<QString, QByteArray> parts);

// word/document.xml with `body` inside <w:body>, every usual namespace declared.
QByteArray documentXml(const QString& body);

// The document written with writeDocx, as package bytes.
QByteArray docxBytes(const QTextDocument& document);

// readDocx's result, or the message of the OperationError it threw.
struct ReadResult {
    std::unique_ptr<QTextDocument> document;
    QString error;
};
ReadResult readDocxFile(const QString& path);

}  // namespace wendrel::test
