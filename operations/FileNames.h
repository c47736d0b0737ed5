#pragma once

#include <QString>

#include <functional>
#include <optional>

namespace wendrel {

// The last component of a path, ignoring one trailing separator: "/a/Docs/" gives "Docs".
QString lastPathComponent(const QString& path);

struct NameParts {
    QString base;
    QString extension;  // without the dot; empty when the name has none
};

// Splits at the last dot. A name whose only dot leads (".profile") or ends it has no extension,
// so "archive.tar.gz" gives "archive.tar" + "gz" and ".profile" stays whole.
NameParts splitExtension(const QString& name);

// The preferred name of a result: the source's name without its extension, then " " + suffix
// when a suffix is given, then "." + the extension (the given one, else the source's own; no
// dot at all when that is empty). "Holiday.JPG" + "Normalized" gives "Holiday Normalized.JPG".
QString outputName(const QString& source, const std::optional<QString>& suffix = std::nullopt,
                   const std::optional<QString>& extension = std::nullopt);

// The collision rule, without a disk: `wanted` when it is free, else "base 2.ext",
// "base 3.ext" and so on ("base 2" for a name without extension). The caller decides what
// "taken" means, so every rule is testable without files.
QString uniqueName(const QString& wanted, const std::function<bool(const QString&)>& isTaken);

}  // namespace wendrel
