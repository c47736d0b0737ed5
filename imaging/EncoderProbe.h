#pragma once

#include "ImageFormat.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <functional>

namespace wendrel {

// Which formats this build can really encode, found by encoding a tiny picture in each. Starts
// libvips with its modules; HEIC and AVIF take a noticeable moment.
QList<ImageFormat> probeWritableFormats();

// A fingerprint of what the probe's answer depends on: the libvips version, Wendrel's list of
// formats, the folder libvips and its codec libraries are installed in, the folders of
// libvips' modules and libheif's plugins, and each module file. A package manager installs,
// removes and upgrades a library by renaming files in its folder, which changes the folder's
// modification time and so the fingerprint. Needs no libvips start.
QByteArray encoderLibraryStamp();

// The stamp's folder part: each folder with its modification time, each file in
// `fileFolders` with its size and modification time. Missing folders count as such.
QByteArray folderStamp(const QStringList& folders, const QStringList& fileFolders);

// $XDG_CACHE_HOME/wendrel/encoders (~/.cache by default).
QString encoderCachePath();

// The formats stored in `cacheFile` when it was written for this `stamp`; otherwise the
// probe's answer, stored there for next time (a cache that can't be written is no error).
// A stamp that doesn't match is never trusted: it may name an encoder that is gone.
QList<ImageFormat> cachedOrProbed(const QString& cacheFile, const QByteArray& stamp,
                                  const std::function<QList<ImageFormat>()>& probe);

}  // namespace wendrel
