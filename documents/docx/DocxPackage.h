#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>

#include <optional>

namespace wendrel {
class ZipReader;
}

namespace wendrel::docx {

// Where a relationship of a part points.
struct Relationship {
    QString type;    // the last segment of the type URI: "hyperlink", "image", "styles", ...
    QString target;  // a part path inside the package, or the URI itself when external
    bool external = false;
};

using Relationships = QHash<QString, Relationship>;  // by relationship id

// The parts of a WordprocessingML package, read through a ZipReader with bounded sizes.
class DocxPackage {
public:
    // XML parts larger than this are refused before a byte is inflated.
    static constexpr qint64 largestXmlPart = 64LL * 1024 * 1024;

    explicit DocxPackage(const ZipReader& zip);

    // The part's bytes (its name matched without regard to case, as packages require); nothing
    // when there is no such part. Throws OperationError when it is larger than `maximumBytes`.
    std::optional<QByteArray> part(const QString& path, qint64 maximumBytes = largestXmlPart) const;

    bool has(const QString& path) const { return m_pathsByLowerCase.contains(path.toLower()); }

    // The relationships of `partPath` (from "folder/_rels/name.rels"), targets resolved
    // against the part's folder. Empty when there are none.
    Relationships relationshipsOf(const QString& partPath) const;

    // The main document part, as the package's relationships name it.
    QString mainDocumentPath() const;

private:
    const ZipReader& m_zip;
    QHash<QString, QString> m_pathsByLowerCase;
};

// `target` taken relative to the folder of `sourcePart` ("word/document.xml" + "media/a.png"
// gives "word/media/a.png"); "/"-rooted targets are from the package root. "." and ".."
// segments are resolved and never climb above the root.
QString resolvePartPath(const QString& sourcePart, const QString& target);

}  // namespace wendrel::docx
