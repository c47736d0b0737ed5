#pragma once

#include "RingOrder.h"

#include <QString>

namespace wendrel {

// A ring entry's identity: its stable id ("image.rotateLeft") and, with it, its place on the
// ring. Written as a string literal, an id must be in ringOrder or the build fails, so a typo
// can't send an entry to the end of its ring unnoticed.
class EntryId {
public:
    template <std::size_t Length>
    consteval EntryId(const char (&id)[Length])  // NOLINT: implicit, so registrations read `.id = "image.jpg"`
        : m_id(id), m_rank(ringRankOf(id))
    {
        if (m_rank == unlistedRank)
            throw "an entry's id must be listed in ringOrder";  // fails the build, never runs
    }

    // An id made at run time: a group's children, tests. Its rank is looked up; an id that
    // ringOrder doesn't list comes after the listed ones.
    static EntryId atRunTime(const QString& id);

    QString toString() const { return QString::fromLatin1(m_id); }
    int rank() const { return m_rank; }

private:
    constexpr EntryId(const char* id, int rank) : m_id(id), m_rank(rank) {}

    const char* m_id;
    int m_rank;
};

}  // namespace wendrel
