#pragma once

#include <functional>

namespace wendrel {

class OperationContext;
class PdfPageRenderer;

// Runs `pageWork` for every page of `first`'s document, on every core: a renderer draws on one
// thread only, so each worker gets one of its own and claims the next page in order until none
// is left. Progress goes to `progress` after each page. Cancellation is checked between pages;
// the first failure stops every worker and is rethrown here.
void forEachPageOnAllCores(const PdfPageRenderer& first, const OperationContext& context,
                           const std::function<void(const PdfPageRenderer& renderer, int pageIndex)>& pageWork,
                           const std::function<void(double fraction)>& progress);

}  // namespace wendrel
