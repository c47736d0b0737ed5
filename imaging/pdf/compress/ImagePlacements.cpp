#include "ImagePlacements.h"

#include "PlacementGeometry.h"
#include "operations/Logging.h"

#include <qpdf/QPDFPageDocumentHelper.hh>

#include <vector>

namespace wendrel {

namespace {

// Forms drawn within forms deeper than this are taken for a loop the object numbers can't show.
constexpr int deepestNesting = 16;

struct Placement {
    QPDFObjGen image;
    PdfMatrix ctm;
};

// Follows one content stream's graphics state as far as placements need: the matrix stack,
// and each "Do" with the matrix it is drawn under.
class PlacementWalker final : public QPDFObjectHandle::ParserCallbacks {
public:
    explicit PlacementWalker(std::function<void(const std::string& name, const PdfMatrix& ctm)> drawn)
        : m_drawn(std::move(drawn))
    {
    }

    void handleObject(QPDFObjectHandle object) override
    {
        if (!object.isOperator()) {
            m_operands.push_back(object);
            return;
        }
        const std::string op = object.getOperatorValue();
        if (op == "q") {
            m_saved.push_back(m_ctm);
        } else if (op == "Q") {
            if (!m_saved.empty()) {
                m_ctm = m_saved.back();
                m_saved.pop_back();
            }
        } else if (op == "cm") {
            if (const std::optional<PdfMatrix> matrix = matrixFrom(m_operands))
                m_ctm = *matrix * m_ctm;  // the new matrix applies first, then the current one
        } else if (op == "Do") {
            if (m_operands.size() == 1 && m_operands.front().isName())
                m_drawn(m_operands.front().getName(), m_ctm);
        }
        m_operands.clear();
    }

    void handleEOF() override {}

    // Six numbers as a matrix, or nothing when they aren't six numbers.
    static std::optional<PdfMatrix> matrixFrom(std::vector<QPDFObjectHandle> numbers)
    {
        if (numbers.size() != 6)
            return std::nullopt;
        double values[6];
        for (std::size_t i = 0; i < 6; ++i) {
            if (!numbers[i].getValueAsNumber(values[i]))
                return std::nullopt;
        }
        return PdfMatrix{values[0], values[1], values[2], values[3], values[4], values[5]};
    }

private:
    std::function<void(const std::string&, const PdfMatrix&)> m_drawn;
    std::vector<QPDFObjectHandle> m_operands;
    std::vector<PdfMatrix> m_saved;
    PdfMatrix m_ctm;
};

bool isImage(QPDFObjectHandle object)
{
    return object.isStream() && object.getDict().getKey("/Subtype").isNameAndEquals("/Image");
}

bool hasDrawables(QPDFObjectHandle resources)
{
    QPDFObjectHandle objects = resources.isDictionary() ? resources.getKey("/XObject") : QPDFObjectHandle();
    return objects.isDictionary() && !objects.getKeys().empty();
}

class PlacementScan {
public:
    ImagePlacements result;

    void scanPage(QPDFPageObjectHelper& page)
    {
        QPDFObjectHandle resources = page.getAttribute("/Resources", false);
        if (!hasDrawables(resources))
            return;  // nothing on this page can be a picture: its content needn't be read
        for (const Placement& placement : placementsIn(page.getObjectHandle(), resources, 0))
            record(placement.image, placedSize(placement.ctm));
    }

private:
    // The placements a page or form makes in its own space: its pictures, and those of the
    // forms it draws, with the forms' matrices applied.
    std::vector<Placement> placementsIn(QPDFObjectHandle owner, QPDFObjectHandle resources, int depth)
    {
        std::vector<Placement> placements;
        QPDFObjectHandle objects = resources.getKey("/XObject");
        try {
            PlacementWalker walker([&](const std::string& name, const PdfMatrix& ctm) {
                QPDFObjectHandle drawn = objects.isDictionary() ? objects.getKey(name) : QPDFObjectHandle();
                if (isImage(drawn))
                    placements.push_back({drawn.getObjGen(), ctm});
                else if (drawn.isFormXObject())
                    addForm(placements, drawn, resources, ctm, depth);
            });
            if (owner.isFormXObject())
                owner.parseAsContents(&walker);
            else
                QPDFPageObjectHelper(owner).parseContents(&walker);
        } catch (const std::exception& error) {
            qCInfo(lcJobs) << "pdf content not readable:" << error.what();
            markUnreadable(objects);
        }
        return placements;
    }

    void addForm(std::vector<Placement>& placements, QPDFObjectHandle form, QPDFObjectHandle outerResources,
                 const PdfMatrix& ctm, int depth)
    {
        const QPDFObjGen id = form.getObjGen();
        QPDFObjectHandle dictionary = form.getDict();
        QPDFObjectHandle ownResources = dictionary.getKey("/Resources");
        PdfMatrix matrix;
        if (QPDFObjectHandle values = dictionary.getKey("/Matrix"); values.isArray())
            matrix = PlacementWalker::matrixFrom(values.getArrayAsVector()).value_or(PdfMatrix{});

        const std::vector<Placement>* inside = nullptr;
        std::vector<Placement> uncached;
        if (depth >= deepestNesting || m_open.contains(id)) {
            markUnreadable(ownResources.isDictionary() ? ownResources.getKey("/XObject") : QPDFObjectHandle());
            return;
        }
        m_open.insert(id);
        if (ownResources.isDictionary()) {
            // A form with resources of its own draws the same wherever it is used: read once.
            auto cached = m_forms.find(id);
            if (cached == m_forms.end())
                cached = m_forms.emplace(id, placementsIn(form, ownResources, depth + 1)).first;
            inside = &cached->second;
        } else {
            // Old files let a form use the resources of whatever draws it.
            uncached = placementsIn(form, outerResources, depth + 1);
            inside = &uncached;
        }
        m_open.erase(id);
        for (const Placement& placement : *inside)
            placements.push_back({placement.image, placement.ctm * matrix * ctm});
    }

    void record(QPDFObjGen image, QSizeF size)
    {
        auto [entry, added] = result.largest.emplace(image, size);
        if (!added)
            entry->second = largerPlacement(entry->second, size);
    }

    void markUnreadable(QPDFObjectHandle objects)
    {
        if (!objects.isDictionary())
            return;
        for (const std::string& key : objects.getKeys()) {
            if (QPDFObjectHandle drawn = objects.getKey(key); isImage(drawn))
                result.unreadable.insert(drawn.getObjGen());
        }
    }

    std::map<QPDFObjGen, std::vector<Placement>> m_forms;
    std::set<QPDFObjGen> m_open;
};

}  // namespace

ImagePlacements findImagePlacements(QPDF& pdf)
{
    PlacementScan scan;
    for (QPDFPageObjectHelper& page : QPDFPageDocumentHelper(pdf).getAllPages())
        scan.scanPage(page);
    return scan.result;
}

}  // namespace wendrel
