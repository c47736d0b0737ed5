#include "DocxPackage.h"

#include "DocxXml.h"
#include "documents/zip/ZipEntryBytes.h"
#include "documents/zip/ZipReader.h"

#include <QStringList>
#include <QUrl>

namespace wendrel::docx {

namespace {

QString relationshipsPartOf(const QString& partPath)
{
    const qsizetype slash = partPath.lastIndexOf(u'/');
    const QString folder = slash < 0 ? QString() : partPath.left(slash + 1);
    return folder + QStringLiteral("_rels/") + partPath.mid(slash + 1) + QStringLiteral(".rels");
}

}  // namespace

QString resolvePartPath(const QString& sourcePart, const QString& target)
{
    // Targets are URIs: "%20" in one names a space in the part's name.
    const QString decoded = QUrl::fromPercentEncoding(target.toUtf8());
    QStringList segments;
    if (!decoded.startsWith(u'/')) {
        segments = sourcePart.split(u'/');
        segments.removeLast();  // the part's own name
    }
    for (const QString& segment : decoded.split(u'/', Qt::SkipEmptyParts)) {
        if (segment == u"..") {
            if (!segments.isEmpty())
                segments.removeLast();
        } else if (segment != u".") {
            segments.append(segment);
        }
    }
    return segments.join(u'/');
}

DocxPackage::DocxPackage(const ZipReader& zip) : m_zip(zip)
{
    for (const ZipReader::Entry& entry : zip.entries()) {
        if (!entry.isFolder())
            m_pathsByLowerCase.insert(entry.path.toLower(), entry.path);
    }
}

std::optional<QByteArray> DocxPackage::part(const QString& path, qint64 maximumBytes) const
{
    const auto found = m_pathsByLowerCase.constFind(path.toLower());
    if (found == m_pathsByLowerCase.cend())
        return std::nullopt;
    return readZipEntry(m_zip, found.value(), maximumBytes);
}

Relationships DocxPackage::relationshipsOf(const QString& partPath) const
{
    Relationships result;
    const QString relsPath = relationshipsPartOf(partPath);
    const std::optional<QByteArray> xml = part(relsPath);
    if (!xml)
        return result;
    PartReader reader(*xml, relsPath);
    while (reader.next()) {
        if (!reader.isStart() || reader.name() != u"Relationship")
            continue;
        const std::optional<QString> id = reader.attribute(u"Id");
        const std::optional<QString> target = reader.attribute(u"Target");
        if (!id || !target)
            continue;
        Relationship relationship;
        relationship.type = reader.attribute(u"Type").value_or(QString()).section(u'/', -1);
        relationship.external = reader.attribute(u"TargetMode").value_or(QString()).compare(
                                    u"External", Qt::CaseInsensitive) == 0;
        relationship.target = relationship.external ? *target : resolvePartPath(partPath, *target);
        result.insert(*id, relationship);
    }
    return result;
}

QString DocxPackage::mainDocumentPath() const
{
    for (const Relationship& relationship : relationshipsOf(QString())) {
        if (relationship.type == u"officeDocument" && !relationship.external && has(relationship.target))
            return relationship.target;
    }
    return QStringLiteral("word/document.xml");
}

}  // namespace wendrel::docx
