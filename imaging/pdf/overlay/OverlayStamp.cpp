#include "OverlayStamp.h"

#include "PageFrame.h"

#include <qpdf/QPDF.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFPageObjectHelper.hh>

#include <QByteArray>

#include <map>
#include <stdexcept>

namespace wendrel {

namespace {

std::string pdfNumber(double value)
{
    // PDF numbers have no exponent; five decimals are far below what a page can show.
    QByteArray text = QByteArray::number(std::abs(value) < 1e-9 ? 0.0 : value, 'f', 5);
    while (text.contains('.') && (text.endsWith('0') || text.endsWith('.')))
        text.chop(1);
    return text.toStdString();
}

// The page's own resource dictionary with its own /XObject dictionary, either copied (shallowly)
// when shared: pages often share one resource dictionary, and the form of one page must not
// appear in the resources of all the others.
QPDFObjectHandle ownXObjects(QPDFPageObjectHelper& page)
{
    QPDFObjectHandle pageObject = page.getObjectHandle();
    QPDFObjectHandle resources = page.getAttribute("/Resources", true);
    resources = resources.isDictionary() ? resources.shallowCopy() : QPDFObjectHandle::newDictionary();
    pageObject.replaceKey("/Resources", resources);
    QPDFObjectHandle xobjects = resources.getKey("/XObject");
    xobjects = xobjects.isDictionary() ? xobjects.shallowCopy() : QPDFObjectHandle::newDictionary();
    resources.replaceKey("/XObject", xobjects);
    return xobjects;
}

// Qt gives every page a resource dictionary of its own, yet names each font, colour space and
// graphics state once for the whole document. When the pages' dictionaries agree name for
// name, one dictionary holding all of them serves every form, and a document of thousands of
// pages carries it once instead of once a page. Uninitialized when they don't agree.
QPDFObjectHandle mergedResources(QPDF& overlay, std::vector<QPDFPageObjectHelper>& pages)
{
    QPDFObjectHandle merged = QPDFObjectHandle::newDictionary();
    for (QPDFPageObjectHelper& page : pages) {
        QPDFObjectHandle resources = page.getAttribute("/Resources", false);
        if (!resources.isDictionary())
            return {};
        for (const std::string& category : resources.getKeys()) {
            QPDFObjectHandle entries = resources.getKey(category);
            if (!entries.isDictionary()) {
                // /ProcSet and the like: the same everywhere or no sharing.
                if (merged.hasKey(category) && merged.getKey(category).unparse() != entries.unparse())
                    return {};
                merged.replaceKey(category, entries);
                continue;
            }
            if (!merged.hasKey(category))
                merged.replaceKey(category, QPDFObjectHandle::newDictionary());
            QPDFObjectHandle target = merged.getKey(category);
            for (const std::string& name : entries.getKeys()) {
                QPDFObjectHandle value = entries.getKey(name);
                if (target.hasKey(name) && target.getKey(name).unparse() != value.unparse())
                    return {};
                target.replaceKey(name, value);
            }
        }
    }
    return overlay.makeIndirectObject(merged);
}

}  // namespace

void stampOverlay(QPDF& document, QPDF& overlay, const std::vector<size_t>& overlayPageOf)
{
    std::vector<QPDFPageObjectHelper> pages = QPDFPageDocumentHelper(document).getAllPages();
    std::vector<QPDFPageObjectHelper> overlayPages = QPDFPageDocumentHelper(overlay).getAllPages();
    if (overlayPageOf.size() != pages.size())
        throw std::logic_error("one overlay page is needed per page");

    const QPDFObjectHandle sharedResources = mergedResources(overlay, overlayPages);
    std::vector<QPDFObjectHandle> forms(overlayPages.size());
    // Whatever state the page's content leaves behind (a clip, a colour, a transformation) is
    // undone before the overlay draws: the page's content runs inside q … Q. The opening and
    // most closing streams are the same for many pages, so they are shared.
    QPDFObjectHandle opening = document.newStream("q\n");
    std::map<std::string, QPDFObjectHandle> closings;

    for (size_t index = 0; index < pages.size(); ++index) {
        QPDFPageObjectHelper& page = pages[index];
        const size_t overlayIndex = overlayPageOf[index];
        QPDFObjectHandle& form = forms.at(overlayIndex);
        if (!form.isInitialized()) {
            QPDFObjectHandle ownForm = overlayPages[overlayIndex].getFormXObjectForPage(false);
            if (sharedResources.isInitialized())
                ownForm.getDict().replaceKey("/Resources", sharedResources);
            form = document.copyForeignObject(ownForm);
        }

        QPDFObjectHandle xobjects = ownXObjects(page);
        int suffix = 0;
        const std::string name = page.getAttribute("/Resources", false).getUniqueResourceName("/Wo", suffix);
        xobjects.replaceKey(name, form);

        const std::array<double, 6> matrix = pageFrame(page).displayedToUserSpace();
        std::string closing = "Q\nq";
        for (double value : matrix)
            closing += " " + pdfNumber(value);
        closing += " cm " + name + " Do Q\n";
        auto [shared, isNew] = closings.try_emplace(closing);
        if (isNew)
            shared->second = document.newStream(closing);

        page.addPageContents(opening, true);
        page.addPageContents(shared->second, false);
    }
}

}  // namespace wendrel
