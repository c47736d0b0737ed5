#pragma once

#include "ContentType.h"
#include "EntryId.h"
#include "RingKind.h"

#include <QList>
#include <QString>

namespace wendrel {

// What every ring entry, leaf or group, says about itself: written once at its registration,
// read by the ring, the command line and the help.
struct EntryDescription {
    EntryId id;
    QString title;      // shown on the segment
    QString symbol;     // the icon's design name, "photo"
    RingKind ring = RingKind::convert;
    QList<ContentType> inputs;    // a file fits if its type conforms to one of these
    QList<ContentType> excludes;  // ...and conforms to none of these
    QString description;          // one line of help
    // Lays out text with the desktop's fonts (page numbers, watermarks): its runs need Qt's
    // GUI layer, which the command line otherwise doesn't pay for.
    bool drawsText = false;
    // Files of these types are converted without laying out text (Markdown to a web page is
    // plain text processing), so runs on only such files don't need the GUI layer.
    QList<ContentType> drawsNoTextFor;
};

}  // namespace wendrel
