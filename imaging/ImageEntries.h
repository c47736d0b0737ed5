#pragma once

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
// and the non-raster ones.
Op::Definition imageEntry(QString id, QString title, QString symbol, RingKind ring, QString description,
                          Op::Body body, const std::optional<ContentType>& ownType = std::nullopt);

inline QString imagingText(const char* text) { return QCoreApplication::translate("ImageOperations", text); }

}  // namespace wendrel
