#include "PaperSize.h"

#include <cstdint>

#include <langinfo.h>
#include <locale.h>

namespace wendrel::document {

QPageSize::PageSizeId paperForMillimetres(int width, int height)
{
    return width == 216 && height == 279 ? QPageSize::Letter : QPageSize::A4;
}

std::optional<QPageSize::PageSizeId> localePaper()
{
#if defined(__GLIBC__)
    const locale_t paper = newlocale(LC_PAPER_MASK, "", static_cast<locale_t>(nullptr));
    if (paper == static_cast<locale_t>(nullptr))
        return std::nullopt;  // a locale the environment names but the system doesn't have
    // glibc answers these two with a number where a string would be.
    const auto width = static_cast<int>(reinterpret_cast<std::intptr_t>(nl_langinfo_l(_NL_PAPER_WIDTH, paper)));
    const auto height = static_cast<int>(reinterpret_cast<std::intptr_t>(nl_langinfo_l(_NL_PAPER_HEIGHT, paper)));
    freelocale(paper);
    if (width <= 0 || height <= 0)
        return std::nullopt;
    return paperForMillimetres(width, height);
#else
    return std::nullopt;
#endif
}

QPageSize::PageSizeId defaultPaper()
{
    return localePaper().value_or(QPageSize::A4);
}

}  // namespace wendrel::document
