#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace wendrel::document {

// The largest picture a document may refer to, read or decoded.
inline constexpr qint64 maximumPictureBytes = 64 * 1024 * 1024;

// The bytes of a picture an HTML or Markdown document refers to by `source`: a data: URL, or
// a path to a regular file (relative ones from `baseFolder`, "file:" URLs too) of at most
// maximumPictureBytes. Nothing else is read: no network, no devices, pipes or other special
// files, nothing larger, and nothing that doesn't decode as a picture, so no other file's
// contents can end up in a document. Nothing when the source isn't allowed or can't be read.
std::optional<QByteArray> readPictureSource(const QString& source, const QString& baseFolder);

}  // namespace wendrel::document
