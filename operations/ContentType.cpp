#include "ContentType.h"

#include <QFileInfo>
#include <QMimeDatabase>

namespace wendrel {

namespace {

const QString itemName = QStringLiteral("all/all");
const QString dataName = QStringLiteral("all/allfiles");
const QString folderName = QStringLiteral("inode/directory");
const QString audiovisualName = QStringLiteral("audiovisual/*");

// QMimeDatabase is thread-safe; jobs look up types from worker threads.
const QMimeDatabase& mimeDatabase()
{
    static const QMimeDatabase database;
    return database;
}

bool isFamily(const QString& name) { return name.endsWith(QLatin1String("/*")); }

// Playlists are named like sound or video but hold only the names of other files: nothing in
// them can be played, converted or compressed.
bool isPlaylist(const QString& name)
{
    static const QStringList playlists{QStringLiteral("audio/x-mpegurl"), QStringLiteral("audio/x-scpls"),
                                       QStringLiteral("audio/x-ms-asx"), QStringLiteral("video/vnd.mpegurl"),
                                       QStringLiteral("application/x-quicktime-media-link")};
    return playlists.contains(name);
}

// Containers of sound and pictures whose names don't say "video/": people take them for
// movies. Only the exact types: their audio-only offspring (WMA in ASF, Vorbis in Ogg) are sound.
bool isMovieOutsideVideoNames(const QString& name)
{
    static const QStringList containers{QStringLiteral("application/vnd.ms-asf"),
                                        QStringLiteral("application/vnd.rn-realmedia"),
                                        QStringLiteral("application/mxf"), QStringLiteral("application/ogg")};
    return containers.contains(name);
}

// "image/*" takes every type whose name, or the name of any ancestor, is image/something:
// an SVG counts as an image although its first parent is XML.
bool belongsToFamily(const QString& name, const QString& family)
{
    if (family.startsWith(u"audio/") || family.startsWith(u"video/")) {
        if (isPlaylist(name))
            return false;
        if (family.startsWith(u"video/") && isMovieOutsideVideoNames(name))
            return true;
    }
    const QStringView prefix = QStringView(family).chopped(1);  // "image/"
    if (name.startsWith(prefix))
        return true;
    const QMimeType type = mimeDatabase().mimeTypeForName(name);
    for (const QString& ancestor : type.allAncestors()) {
        if (ancestor.startsWith(prefix))
            return true;
    }
    return false;
}

}  // namespace

ContentType ContentType::item() { return ContentType(itemName); }
ContentType ContentType::data() { return ContentType(dataName); }
ContentType ContentType::folder() { return ContentType(folderName); }
ContentType ContentType::image() { return ContentType(QStringLiteral("image/*")); }
ContentType ContentType::movie() { return ContentType(QStringLiteral("video/*")); }
ContentType ContentType::audio() { return ContentType(QStringLiteral("audio/*")); }
ContentType ContentType::audiovisualContent() { return ContentType(audiovisualName); }
ContentType ContentType::plainText() { return ContentType(QStringLiteral("text/plain")); }

ContentType ContentType::jpeg() { return fromMimeName(QStringLiteral("image/jpeg")); }
ContentType ContentType::png() { return fromMimeName(QStringLiteral("image/png")); }
ContentType ContentType::heic() { return fromMimeName(QStringLiteral("image/heif")); }
ContentType ContentType::webp() { return fromMimeName(QStringLiteral("image/webp")); }
ContentType ContentType::avif() { return fromMimeName(QStringLiteral("image/avif")); }
ContentType ContentType::jpegXl() { return fromMimeName(QStringLiteral("image/jxl")); }
ContentType ContentType::tiff() { return fromMimeName(QStringLiteral("image/tiff")); }
ContentType ContentType::bmp() { return fromMimeName(QStringLiteral("image/bmp")); }
ContentType ContentType::gif() { return fromMimeName(QStringLiteral("image/gif")); }
ContentType ContentType::ico() { return fromMimeName(QStringLiteral("image/vnd.microsoft.icon")); }
ContentType ContentType::svg() { return fromMimeName(QStringLiteral("image/svg+xml")); }
ContentType ContentType::pdf() { return fromMimeName(QStringLiteral("application/pdf")); }
ContentType ContentType::zipArchive() { return fromMimeName(QStringLiteral("application/zip")); }
ContentType ContentType::commaSeparatedText() { return fromMimeName(QStringLiteral("text/csv")); }
ContentType ContentType::tabSeparatedText()
{
    return fromMimeName(QStringLiteral("text/tab-separated-values"));
}
ContentType ContentType::subRip() { return fromMimeName(QStringLiteral("application/x-subrip")); }
ContentType ContentType::webVtt() { return fromMimeName(QStringLiteral("text/vtt")); }
ContentType ContentType::markdown() { return fromMimeName(QStringLiteral("text/markdown")); }
ContentType ContentType::html() { return fromMimeName(QStringLiteral("text/html")); }
ContentType ContentType::xhtml() { return fromMimeName(QStringLiteral("application/xhtml+xml")); }
ContentType ContentType::rtf() { return fromMimeName(QStringLiteral("application/rtf")); }
ContentType ContentType::docx()
{
    return fromMimeName(QStringLiteral("application/vnd.openxmlformats-officedocument.wordprocessingml.document"));
}
ContentType ContentType::odt() { return fromMimeName(QStringLiteral("application/vnd.oasis.opendocument.text")); }
ContentType ContentType::epub() { return fromMimeName(QStringLiteral("application/epub+zip")); }
ContentType ContentType::xlsx()
{
    return fromMimeName(QStringLiteral("application/vnd.openxmlformats-officedocument.spreadsheetml.sheet"));
}
ContentType ContentType::ods()
{
    return fromMimeName(QStringLiteral("application/vnd.oasis.opendocument.spreadsheet"));
}

ContentType ContentType::fromMimeName(const QString& mimeName)
{
    const QMimeType type = mimeDatabase().mimeTypeForName(mimeName);
    return ContentType(type.isValid() ? type.name() : mimeName);
}

ContentType ContentType::ofFile(const QString& path)
{
    if (path.endsWith(QLatin1Char('/')))
        return folder();

    const QFileInfo info(path);
    if (info.exists()) {
        const QMimeType type = mimeDatabase().mimeTypeForFile(info, QMimeDatabase::MatchDefault);
        if (type.isValid())
            return ContentType(type.name());
    }
    return fromExtension(info.suffix());
}

ContentType ContentType::fromExtension(const QString& extension)
{
    if (!extension.isEmpty()) {
        const QMimeType type = mimeDatabase().mimeTypeForFile(
            QStringLiteral("file.") + extension.toLower(), QMimeDatabase::MatchExtension);
        if (type.isValid() && !type.isDefault())
            return ContentType(type.name());
    }
    return ContentType(QStringLiteral("application/octet-stream"));
}

bool ContentType::conformsTo(const ContentType& other) const
{
    if (m_name == other.m_name || other.m_name == itemName)
        return true;
    if (other.m_name == dataName)
        return m_name != folderName && m_name != itemName && !m_name.startsWith(u"inode/");
    if (other.m_name == audiovisualName)
        return conformsTo(movie()) || conformsTo(audio());
    if (isFamily(m_name))  // a family conforms to nothing but the families above
        return false;
    if (isFamily(other.m_name))
        return belongsToFamily(m_name, other.m_name);
    if (m_name == itemName || m_name == dataName)
        return false;
    return mimeDatabase().mimeTypeForName(m_name).inherits(other.m_name);
}

bool ContentType::conformsToAny(const QList<ContentType>& others) const
{
    for (const ContentType& other : others) {
        if (conformsTo(other))
            return true;
    }
    return false;
}

}  // namespace wendrel
