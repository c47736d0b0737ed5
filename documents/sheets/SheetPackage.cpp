#include "SheetPackage.h"

#include "SheetErrors.h"
#include "documents/zip/ZipEntryBytes.h"

namespace wendrel {

SheetPackage::SheetPackage(const QString& path) : m_file(path)
{
    if (!m_file.open(QIODevice::ReadOnly))
        throw sheet::unreadableTable(m_file.errorString());
    try {
        m_zip = std::make_unique<ZipReader>(m_file);
    } catch (const OperationError& error) {
        throw sheet::unreadableTable(error.message());
    }
}

const ZipReader::Entry* SheetPackage::entry(const QString& part) const
{
    for (const ZipReader::Entry& candidate : m_zip->entries()) {
        if (candidate.path == part && !candidate.isFolder())
            return &candidate;
    }
    return nullptr;
}

bool SheetPackage::contains(const QString& part) const { return entry(part) != nullptr; }

std::optional<QByteArray> SheetPackage::read(const QString& part, qint64 maximumBytes) const
{
    try {
        return readZipEntry(*m_zip, part, maximumBytes);
    } catch (const OperationError& error) {
        throw sheet::unreadableTable(part + QStringLiteral(": ") + error.message());
    }
}

bool SheetPackage::extract(const QString& part, const QString& destination, qint64 maximumBytes) const
{
    const ZipReader::Entry* found = entry(part);
    if (!found)
        return false;
    if (found->size < 0 || found->size > maximumBytes)
        throw sheet::unreadableTable(part + QStringLiteral(" is too large"));
    QFile file(destination);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        throw sheet::unreadableTable(file.errorString());
    try {
        m_zip->extract(*found, file);  // stops at the stated size
    } catch (const OperationError& error) {
        throw sheet::unreadableTable(part + QStringLiteral(": ") + error.message());
    }
    if (!file.flush())
        throw sheet::unreadableTable(file.errorString());
    return true;
}

void throwDamaged(const QXmlStreamReader& xml, const QString& what)
{
    throw sheet::unreadableTable(QStringLiteral("%1, line %2: %3").arg(what).arg(xml.lineNumber()).arg(xml.errorString()));
}

QXmlStreamReader::TokenType SheetXmlReader::next()
{
    const TokenType token = readNext();
    if (token == DTD)
        throw sheet::unreadableTable(QStringLiteral("a document type declaration"));
    if (hasError())
        throwDamaged(*this, QStringLiteral("XML"));
    return token;
}

QString SheetXmlReader::elementText(QStringView skipped)
{
    QString text;
    int depth = 1;
    int skippedDepth = 0;  // inside a skipped element: how deep
    while (depth > 0 && !atEnd()) {
        switch (next()) {
        case StartElement:
            ++depth;
            if (skippedDepth == 0 && !skipped.isEmpty() && name() == skipped)
                skippedDepth = depth;
            break;
        case EndElement:
            if (depth == skippedDepth)
                skippedDepth = 0;
            --depth;
            break;
        case Characters:
            if (skippedDepth == 0)
                text += this->text();
            break;
        default:
            break;
        }
    }
    checkEnded();
    return text;
}

void SheetXmlReader::checkEnded() const
{
    if (hasError())
        throwDamaged(*this, QStringLiteral("XML"));
}

QString SheetXmlReader::attribute(QStringView localName) const
{
    const QXmlStreamAttributes all = attributes();
    for (const QXmlStreamAttribute& attribute : all) {
        if (attribute.name() == localName)
            return attribute.value().toString();
    }
    return {};
}

}  // namespace wendrel
