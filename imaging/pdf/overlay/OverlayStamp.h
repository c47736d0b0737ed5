#pragma once

#include <cstddef>
#include <vector>

class QPDF;

namespace wendrel {

// Puts page overlayPageOf[i] of `overlay` over page i of `document`, as a form XObject drawn
// after the page's own content, in its own saved graphics state. The page's content streams,
// annotations and forms are left exactly as they are; only its resources gain the form. The
// overlay page is fitted to the page as a reader displays it (see PageFrame), so its lower-left
// corner is the displayed page's. An overlay page used by several pages is copied in once, and
// so is everything the overlay pages share, such as their fonts.
//
// `overlay` must stay alive until `document` is written: the forms read their data from it.
void stampOverlay(QPDF& document, QPDF& overlay, const std::vector<size_t>& overlayPageOf);

}  // namespace wendrel
