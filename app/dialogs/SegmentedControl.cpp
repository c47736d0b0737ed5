#include "SegmentedControl.h"

#include <QFocusEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace wendrel {

namespace {

constexpr qreal cornerRadius = 7;
constexpr qreal inset = 2;  // between the frame and the selected segment
constexpr int horizontalPadding = 14;
constexpr int verticalPadding = 7;

}  // namespace

SegmentedControl::SegmentedControl(QStringList titles, QWidget* parent)
    : QWidget(parent), m_titles(std::move(titles))
{
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setAttribute(Qt::WA_Hover);
}

void SegmentedControl::setCurrentIndex(int index)
{
    if (index < 0 || index >= count() || index == m_current)
        return;
    m_current = index;
    update();
    Q_EMIT currentIndexChanged(index);
}

QSize SegmentedControl::sizeHint() const
{
    int widest = 0;
    for (const QString& title : m_titles)
        widest = std::max(widest, fontMetrics().horizontalAdvance(title));
    return {count() * (widest + 2 * horizontalPadding), fontMetrics().height() + 2 * verticalPadding};
}

QSize SegmentedControl::minimumSizeHint() const { return sizeHint(); }

QRectF SegmentedControl::segmentRect(int index) const
{
    const qreal width = (qreal(this->width()) - 2 * inset) / std::max(1, count());
    return {inset + index * width, inset, width, height() - 2 * inset};
}

int SegmentedControl::segmentAt(const QPointF& point) const
{
    for (int index = 0; index < count(); ++index) {
        if (segmentRect(index).contains(point))
            return index;
    }
    return -1;
}

void SegmentedControl::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QPalette& colours = palette();
    const QRectF frame = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);

    // The track: a shade darker than the window, with a hairline edge.
    painter.setPen(QPen(colours.color(QPalette::Mid), 1));
    painter.setBrush(colours.color(QPalette::Window).darker(106));
    painter.drawRoundedRect(frame, cornerRadius, cornerRadius);

    for (int index = 0; index < count(); ++index) {
        const QRectF segment = segmentRect(index);
        const bool selected = index == m_current;
        if (selected) {
            painter.setPen(Qt::NoPen);
            painter.setBrush(colours.color(isEnabled() ? QPalette::Highlight : QPalette::Mid));
            painter.drawRoundedRect(segment, cornerRadius - inset, cornerRadius - inset);
        } else if (index == m_hovered && isEnabled()) {
            painter.setPen(Qt::NoPen);
            painter.setBrush(colours.color(QPalette::Window).darker(114));
            painter.drawRoundedRect(segment, cornerRadius - inset, cornerRadius - inset);
        }
        // A divider between two unselected neighbours only; the selection needs none.
        if (index > 0 && !selected && index - 1 != m_current) {
            painter.setPen(QPen(colours.color(QPalette::Mid), 1));
            const qreal x = std::round(segment.left()) + 0.5;
            painter.drawLine(QPointF(x, segment.top() + 5), QPointF(x, segment.bottom() - 5));
        }
        painter.setPen(colours.color(selected ? QPalette::HighlightedText : QPalette::ButtonText));
        painter.drawText(segment, Qt::AlignCenter, fontMetrics().elidedText(m_titles[index], Qt::ElideRight,
                                                                            int(segment.width()) - 8));
    }

    if (hasFocus() && m_showsFocus) {
        QColor ring = colours.color(QPalette::Highlight);
        ring.setAlphaF(0.55);
        painter.setPen(QPen(ring, 2));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), cornerRadius, cornerRadius);
    }
}

void SegmentedControl::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) {
        QWidget::mousePressEvent(event);
        return;
    }
    const int index = segmentAt(event->position());
    if (index >= 0)
        setCurrentIndex(index);
}

void SegmentedControl::mouseMoveEvent(QMouseEvent* event)
{
    const int hovered = segmentAt(event->position());
    if (hovered != m_hovered) {
        m_hovered = hovered;
        update();
    }
}

void SegmentedControl::leaveEvent(QEvent*)
{
    m_hovered = -1;
    update();
}

void SegmentedControl::focusInEvent(QFocusEvent* event)
{
    const Qt::FocusReason reason = event->reason();
    m_showsFocus = reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason || reason == Qt::ShortcutFocusReason;
    QWidget::focusInEvent(event);
    update();
}

void SegmentedControl::focusOutEvent(QFocusEvent* event)
{
    m_showsFocus = false;
    QWidget::focusOutEvent(event);
    update();
}

void SegmentedControl::keyPressEvent(QKeyEvent* event)
{
    const bool forward = event->key() == Qt::Key_Right || event->key() == Qt::Key_Down;
    const bool backward = event->key() == Qt::Key_Left || event->key() == Qt::Key_Up;
    if (!forward && !backward) {
        QWidget::keyPressEvent(event);
        return;
    }
    const int step = (forward != (layoutDirection() == Qt::RightToLeft)) ? 1 : -1;
    setCurrentIndex(std::clamp(m_current + step, 0, count() - 1));
}

}  // namespace wendrel
