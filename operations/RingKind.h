#pragma once

#include <QString>
#include <QStringView>

#include <array>
#include <optional>

namespace wendrel {

// The three rings. The order of the enumerators is the order of the ring switcher (Tab), of
// hot-key ids and of the suffixes of per-ring settings keys.
enum class RingKind { convert, tools, actions };

inline constexpr std::array<RingKind, 3> allRingKinds{RingKind::convert, RingKind::tools,
                                                      RingKind::actions};

// "convert", "tools", "actions": the stored and scripted spelling.
QString rawValue(RingKind kind);

// An unknown spelling is no ring at all; it is never mapped to a default ring.
std::optional<RingKind> ringKindFromRawValue(QStringView raw);

// "Convert", "Tools", "Actions".
QString title(RingKind kind);

// The ring after this one, wrapping from actions back to convert.
RingKind nextRing(RingKind kind);

}  // namespace wendrel
