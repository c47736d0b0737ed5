#include "ImageEntries.h"

namespace wendrel {

Op::Definition imageEntry(QString id, QString title, QString symbol, RingKind ring, QString description,
                          Op::Body body, const std::optional<ContentType>& ownType)
{
    QList<ContentType> excludes = nonRasterImages();
    if (ownType)
        excludes.prepend(*ownType);
    return {
        .id = std::move(id),
        .title = std::move(title),
        .symbol = std::move(symbol),
        .ring = ring,
        .combinesInputs = false,
        .inputs = {ContentType::image()},
        .excludes = std::move(excludes),
        .excludesExactly = {},
        .description = std::move(description),
        .body = std::move(body),
    };
}

}  // namespace wendrel
