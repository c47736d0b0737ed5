#pragma once

#include <QString>
#include <QStringList>

namespace wendrel {

// What kind of file something is, on top of the freedesktop MIME database.
//
// A concrete type is a MIME type ("image/png"); conformance follows the database's hierarchy,
// so "application/x-subrip" conforms to "text/plain". A few abstract types stand above whole
// families the way users think of them: every image, every movie, anything at all.
class ContentType {
public:
    // Abstract families.
    static ContentType item();                // any file or folder
    static ContentType data();                // any file that is not a folder
    static ContentType folder();
    static ContentType image();               // every image/* type
    static ContentType movie();               // every video/* type
    static ContentType audio();               // every audio/* type
    static ContentType audiovisualContent();  // movies and audio
    static ContentType plainText();           // text/plain and everything derived from it

    // Concrete types used by the ring entries.
    static ContentType jpeg();
    static ContentType png();
    static ContentType heic();
    static ContentType webp();
    static ContentType avif();
    static ContentType jpegXl();
    static ContentType tiff();
    static ContentType bmp();
    static ContentType gif();
    static ContentType ico();
    static ContentType svg();
    static ContentType pdf();
    static ContentType zipArchive();
    static ContentType commaSeparatedText();
    static ContentType tabSeparatedText();
    static ContentType subRip();
    static ContentType webVtt();
    static ContentType markdown();
    static ContentType html();
    static ContentType xhtml();
    static ContentType rtf();
    static ContentType docx();
    static ContentType odt();
    static ContentType epub();
    static ContentType xlsx();
    static ContentType ods();

    // A concrete type by MIME name; aliases are resolved to the canonical name.
    static ContentType fromMimeName(const QString& mimeName);

    // The type a file name's extension stands for, regardless of content; generic data when
    // the extension is unknown. Case does not matter.
    static ContentType fromExtension(const QString& extension);

    // The type of a file location:
    // 1. a path that ends in a separator is a folder, whether or not a file of that name exists;
    // 2. an existing item: what its name and, where the name is not conclusive, its content say;
    // 3. a missing item: what its lower-cased extension says;
    // 4. otherwise generic data.
    static ContentType ofFile(const QString& path);

    // The identifier: a MIME name, or "all/all", "all/allfiles", "image/*", "video/*",
    // "audio/*" and "audiovisual/*" for the abstract families.
    const QString& name() const { return m_name; }

    // True when this type is `other` or lies anywhere below it.
    bool conformsTo(const ContentType& other) const;

    bool conformsToAny(const QList<ContentType>& others) const;

    // Exact identity, as `excludesExactly` needs it: conformance is not enough.
    friend bool operator==(const ContentType&, const ContentType&) = default;

private:
    explicit ContentType(QString name) : m_name(std::move(name)) {}

    QString m_name;
};

}  // namespace wendrel
