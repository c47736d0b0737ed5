#include "EncoderProbe.h"

#include "ImageWriter.h"
#include "VipsRuntime.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>
#include <QStandardPaths>

#include <vips/vips8>

#include <dlfcn.h>
#include <sys/stat.h>

namespace wendrel {

namespace {

// Nanoseconds: a package upgrade within the same second still shows.
QByteArray modificationStamp(const QString& path)
{
    struct stat status {};
    if (::stat(QFile::encodeName(path).constData(), &status) != 0)
        return QByteArrayLiteral("missing");
    return QByteArray::number(qint64(status.st_size)) + ' ' + QByteArray::number(qint64(status.st_mtim.tv_sec)) + '.' +
           QByteArray::number(qint64(status.st_mtim.tv_nsec));
}

// The folder libvips was loaded from; its codec libraries are installed beside it.
QString vipsLibraryFolder()
{
    Dl_info info{};
    if (::dladdr(reinterpret_cast<void*>(&vips_version_string), &info) == 0 || !info.dli_fname)
        return {};
    return QFileInfo(QFile::decodeName(info.dli_fname)).path();
}

QString formatName(ImageFormat format) { return imageTarget(format).extension; }

}  // namespace

QList<ImageFormat> probeWritableFormats()
{
    startVips();
    const vips::VImage sample = vips::VImage::black(8, 8, vips::VImage::option()->set("bands", 3))
                                    .copy(vips::VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB))
                                    .cast(VIPS_FORMAT_UCHAR);
    QList<ImageFormat> writable;
    for (const ImageTarget& target : imageTargets()) {
        try {
            if (!encodeImage(sample, target.format, 0.5, MetadataPolicy::drop).isEmpty())
                writable.append(target.format);
        } catch (const std::exception&) {
            // not writable here
        }
    }
    return writable;
}

QByteArray folderStamp(const QStringList& folders, const QStringList& fileFolders)
{
    QByteArray stamp;
    for (const QString& folder : folders)
        stamp += QFile::encodeName(folder) + ' ' + modificationStamp(folder) + '\n';
    for (const QString& folder : fileFolders) {
        const QFileInfoList files = QDir(folder).entryInfoList(QDir::Files | QDir::Hidden, QDir::Name);
        for (const QFileInfo& file : files)
            stamp += QFile::encodeName(file.filePath()) + ' ' + modificationStamp(file.filePath()) + '\n';
    }
    return stamp;
}

QByteArray encoderLibraryStamp()
{
    QStringList names;
    for (const ImageTarget& target : imageTargets())
        names.append(formatName(target.format));
    const QString libraries = vipsLibraryFolder();
    // libvips looks for its modules in a folder named by its version; libheif finds its
    // encoders (x265, aom…) as plugins in releases after Debian 12's.
    const QString modules = QStringLiteral("%1/vips-modules-%2.%3").arg(libraries).arg(vips_version(0)).arg(vips_version(1));
    const QStringList folders{libraries, modules, libraries + QStringLiteral("/libheif/plugins")};
    const QByteArray material = "libvips " + QByteArray(vips_version_string()) + "\nformats " + names.join(u',').toUtf8() +
                                '\n' + folderStamp(folders, {modules});
    return QCryptographicHash::hash(material, QCryptographicHash::Sha256).toHex();
}

QString encoderCachePath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) + QStringLiteral("/wendrel/encoders");
}

QList<ImageFormat> cachedOrProbed(const QString& cacheFile, const QByteArray& stamp,
                                  const std::function<QList<ImageFormat>()>& probe)
{
    QFile file(cacheFile);
    if (file.open(QIODevice::ReadOnly)) {
        const QJsonObject cached = QJsonDocument::fromJson(file.read(64 * 1024)).object();
        if (cached.value(QStringLiteral("stamp")).toString().toUtf8() == stamp) {
            const QStringList names = cached.value(QStringLiteral("writable")).toVariant().toStringList();
            QList<ImageFormat> writable;
            for (const ImageTarget& target : imageTargets()) {
                if (names.contains(formatName(target.format)))
                    writable.append(target.format);
            }
            return writable;
        }
    }

    const QList<ImageFormat> writable = probe();
    QStringList names;
    for (ImageFormat format : writable)
        names.append(formatName(format));
    QDir().mkpath(QFileInfo(cacheFile).path());
    QSaveFile save(cacheFile);  // whole or not at all: another process may read it meanwhile
    if (save.open(QIODevice::WriteOnly)) {
        save.write(QJsonDocument(QJsonObject{{QStringLiteral("stamp"), QString::fromUtf8(stamp)},
                                             {QStringLiteral("writable"), QJsonArray::fromStringList(names)}})
                       .toJson());
        save.commit();
    }
    return writable;
}

}  // namespace wendrel
