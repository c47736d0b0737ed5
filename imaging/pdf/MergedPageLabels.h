#pragma once

#include <qpdf/QPDF.hh>

#include <vector>

namespace wendrel {

// The page labels of a merged document ("i", "ii", "1", "A-1"…). A source's own labels come
// over shifted to where its pages landed. Pages of sources without labels are numbered plainly,
// by their place in the merged document, so a labelled source doesn't make its numbering run
// on over the pages after it. A merge where no source has labels gets none.
class MergedPageLabels {
public:
    // The next `pageCount` pages come from `source` (nullptr for a picture).
    void addSource(QPDF& target, QPDF* source, long long pageCount);

    // Writes /PageLabels when some source had labels.
    void install(QPDF& target) const;

private:
    std::vector<QPDFObjectHandle> m_nums;  // page index, label dictionary, page index, …
    long long m_pages = 0;
    bool m_anyLabels = false;
    bool m_inPlainRange = false;  // the last range is plain numbering and runs on by itself
};

}  // namespace wendrel
