#pragma once

#include <QString>

namespace wendrel {

// The position of an id in its ring's fixed order; ids outside that order rank after it.
int catalogRank(const QString& id);

}  // namespace wendrel
