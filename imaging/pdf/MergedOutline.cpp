#include "MergedOutline.h"

#include "operations/Logging.h"

#include <set>

namespace wendrel {

namespace {

// Bookmarks nest a few levels; a file that nests them without end is cut off here.
constexpr int deepestBookmark = 64;

using Item = MergedOutline::Item;

// A source's bookmark and those below it, read before anything is written so that a loop or
// a broken link in a damaged outline ends the reading, not the merge.
struct SourceBookmark {
    QPDFObjectHandle object;
    std::vector<SourceBookmark> children;
};

std::vector<SourceBookmark> readBookmarks(QPDFObjectHandle first, std::set<QPDFObjGen>& seen, int depth)
{
    std::vector<SourceBookmark> bookmarks;
    if (depth > deepestBookmark)
        return bookmarks;
    for (QPDFObjectHandle item = first; item.isDictionary(); item = item.getKey("/Next")) {
        if (item.isIndirect() && !seen.insert(item.getObjGen()).second)
            break;
        bookmarks.push_back({item, readBookmarks(item.getKey("/First"), seen, depth + 1)});
    }
    return bookmarks;
}

// Chains `children` below `parent` and gives each its /Parent; returns how many show when the
// parent is open.
int linkChildren(QPDFObjectHandle parent, const std::vector<Item>& children)
{
    int shown = 0;
    for (size_t i = 0; i < children.size(); ++i) {
        QPDFObjectHandle child = children[i].object;
        child.replaceKey("/Parent", parent);
        if (i > 0)
            child.replaceKey("/Prev", children[i - 1].object);
        if (i + 1 < children.size())
            child.replaceKey("/Next", children[i + 1].object);
        shown += 1 + (children[i].open ? children[i].shownWhenOpen : 0);
    }
    if (!children.empty()) {
        parent.replaceKey("/First", children.front().object);
        parent.replaceKey("/Last", children.back().object);
    }
    return shown;
}

// An item with `children` below it. /Count is positive for an open item, the number that show
// below it; negative for a closed one, the number that would show on opening it.
Item outlineItem(QPDF& target, QPDFObjectHandle title, bool open, const std::vector<Item>& children)
{
    Item item{target.makeIndirectObject(QPDFObjectHandle::newDictionary()), open, 0};
    item.object.replaceKey("/Title", title);
    item.shownWhenOpen = linkChildren(item.object, children);
    if (!children.empty())
        item.object.replaceKey("/Count", QPDFObjectHandle::newInteger(open ? item.shownWhenOpen : -item.shownWhenOpen));
    return item;
}

Item copiedBookmark(QPDF& target, QPDF& source, const SourceBookmark& bookmark, const DestinationRenames& renames)
{
    std::vector<Item> children;
    for (const SourceBookmark& child : bookmark.children)
        children.push_back(copiedBookmark(target, source, child, renames));

    QPDFObjectHandle original = bookmark.object;  // qpdf reads through non-const handles
    // The title's bytes as they are: PDFDocEncoding or UTF-16 alike.
    QPDFObjectHandle sourceTitle = original.getKey("/Title");
    const QPDFObjectHandle title = QPDFObjectHandle::newString(sourceTitle.isString() ? sourceTitle.getStringValue() : "");
    QPDFObjectHandle count = original.getKey("/Count");
    Item item = outlineItem(target, title, count.isInteger() && count.getIntValue() > 0, children);

    // Where it goes, and how it looks (colour, bold, italic).
    for (const char* key : {"/Dest", "/A", "/C", "/F"}) {
        if (original.hasKey(key))
            item.object.replaceKey(key, foreignCopy(target, source, original.getKey(key)));
    }
    renameDestinationReferences(item.object, renames);
    return item;
}

}  // namespace

void MergedOutline::addSource(QPDF& target, QPDF* source, const QString& title, QPDFObjectHandle firstPage,
                              const DestinationRenames& renames)
{
    std::vector<Item> children;
    if (source) {
        try {
            QPDFObjectHandle outlines = source->getRoot().getKey("/Outlines");
            std::set<QPDFObjGen> seen;
            const std::vector<SourceBookmark> bookmarks =
                outlines.isDictionary() ? readBookmarks(outlines.getKey("/First"), seen, 0) : std::vector<SourceBookmark>{};
            for (const SourceBookmark& bookmark : bookmarks)
                children.push_back(copiedBookmark(target, *source, bookmark, renames));
        } catch (const std::exception& error) {
            // The pages matter; a source's bookmarks that can't be read are left out.
            qCInfo(lcJobs) << "pdf bookmarks left out:" << title << error.what();
            children.clear();
        }
    }
    // Open, so each source's bookmarks show as they did in its own file.
    Item entry = outlineItem(target, QPDFObjectHandle::newUnicodeString(title.toStdString()), true, children);
    entry.object.replaceKey("/Dest", QPDFObjectHandle::newArray(std::vector<QPDFObjectHandle>{
                                         firstPage, QPDFObjectHandle::newName("/Fit")}));
    m_entries.push_back(entry);
}

void MergedOutline::install(QPDF& target) const
{
    if (m_entries.empty())
        return;
    QPDFObjectHandle outlines = target.makeIndirectObject(QPDFObjectHandle::newDictionary());
    outlines.replaceKey("/Type", QPDFObjectHandle::newName("/Outlines"));
    outlines.replaceKey("/Count", QPDFObjectHandle::newInteger(linkChildren(outlines, m_entries)));
    target.getRoot().replaceKey("/Outlines", outlines);
}

}  // namespace wendrel
