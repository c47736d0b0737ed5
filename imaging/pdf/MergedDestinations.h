#pragma once

#include "ForeignObjects.h"

#include <map>

namespace wendrel {

// What the names of one source became in the merged document: only those that changed.
using DestinationRenames = std::map<DestinationName, DestinationName>;

// The named destinations of every source of a merge, gathered in one document. A source's
// names come over with their destinations; a name an earlier source already used is renamed
// ("Intro" becomes "Intro-2"), and the source's own links and bookmarks are rewritten to
// match, so each still goes where it went in its own file.
class MergedDestinations {
public:
    // Copies the named destinations of `source`, whose pages must be in `target` already (the
    // destinations then point at the copies). Returns the renames the references copied from
    // that source need.
    DestinationRenames add(QPDF& target, QPDF& source);

    // Writes the catalog's /Dests dictionary and /Names /Dests tree; nothing for either kind
    // no source had.
    void install(QPDF& target) const;

private:
    std::map<DestinationName, QPDFObjectHandle> m_destinations;
};

// Renames the named destination that a link annotation or a bookmark (`holder`) goes to,
// directly (/Dest) or through its go-to actions (/A and the actions that follow it).
void renameDestinationReferences(QPDFObjectHandle holder, const DestinationRenames& renames);

}  // namespace wendrel
