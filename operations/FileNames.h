#pragma once

#include <QString>

#include <functional>
#include <optional>

namespace wendrel {

// The longest name, in bytes of UTF-8, that the usual Linux file systems take for one item.
inline constexpr qsizetype longestFileName = 255;

// The last component of a path, ignoring one trailing separator: "/a/Docs/" gives "Docs".
QString lastPathComponent(const QString& path);

struct NameParts {
    QString base;
    QString extension;  // without the dot; empty when the name has none
};

// Splits at the last dot. A name whose only dot leads (".profile") or ends it has no extension,
// so "archive.tar.gz" gives "archive.tar" + "gz" and ".profile" stays whole.
NameParts splitExtension(const QString& name);

// `base` followed by `tail`, within `limit` bytes of UTF-8: when too long, the base loses
// characters from its end (never half a character) and ends in "…", so the tail — a suffix
// word, a counter, an extension — always survives whole. Only a tail that alone overflows
// the limit is itself cut.
QString fitName(const QString& base, const QString& tail, qsizetype limit = longestFileName);

// The preferred name of a result: the source's name without its extension, then " " + suffix
// when a suffix is given, then "." + the extension (the given one, else the source's own; no
// dot at all when that is empty). "Holiday.JPG" + "Normalized" gives "Holiday Normalized.JPG".
//
// Every name it gives can be created: it fits longestFileName with room left for a collision
// counter (" 2" up to " 99999"), and a name that would be empty, "." or ".." (the unzip folder
// of "...zip") is "Untitled" instead.
QString outputName(const QString& source, const std::optional<QString>& suffix = std::nullopt,
                   const std::optional<QString>& extension = std::nullopt);

// The collision rule, without a disk: `wanted` when it is free, else "base 2.ext",
// "base 3.ext" and so on ("base 2" for a name without extension). Each candidate fits
// longestFileName. The caller decides what "taken" means, so every rule is testable without
// files.
QString uniqueName(const QString& wanted, const std::function<bool(const QString&)>& isTaken);

}  // namespace wendrel
