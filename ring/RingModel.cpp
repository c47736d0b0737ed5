#include "RingModel.h"

#include "platform/FeedbackSounds.h"
#include "operations/JobRunner.h"
#include "operations/Logging.h"
#include "operations/OperationCatalog.h"

#include <algorithm>

namespace wendrel {

using RingGeometry::pageSize;

RingModel::RingModel(const OperationCatalog& catalog, JobRunner& runner, QObject* parent)
    : QObject(parent), m_catalog(catalog), m_runner(runner)
{
    connect(&m_runner, &JobRunner::jobEnded, this, &RingModel::onJobEnded);
    connect(&m_runner, &JobRunner::statusChanged, this, &RingModel::changed);
}

int RingModel::pageCount() const
{
    return std::max<int>(1, int((m_allOperations.size() + pageSize - 1) / pageSize));
}

QList<FileOperationPtr> RingModel::visibleOperations() const
{
    const qsizetype first = qsizetype(m_page) * pageSize;
    if (first >= m_allOperations.size())
        return {};
    return m_allOperations.mid(first, std::min<qsizetype>(pageSize, m_allOperations.size() - first));
}

FileOperationPtr RingModel::hoveredOperation() const
{
    const QList<FileOperationPtr> visible = visibleOperations();
    if (!m_hoveredIndex || *m_hoveredIndex < 0 || *m_hoveredIndex >= visible.size())
        return nullptr;
    return visible[*m_hoveredIndex];
}

void RingModel::load(RingKind kind, const QStringList& urls, bool clickMode, bool mayAdvance)
{
    if (mayAdvance && kind == m_kind && urls == m_urls && !m_allOperations.isEmpty()) {
        m_page = (m_page + 1) % pageCount();
    } else {
        m_kind = kind;
        m_urls = urls;
        m_page = 0;
        m_allOperations = m_catalog.fitting(kind, urls);
    }
    m_clickMode = clickMode;
    clearTransientState();
    m_runner.reset();
    qCInfo(lcRing, "show %s for %ld file(s)", qUtf8Printable(rawValue(m_kind)), long(m_urls.size()));
    qCDebug(lcRing, "page %d of %d", m_page + 1, pageCount());
    Q_EMIT changed();
}

void RingModel::switchRing()
{
    m_kind = nextRing(m_kind);
    m_page = 0;
    m_allOperations = m_catalog.fitting(m_kind, m_urls);
    clearTransientState();
    Q_EMIT changed();
}

void RingModel::clearTransientState()
{
    m_hoveredIndex.reset();
    m_dwellDeadline.reset();
    m_openGroupIndex.reset();
    m_groupChildren.clear();
    m_hoveredChildIndex.reset();
}

void RingModel::setHovered(std::optional<int> index, TimePoint now)
{
    if (index == m_hoveredIndex)
        return;
    m_hoveredIndex = index;
    // A pending dwell never outlives a change of hover.
    m_dwellDeadline = index ? std::optional(now + dwell) : std::nullopt;
    Q_EMIT changed();
}

void RingModel::setHoveredChild(std::optional<int> index)
{
    if (index == m_hoveredChildIndex)
        return;
    m_hoveredChildIndex = index;
    Q_EMIT changed();
}

std::optional<RingModel::TimePoint> RingModel::dwellDeadline() const { return m_dwellDeadline; }

void RingModel::advanceTime(TimePoint now)
{
    if (!m_dwellDeadline || now < *m_dwellDeadline)
        return;
    m_dwellDeadline.reset();
    if (m_hoveredIndex)
        openGroup(*m_hoveredIndex);
}

void RingModel::openGroup(int index)
{
    m_dwellDeadline.reset();
    const QList<FileOperationPtr> visible = visibleOperations();
    if (index < 0 || index >= visible.size() || !visible[index]->isGroup())
        return;
    m_openGroupIndex = index;
    m_groupChildren = visible[index]->children(m_urls);
    m_hoveredChildIndex.reset();
    Q_EMIT changed();
}

void RingModel::closeGroup()
{
    if (!m_openGroupIndex)
        return;
    m_openGroupIndex.reset();
    m_groupChildren.clear();
    m_hoveredChildIndex.reset();
    Q_EMIT changed();
}

void RingModel::activate(int index, const std::optional<QStringList>& files)
{
    const QList<FileOperationPtr> visible = visibleOperations();
    if (index < 0 || index >= visible.size())
        return;
    if (visible[index]->isGroup())
        openGroup(index);
    else
        startRun(visible[index], files.value_or(m_urls));
}

void RingModel::runChild(int index, const std::optional<QStringList>& files)
{
    if (index < 0 || index >= m_groupChildren.size())
        return;
    startRun(m_groupChildren[index], files.value_or(m_urls));
}

void RingModel::startRun(const FileOperationPtr& entry, const QStringList& files)
{
    m_runRing = m_kind;
    m_runClickMode = m_clickMode;
    if (const std::optional<QString> refusal = OperationCatalog::refusal(*entry, files)) {
        m_runner.reject(entry, files, *refusal);
        return;
    }
    QJsonObject answers;
    if (askUser) {
        m_asking = true;
        const std::optional<QJsonObject> confirmed = askBeforeRunning(*entry, files, askUser);
        m_asking = false;
        if (!confirmed) {
            if (onPromptCancelled)
                onPromptCancelled();
            return;
        }
        answers = *confirmed;
    }
    m_runner.run({entry, files, std::nullopt, answers});
}

std::optional<int> RingModel::segmentAt(double dx, double dy) const
{
    return RingGeometry::segmentAt(dx, dy, int(visibleOperations().size()));
}

RingGeometry::ChildArc RingModel::openChildArc() const
{
    if (!m_openGroupIndex)
        return {};
    return RingGeometry::childArc(*m_openGroupIndex, int(visibleOperations().size()), int(m_groupChildren.size()));
}

std::optional<int> RingModel::childAt(double dx, double dy) const
{
    if (!m_openGroupIndex)
        return std::nullopt;
    return RingGeometry::childAt(dx, dy, openChildArc());
}

void RingModel::onJobEnded(const JobRequest& request, const JobReport& report)
{
    const bool sounds = m_feedback.sounds && (!m_feedback.wanted || m_feedback.wanted());
    if (!report.succeeded) {
        if (sounds)
            m_feedback.sounds->playFailure();
    } else {
        if (sounds)
            m_feedback.sounds->playSuccess();
        Q_EMIT jobFinished({request.operation->id(), m_runRing, m_runClickMode, request.paths, report.results});
    }
    if (onFinished)
        onFinished();
}

}  // namespace wendrel
