#include "ImageEntries.h"

namespace wendrel {

Op::Definition imageEntry(EntryDescription entry, Op::PerFileBody body, const std::optional<ContentType>& ownType)
{
    entry.inputs = {ContentType::image()};
    entry.excludes = nonRasterImages();
    if (ownType)
        entry.excludes.prepend(*ownType);
    return {.entry = std::move(entry), .perFile = std::move(body)};
}

}  // namespace wendrel
