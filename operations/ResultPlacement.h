#pragma once

#include "OperationOutcome.h"

#include <QString>

#include <optional>

namespace wendrel {

// Moves one produced file to its final place and returns that path:
// into `folder` when given, else next to `file.source`. A name that is taken gets a counter
// ("Photo 2.jpg"); nothing is ever overwritten and the original is never touched. When the
// move fails (a read-only folder, a vanished one) the result goes to resultsFolder() instead.
// Throws OperationError when that fails too.
QString placeResult(const ProducedFile& file, const std::optional<QString>& folder = std::nullopt);

// The first free name for `name` in `folder` under the collision rule, as a full path.
// Any item counts as taken: a file, a folder, a broken link.
QString uniqueDestination(const QString& folder, const QString& name);

// The fallback for results: the user's Downloads folder + "/Wendrel".
QString resultsFolder();

// The folder that holds `path` (a trailing separator marks a folder and is ignored).
QString containingFolder(const QString& path);

}  // namespace wendrel
