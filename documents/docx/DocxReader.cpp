#include "DocxReader.h"

#include "DocxBodyReader.h"
#include "DocxDocumentBuilder.h"
#include "DocxNumbering.h"
#include "DocxPackage.h"
#include "DocxStyles.h"
#include "documents/zip/ZipReader.h"
#include "operations/OperationError.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QFile>
#include <QHash>
#include <QImageReader>
#include <QTextDocument>

namespace wendrel {

namespace {

constexpr qint64 largestPicture = 64LL * 1024 * 1024;
constexpr qint64 pictureBudget = 256LL * 1024 * 1024;  // all pictures together

// Reads image parts once each, refusing a document whose pictures together pass the budget.
class PictureParts {
public:
    explicit PictureParts(const docx::DocxPackage& package) : m_package(package) {}

    std::optional<QByteArray> operator()(const QString& partPath)
    {
        if (const auto known = m_read.constFind(partPath); known != m_read.cend())
            return known.value();
        std::optional<QByteArray> bytes = m_package.part(partPath, largestPicture);
        if (bytes) {
            m_total += bytes->size();
            if (m_total > pictureBudget)
                throw OperationError(QCoreApplication::translate("Docx", "The document's pictures are too large"));
            if (!isPicture(*bytes))
                bytes.reset();  // drawings Qt can't show (EMF, WMF, ...) are left out
        }
        m_read.insert(partPath, bytes);
        return bytes;
    }

private:
    static bool isPicture(QByteArray bytes)
    {
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::ReadOnly);
        QImageReader reader(&buffer);
        return reader.canRead() && reader.size().isValid();
    }

    const docx::DocxPackage& m_package;
    QHash<QString, std::optional<QByteArray>> m_read;
    qint64 m_total = 0;
};

}  // namespace

std::unique_ptr<QTextDocument> readDocx(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        throw OperationError::withReason(QCoreApplication::translate("Docx", "Couldn't open the document"),
                                         file.errorString());
    }
    const ZipReader zip(file);
    const docx::DocxPackage package(zip);

    const QString mainPart = package.mainDocumentPath();
    const std::optional<QByteArray> body = package.part(mainPart);
    if (!body)
        throw OperationError(QCoreApplication::translate("Docx", "Not a Word document: it has no document part"));

    const docx::Relationships relationships = package.relationshipsOf(mainPart);
    const auto partOfType = [&](QStringView type) -> std::optional<QByteArray> {
        for (const docx::Relationship& relationship : relationships) {
            if (relationship.type == type && !relationship.external)
                return package.part(relationship.target);
        }
        return std::nullopt;
    };

    docx::StyleSheet styles;
    if (const std::optional<QByteArray> xml = partOfType(u"styles"))
        styles = docx::StyleSheet::parse(*xml);
    docx::Numbering numbering;
    if (const std::optional<QByteArray> xml = partOfType(u"numbering"))
        numbering = docx::Numbering::parse(*xml, styles);

    const std::vector<docx::ContentBlock> content = docx::readBody(*body, mainPart, styles, numbering, relationships);
    auto document = std::make_unique<QTextDocument>();
    PictureParts pictures(package);
    docx::buildDocument(*document, content, std::ref(pictures));
    return document;
}

}  // namespace wendrel
