#include "PictureSources.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QUrl>

namespace wendrel::document {

namespace {

bool decodesAsPicture(const QByteArray& bytes)
{
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    return reader.canRead() && reader.size().isValid();
}

std::optional<QByteArray> readDataUrl(const QString& source)
{
    // data:[<media type>][;base64],<data>
    const qsizetype comma = source.indexOf(u',');
    if (comma < 0 || source.size() - comma > maximumPictureBytes * 4 / 3 + 4)
        return std::nullopt;
    const QString header = source.mid(5, comma - 5);
    const QByteArray payload = source.mid(comma + 1).toLatin1();
    const QByteArray bytes = header.endsWith(QStringLiteral(";base64"), Qt::CaseInsensitive)
                                 ? QByteArray::fromBase64(QByteArray::fromPercentEncoding(payload))
                                 : QByteArray::fromPercentEncoding(payload);
    if (bytes.isEmpty() || bytes.size() > maximumPictureBytes)
        return std::nullopt;
    return bytes;
}

std::optional<QByteArray> readRegularFile(const QString& path)
{
    const QFileInfo info(path);
    // isFile() follows links: a link to /dev/zero is a device, not a regular file. A size of 0
    // is what the system's own pseudo-files claim, and no picture is empty.
    if (!info.isFile() || info.size() <= 0 || info.size() > maximumPictureBytes)
        return std::nullopt;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    // One byte past the limit: a file that grows while read is held to it too.
    const QByteArray bytes = file.read(maximumPictureBytes + 1);
    if (file.error() != QFileDevice::NoError || bytes.isEmpty() || bytes.size() > maximumPictureBytes)
        return std::nullopt;
    return bytes;
}

}  // namespace

std::optional<QByteArray> readPictureSource(const QString& source, const QString& baseFolder)
{
    const QString trimmed = source.trimmed();
    std::optional<QByteArray> bytes;
    if (trimmed.startsWith(QStringLiteral("data:"), Qt::CaseInsensitive)) {
        bytes = readDataUrl(trimmed);
    } else {
        const QUrl url(trimmed);
        QString path;
        if (url.scheme().compare(u"file", Qt::CaseInsensitive) == 0)
            path = url.toLocalFile();
        else if (url.scheme().isEmpty())
            path = url.path(QUrl::FullyDecoded);
        else
            return std::nullopt;  // no network, no resources of our own
        if (path.isEmpty())
            return std::nullopt;
        if (QDir::isRelativePath(path)) {
            if (baseFolder.isEmpty())
                return std::nullopt;
            path = QDir(baseFolder).filePath(path);
        }
        bytes = readRegularFile(path);
    }
    if (!bytes || !decodesAsPicture(*bytes))
        return std::nullopt;
    return bytes;
}

}  // namespace wendrel::document
