#pragma once

#include "SheetCell.h"

#include <functional>

namespace wendrel {

// Where every sheet reader hands its rows, one at a time and in order, as soon as each is
// read: the writer downstream keeps as little as its format lets it.
using SheetRowSink = std::function<void(const SheetRow& row)>;

// Called after every batch of rows with the share of the input read so far; may throw (the
// job's cancellation) to stop the reading.
using SheetProgress = std::function<void(double fraction)>;

}  // namespace wendrel
