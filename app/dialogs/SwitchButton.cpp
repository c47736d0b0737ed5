#include "SwitchButton.h"

#include <QPainter>

#include <algorithm>

namespace wendrel {

namespace {

constexpr int trackWidth = 36;
constexpr int trackHeight = 20;
constexpr int knobMargin = 2;
constexpr int textGap = 10;

}  // namespace

SwitchButton::SwitchButton(const QString& text, QWidget* parent) : QAbstractButton(parent)
{
    setText(text);
    setCheckable(true);
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::PointingHandCursor);
}

QSize SwitchButton::sizeHint() const
{
    const int textWidth = text().isEmpty() ? 0 : textGap + fontMetrics().horizontalAdvance(text());
    return {trackWidth + textWidth + 4, std::max(trackHeight, fontMetrics().height()) + 4};
}

void SwitchButton::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QPalette& colours = palette();
    const QRectF track(2, (height() - trackHeight) / 2.0, trackWidth, trackHeight);

    QColor fill = isChecked() ? colours.color(QPalette::Highlight) : colours.color(QPalette::Mid);
    if (!isEnabled())
        fill.setAlphaF(0.4);
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill);
    painter.drawRoundedRect(track, trackHeight / 2.0, trackHeight / 2.0);

    const qreal knob = trackHeight - 2 * knobMargin;
    const qreal knobX = isChecked() ? track.right() - knobMargin - knob : track.left() + knobMargin;
    painter.setBrush(QColor(Qt::white));
    painter.setPen(QPen(QColor(0, 0, 0, 40), 1));
    painter.drawEllipse(QRectF(knobX, track.top() + knobMargin, knob, knob));

    if (hasFocus()) {
        QColor ring = colours.color(QPalette::Highlight);
        ring.setAlphaF(0.55);
        painter.setPen(QPen(ring, 2));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(track.adjusted(-1.5, -1.5, 1.5, 1.5), trackHeight / 2.0 + 1.5, trackHeight / 2.0 + 1.5);
    }

    painter.setPen(colours.color(isEnabled() ? QPalette::Active : QPalette::Disabled, QPalette::WindowText));
    const QRectF textArea(track.right() + textGap, 0, width() - track.right() - textGap, height());
    painter.drawText(textArea, Qt::AlignLeft | Qt::AlignVCenter, text());
}

}  // namespace wendrel
