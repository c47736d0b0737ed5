#pragma once

#include "ImageSource.h"
#include "operations/ContentType.h"
#include "operations/Op.h"

#include <QCoreApplication>

namespace wendrel {

// What every image entry refuses: documents and vector graphics that merely look like images
// to the type system, and icons, which hold many pictures.
inline QList<ContentType> nonRasterImages()
{
    return {ContentType::pdf(), ContentType::svg(), ContentType::ico()};
}

// The common frame of an image entry on a ring: takes images, refuses `ownType` (when given)
// and the non-raster ones. `entry` gives the rest of the description.
Op::Definition imageEntry(EntryDescription entry, Op::PerFileBody body,
                          const std::optional<ContentType>& ownType = std::nullopt);

// One job's picture: opened once, its decoded size reserved from the memory every job shares
// (very large pictures wait their turn rather than all be held at once), and its reading
// stopped when the job is cancelled.
struct PictureFile {
    PictureFile(const QString& path, const OperationContext& context)
        : source(path, [job = &context] { return job->isCancelled(); }),
          memory(context.reserveMemory(source.decodedBytes()))
    {
    }

    ImageSource source;
    MemoryBudget::Reservation memory;
};

inline QString imagingText(const char* text) { return QCoreApplication::translate("ImageOperations", text); }

}  // namespace wendrel
