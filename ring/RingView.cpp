#include "RingView.h"

#include "RingGeometry.h"
#include "RingModel.h"
#include "RingPainter.h"
#include "operations/Logging.h"

#include <QDragEnterEvent>
#include <QMimeData>
#include <QPainter>
#include <QRegion>

namespace wendrel {

namespace {

using Clock = std::chrono::steady_clock;

QStringList localFiles(const QMimeData* mime)
{
    QStringList files;
    if (!mime)
        return files;
    for (const QUrl& url : mime->urls()) {
        if (url.isLocalFile())
            files.append(url.toLocalFile());
    }
    return files;
}

}  // namespace

RingView::RingView(RingModel& model, QWidget* parent)
    : QWidget(parent), m_model(model), m_theme(RingTheme::from(palette()))
{
    setFixedSize(int(RingGeometry::panelSize), int(RingGeometry::panelSize));
    setMouseTracking(true);
    setAcceptDrops(true);
    setFocusPolicy(Qt::StrongFocus);
    m_dwellTimer.setSingleShot(true);
    connect(&m_dwellTimer, &QTimer::timeout, this, [this] { m_model.advanceTime(Clock::now()); });
    connect(&m_model, &RingModel::changed, this, [this] {
        updateShape();
        update();
    });
}

void RingView::setCutToShape(bool cut)
{
    m_cutToShape = cut;
    updateShape();
}

// The ring's disc, plus the children of an open group, so pointer and drops outside the
// round shape fall through to the windows below.
void RingView::updateShape()
{
    if (!m_cutToShape) {
        clearMask();
        return;
    }
    const double middle = RingGeometry::panelSize / 2;
    const int radius = int(RingGeometry::outerRadius) + 2;
    QRegion shape(int(middle) - radius, int(middle) - radius, 2 * radius, 2 * radius, QRegion::Ellipse);
    if (m_model.openGroupIndex()) {
        const RingGeometry::ChildArc arc = m_model.openChildArc();
        for (int index = 0; index < arc.count; ++index) {
            const QPointF child = RingPainter::pointAt(arc.childAngle(index), RingGeometry::childRadius);
            shape += QRegion(int(child.x()) - 31, int(child.y()) - 31, 62, 62, QRegion::Ellipse);
        }
    }
    setMask(shape);
}

RingView::Offset RingView::offsetFromCentre(QPointF position)
{
    const double middle = RingGeometry::panelSize / 2;
    return {position.x() - middle, middle - position.y()};
}

void RingView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.fillRect(rect(), m_cutToShape ? m_theme.ring : QColor(Qt::transparent));
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    RingPainter(m_model, m_theme, devicePixelRatioF()).paint(painter);
    if (m_requestedAt) {
        const std::chrono::duration<double, std::milli> elapsed = Clock::now() - *m_requestedAt;
        qCInfo(lcRing, "ring painted %.1f ms after the request", elapsed.count());
        m_requestedAt.reset();
    }
}

bool RingView::updateHover(QPointF position)
{
    const Offset offset = offsetFromCentre(position);
    if (const std::optional<int> child = m_model.childAt(offset.dx, offset.dy)) {
        m_model.setHoveredChild(child);
        return true;
    }
    m_model.setHoveredChild(std::nullopt);
    const std::optional<int> segment = m_model.segmentAt(offset.dx, offset.dy);
    // Moving onto another segment folds an open group away.
    if (segment && m_model.openGroupIndex() && segment != m_model.openGroupIndex())
        m_model.closeGroup();
    m_model.setHovered(segment, Clock::now());
    scheduleDwell();
    return segment.has_value();
}

void RingView::scheduleDwell()
{
    const std::optional<RingModel::TimePoint> deadline = m_model.dwellDeadline();
    if (!deadline) {
        m_dwellTimer.stop();
        return;
    }
    const auto wait = std::chrono::duration_cast<std::chrono::milliseconds>(*deadline - Clock::now());
    m_dwellTimer.start(std::max<int>(0, int(wait.count()) + 1));
}

void RingView::activate(QPointF position, const std::optional<QStringList>& files)
{
    const Offset offset = offsetFromCentre(position);
    const std::optional<int> child = m_model.childAt(offset.dx, offset.dy);
    const int segment = child ? -1 : m_model.segmentAt(offset.dx, offset.dy).value_or(-1);
    const long fileCount = long(files ? files->size() : m_model.urls().size());
    qCInfo(lcRing, "drop on segment %ld, child %ld with %ld file(s)", long(segment), long(child.value_or(-1)),
           fileCount);
    if (child) {
        m_model.runChild(*child, files);
        return;
    }
    if (segment >= 0)
        m_model.activate(segment, files);
}

void RingView::mouseMoveEvent(QMouseEvent* event) { updateHover(event->position()); }

void RingView::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton && m_model.isClickMode())
        activate(event->position(), std::nullopt);
}

void RingView::leaveEvent(QEvent*)
{
    m_model.setHovered(std::nullopt, Clock::now());
    m_model.setHoveredChild(std::nullopt);
    m_dwellTimer.stop();
}

void RingView::keyPressEvent(QKeyEvent* event)
{
    const int key = event->key();
    if (key == Qt::Key_Escape) {
        Q_EMIT closeRequested();
    } else if (key == Qt::Key_Tab || key == Qt::Key_Backtab) {
        m_model.switchRing();
    } else if (key >= Qt::Key_1 && key <= Qt::Key_9) {
        m_model.activate(key - Qt::Key_1);
    } else {
        QWidget::keyPressEvent(event);
    }
}

void RingView::dragEnterEvent(QDragEnterEvent* event)
{
    if (localFiles(event->mimeData()).isEmpty())
        return;
    event->setDropAction(Qt::CopyAction);
    event->accept();
}

void RingView::dragMoveEvent(QDragMoveEvent* event)
{
    // The centre and the empty corners refuse the drop, so a release there drops nowhere.
    if (updateHover(event->position())) {
        event->setDropAction(Qt::CopyAction);
        event->accept();
    } else {
        event->ignore();
    }
}

void RingView::dragLeaveEvent(QDragLeaveEvent*)
{
    m_model.setHovered(std::nullopt, Clock::now());
    m_dwellTimer.stop();
}

void RingView::dropEvent(QDropEvent* event)
{
    // The dropped files are the ones to use; a source that can no longer hand them over at
    // the drop leaves the files it offered when the drag began, which the ring already has.
    QStringList files = localFiles(event->mimeData());
    if (files.isEmpty())
        files = m_model.urls();
    qCDebug(lcRing) << "drop with" << files.size() << "file(s) at" << event->position();
    if (files.isEmpty())
        return;
    // Always a copy: a move would let the source delete the originals.
    event->setDropAction(Qt::CopyAction);
    event->accept();
    // Run once the drop is over: an entry may ask questions first, and the drag source is
    // waiting to hear that the drop finished.
    const QPointF position = event->position();
    QMetaObject::invokeMethod(this, [this, position, files] { activate(position, files); }, Qt::QueuedConnection);
}

void RingView::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::ApplicationPaletteChange) {
        m_theme = RingTheme::from(palette());
        update();
    }
    QWidget::changeEvent(event);
}

}  // namespace wendrel
