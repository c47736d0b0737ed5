#include "MergedPageLabels.h"

#include "ForeignObjects.h"
#include "operations/Logging.h"

#include <qpdf/QPDFPageLabelDocumentHelper.hh>

namespace wendrel {

void MergedPageLabels::addSource(QPDF& target, QPDF* source, long long pageCount)
{
    const long long start = m_pages;
    m_pages += pageCount;
    if (source) {
        try {
            QPDFPageLabelDocumentHelper labels(*source);
            if (labels.hasPageLabels()) {
                std::vector<QPDFObjectHandle> added;
                labels.getLabelsForPageRange(0, pageCount - 1, start, added);
                for (QPDFObjectHandle& entry : added)
                    m_nums.push_back(entry.isInteger() ? entry : foreignCopy(target, *source, entry));
                m_anyLabels = true;
                m_inPlainRange = false;
                return;
            }
        } catch (const std::exception& error) {
            qCInfo(lcJobs) << "pdf page labels left out:" << error.what();
        }
    }
    if (!m_inPlainRange) {
        m_nums.push_back(QPDFObjectHandle::newInteger(start));
        m_nums.push_back(QPDFObjectHandle::parse("<< /S /D /St " + std::to_string(start + 1) + " >>"));
        m_inPlainRange = true;
    }
}

void MergedPageLabels::install(QPDF& target) const
{
    if (!m_anyLabels)
        return;
    QPDFObjectHandle labels = QPDFObjectHandle::newDictionary();
    labels.replaceKey("/Nums", QPDFObjectHandle::newArray(m_nums));
    target.getRoot().replaceKey("/PageLabels", target.makeIndirectObject(labels));
}

}  // namespace wendrel
