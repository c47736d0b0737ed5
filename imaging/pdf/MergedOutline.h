#pragma once

#include "MergedDestinations.h"

#include <QString>

#include <vector>

namespace wendrel {

// The bookmarks of a merged document: a top-level entry for each source, named after its
// file and going to its first page, with that source's own bookmarks below it. Every source
// gets its entry, with bookmarks of its own or not, so the outline lists the whole merge.
class MergedOutline {
public:
    // Adds the entry for `source` (nullptr for a picture) titled `title`. The source's pages
    // must be in `target` already: its bookmarks are copied with their destinations going to
    // the copies, and named destinations renamed as `renames` says.
    void addSource(QPDF& target, QPDF* source, const QString& title, QPDFObjectHandle firstPage,
                   const DestinationRenames& renames);

    // Makes the entries the document's outline.
    void install(QPDF& target) const;

    // One bookmark written: whether it shows its children and how many items show below it
    // when it does (children, and theirs when they are open too).
    struct Item {
        QPDFObjectHandle object;
        bool open = false;
        int shownWhenOpen = 0;
    };

private:
    std::vector<Item> m_entries;
};

}  // namespace wendrel
