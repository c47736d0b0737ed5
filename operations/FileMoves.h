#pragma once

#include <QString>

namespace wendrel {

// Whether anything at all is at `path`: a file, a folder, or a link even if it is broken.
bool itemExists(const QString& path);

struct MoveAttempt {
    enum class Result { moved, destinationTaken, failed };
    Result result = Result::failed;
    QString error;  // the system's reason when the move failed
};

// Moves a file or folder to `destination`, which must not exist; an existing item there is
// never replaced, even one that appears at the last moment. Across file systems the item is
// copied under a hidden temporary name in the destination folder and renamed when complete,
// so a half-copied result never bears the final name and a failed copy leaves nothing behind.
MoveAttempt moveWithoutReplacing(const QString& from, const QString& destination);

// Removes a file or a whole folder; errors are ignored.
void removeItem(const QString& path);

}  // namespace wendrel
