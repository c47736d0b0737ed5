#pragma once

#include <QPageSize>

#include <optional>

namespace wendrel::document {

// Letter for the paper of 216 × 279 mm that North American locales name, A4 for everything
// else (the rest of the world, and the C locale).
QPageSize::PageSizeId paperForMillimetres(int width, int height);

// The paper size of the user's LC_PAPER (from the environment, as setlocale(LC_PAPER, "")
// would find it), asked of a locale object of its own so the process's locale, which other
// threads use, never changes. Nothing when the C library can't tell.
std::optional<QPageSize::PageSizeId> localePaper();

// localePaper(), or A4.
QPageSize::PageSizeId defaultPaper();

}  // namespace wendrel::document
