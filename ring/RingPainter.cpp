#include "RingPainter.h"

#include "RingGeometry.h"
#include "RingModel.h"
#include "SymbolIcons.h"
#include "operations/JobRunner.h"
#include "operations/RingKind.h"

#include <QCoreApplication>
#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>
#include <QTextOption>

#include <cmath>
#include <numbers>

namespace wendrel {

namespace {

using namespace RingGeometry;

constexpr QPointF centre(panelSize / 2, panelSize / 2);
constexpr double centreDiscRadius = 62;
constexpr double labelRadius = (innerRadius + outerRadius) / 2 + 2;
constexpr int iconSize = 26;
constexpr double childDiscRadius = 27;
constexpr double degrees = 180 / std::numbers::pi;

QString tr(const char* text) { return QCoreApplication::translate("RingView", text); }

// A ring sector between two radii, from one angle to another (clockwise from straight up).
QPainterPath sector(double fromAngle, double toAngle, double inner, double outer)
{
    // Qt counts angles anticlockwise from three o'clock, in degrees.
    const double qtFrom = 90 - fromAngle * degrees;
    const double span = -(toAngle - fromAngle) * degrees;
    QPainterPath path;
    path.arcMoveTo(QRectF(centre.x() - outer, centre.y() - outer, 2 * outer, 2 * outer), qtFrom);
    path.arcTo(QRectF(centre.x() - outer, centre.y() - outer, 2 * outer, 2 * outer), qtFrom, span);
    path.arcTo(QRectF(centre.x() - inner, centre.y() - inner, 2 * inner, 2 * inner), qtFrom + span, -span);
    path.closeSubpath();
    return path;
}

// The band a segment covers, `inset` (radians) short of its neighbours; a lone segment is the
// whole band, with no seam where a sector would start and end.
QPainterPath segmentShape(int index, int count, double inset, double inner, double outer)
{
    if (count == 1) {
        QPainterPath band;
        band.addEllipse(centre, outer, outer);
        band.addEllipse(centre, inner, inner);  // odd-even fill: the disc inside stays clear
        return band;
    }
    const double angle = segmentAngle(index, count);
    const double halfStep = std::numbers::pi / count;
    return sector(angle - halfStep + inset, angle + halfStep - inset, inner, outer);
}

QFont fontOf(int pixelSize, QFont::Weight weight)
{
    QFont font;
    font.setPixelSize(pixelSize);
    font.setWeight(weight);
    return font;
}

void drawTextBlock(QPainter& painter, const QRectF& box, const QString& text, const QFont& font, const QColor& colour,
                   int maximumLines)
{
    painter.setFont(font);
    painter.setPen(colour);
    const QFontMetricsF metrics(font);
    // Wrap by words, eliding the last line that fits.
    QStringList lines;
    QString current;
    const QStringList words = text.split(u' ', Qt::SkipEmptyParts);
    for (qsizetype index = 0; index < words.size(); ++index) {
        const QString candidate = current.isEmpty() ? words[index] : current + u' ' + words[index];
        if (metrics.horizontalAdvance(candidate) <= box.width() || current.isEmpty()) {
            current = candidate;
            continue;
        }
        lines.append(current);
        current = words[index];
        if (lines.size() == maximumLines - 1) {
            current = words.mid(index).join(u' ');
            break;
        }
    }
    if (!current.isEmpty())
        lines.append(current);
    for (QString& line : lines)
        line = metrics.elidedText(line, Qt::ElideMiddle, box.width());

    const double lineHeight = metrics.height();
    double y = box.center().y() - lineHeight * lines.size() / 2;
    for (const QString& line : std::as_const(lines)) {
        painter.drawText(QRectF(box.left(), y, box.width(), lineHeight), Qt::AlignCenter, line);
        y += lineHeight;
    }
}

// A segment's title on one line, or on two when it is too wide: broken at the last space
// that lets the first line fit, the second line shortened if it still doesn't.
QStringList titleLines(const QString& title, const QFontMetricsF& metrics, double width)
{
    if (metrics.horizontalAdvance(title) <= width)
        return {title};
    for (qsizetype space = title.lastIndexOf(u' '); space > 0; space = title.lastIndexOf(u' ', space - 1)) {
        const QString first = title.left(space);
        if (metrics.horizontalAdvance(first) <= width)
            return {first, metrics.elidedText(title.mid(space + 1), Qt::ElideRight, width)};
    }
    return {metrics.elidedText(title, Qt::ElideRight, width)};
}

}  // namespace

RingPainter::RingPainter(const RingModel& model, const RingTheme& theme, qreal devicePixelRatio)
    : m_model(model), m_theme(theme), m_ratio(devicePixelRatio)
{
}

QPointF RingPainter::pointAt(double angle, double radius)
{
    return {centre.x() + radius * std::sin(angle), centre.y() - radius * std::cos(angle)};
}

void RingPainter::paint(QPainter& painter) const
{
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::TextAntialiasing);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    paintShadow(painter);
    paintSegments(painter);
    paintChildren(painter);
    paintCentre(painter);
}

void RingPainter::paintShadow(QPainter& painter) const
{
    // A soft shadow: rings of falling opacity just outside the edge.
    painter.setPen(Qt::NoPen);
    for (int step = 10; step >= 1; --step) {
        QColor shade(0, 0, 0, m_theme.dark ? 9 : 5);
        painter.setBrush(shade);
        const double radius = outerRadius + step * 1.2;
        painter.drawEllipse(centre + QPointF(0, 3), radius, radius);
    }
}

void RingPainter::paintSegments(QPainter& painter) const
{
    const QList<FileOperationPtr> entries = m_model.visibleOperations();
    const int count = int(entries.size());

    painter.setPen(QPen(m_theme.edge, 1));
    painter.setBrush(m_theme.ring);
    painter.drawEllipse(centre, outerRadius, outerRadius);
    if (count == 0)
        return;

    const double step = 2 * std::numbers::pi / count;
    const std::optional<int> hovered = m_model.hoveredIndex();
    if (hovered && *hovered < count) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(m_theme.accent);
        painter.drawPath(segmentShape(*hovered, count, 0.004, innerRadius + 3, outerRadius - 3));
    }
    if (const std::optional<int> group = m_model.openGroupIndex()) {
        painter.setPen(QPen(m_theme.accent, 2));
        painter.setBrush(Qt::NoBrush);
        painter.drawPath(segmentShape(*group, count, 0.01, innerRadius + 4, outerRadius - 4));
    }

    // Hairlines between segments.
    if (count > 1) {
        painter.setPen(QPen(m_theme.edge, 1));
        for (int index = 0; index < count; ++index) {
            const double angle = segmentAngle(index, count) + step / 2;
            painter.drawLine(pointAt(angle, innerRadius + 10), pointAt(angle, outerRadius - 10));
        }
    }

    const QFont titleFont = fontOf(11, QFont::DemiBold);
    const QFontMetricsF metrics(titleFont);
    const double titleWidth = labelWidth(count, labelRadius, 96);
    for (int index = 0; index < count; ++index) {
        const bool isHovered = hovered == index;
        const QColor colour = isHovered ? m_theme.onAccent : m_theme.text;
        const QPointF middle = pointAt(segmentAngle(index, count), labelRadius);
        const QPixmap icon = symbolPixmap(entries[index]->symbol(), colour, iconSize, m_ratio);
        const QStringList lines = titleLines(entries[index]->title(), metrics, titleWidth);
        const double blockTop = middle.y() - (iconSize + 3 + metrics.height() * lines.size()) / 2;
        painter.drawPixmap(QPointF(middle.x() - iconSize / 2.0, blockTop), icon);
        painter.setFont(titleFont);
        painter.setPen(colour);
        for (qsizetype line = 0; line < lines.size(); ++line) {
            painter.drawText(QRectF(middle.x() - titleWidth / 2, blockTop + iconSize + 3 + line * metrics.height(),
                                    titleWidth, metrics.height()),
                             Qt::AlignCenter, lines[line]);
        }
        if (entries[index]->isGroup()) {
            // Groups show a small chevron toward the outside: there is more behind them.
            painter.setPen(QPen(colour, 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
            const double angle = segmentAngle(index, count);
            const QPointF tip = pointAt(angle, outerRadius - 12);
            painter.drawLine(tip, pointAt(angle - 0.045, outerRadius - 18));
            painter.drawLine(tip, pointAt(angle + 0.045, outerRadius - 18));
        }
    }
}

void RingPainter::paintChildren(QPainter& painter) const
{
    if (!m_model.openGroupIndex())
        return;
    const ChildArc arc = m_model.openChildArc();
    const QList<FileOperationPtr>& children = m_model.groupChildren();
    for (int index = 0; index < arc.count; ++index) {
        const bool isHovered = m_model.hoveredChildIndex() == index;
        const QPointF middle = pointAt(arc.childAngle(index), childRadius);
        const double radius = isHovered ? childDiscRadius + 3 : childDiscRadius;
        painter.setPen(QPen(m_theme.edge, 1));
        painter.setBrush(isHovered ? m_theme.accent : m_theme.ring);
        painter.drawEllipse(middle, radius, radius);
        const QPixmap icon =
            symbolPixmap(children[index]->symbol(), isHovered ? m_theme.onAccent : m_theme.text, 22, m_ratio);
        painter.drawPixmap(middle - QPointF(11, 11), icon);
    }
}

void RingPainter::paintCentre(QPainter& painter) const
{
    const JobStatus& status = m_model.runner().status();
    painter.setPen(QPen(m_theme.edge, 1));
    painter.setBrush(m_theme.centre);
    painter.drawEllipse(centre, centreDiscRadius, centreDiscRadius);

    const QRectF textBox(centre.x() - 50, centre.y() - 34, 100, 68);
    switch (status.state) {
    case JobStatus::State::running: {
        painter.setPen(QPen(m_theme.edge, 4, Qt::SolidLine, Qt::RoundCap));
        painter.setBrush(Qt::NoBrush);
        const QRectF track(centre.x() - 55, centre.y() - 55, 110, 110);
        painter.drawEllipse(track);
        painter.setPen(QPen(m_theme.accent, 4, Qt::SolidLine, Qt::RoundCap));
        painter.drawArc(track, 90 * 16, -int(std::round(status.progress * 360 * 16)));
        drawTextBlock(painter, textBox.adjusted(0, 0, 0, -16), status.title, fontOf(12, QFont::DemiBold), m_theme.text, 2);
        drawTextBlock(painter, QRectF(textBox.left(), textBox.bottom() - 22, textBox.width(), 18),
                      QStringLiteral("%1%").arg(int(status.progress * 100)), fontOf(11, QFont::Normal),
                      m_theme.secondaryText, 1);
        return;
    }
    case JobStatus::State::finished:
    case JobStatus::State::failed: {
        const bool ok = status.state == JobStatus::State::finished;
        const QColor mark = ok ? m_theme.success : m_theme.failure;
        painter.setPen(QPen(mark, 3, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        const QPointF top = centre - QPointF(0, 34);
        if (ok) {
            painter.drawPolyline(QList<QPointF>{top + QPointF(-8, 0), top + QPointF(-2, 6), top + QPointF(9, -6)});
        } else {
            painter.drawLine(top + QPointF(-6, -6), top + QPointF(6, 6));
            painter.drawLine(top + QPointF(-6, 6), top + QPointF(6, -6));
        }
        drawTextBlock(painter, textBox.adjusted(-4, 18, 4, 8), status.message, fontOf(11, QFont::DemiBold),
                      m_theme.text, ok ? 3 : 4);
        return;
    }
    case JobStatus::State::idle:
        break;
    }

    if (m_model.visibleOperations().isEmpty()) {
        drawTextBlock(painter, textBox, tr("Nothing fits this file"), fontOf(12, QFont::DemiBold),
                      m_theme.secondaryText, 3);
        return;
    }
    const FileOperationPtr hovered = m_model.hoveredOperation();
    const int hoveredChild = m_model.hoveredChildIndex().value_or(-1);
    QString caption = hovered ? hovered->title() : title(m_model.kind());
    if (hoveredChild >= 0 && hoveredChild < m_model.groupChildren().size())
        caption = m_model.groupChildren()[hoveredChild]->title();
    drawTextBlock(painter, textBox.adjusted(0, -6, 0, -22), caption, fontOf(14, QFont::Bold), m_theme.text, 2);
    const qsizetype files = m_model.urls().size();
    const QString subtitle = files == 1 ? tr("1 file") : tr("%1 files").arg(files);
    drawTextBlock(painter, QRectF(textBox.left(), centre.y() + 8, textBox.width(), 16), subtitle,
                  fontOf(11, QFont::Normal), m_theme.secondaryText, 1);

    // Page dots, when there is more than one page.
    const int pages = m_model.pageCount();
    if (pages > 1) {
        painter.setPen(Qt::NoPen);
        const double spacing = 9;
        const double first = centre.x() - spacing * (pages - 1) / 2;
        for (int page = 0; page < pages; ++page) {
            painter.setBrush(page == m_model.page() ? m_theme.accent : m_theme.edge);
            painter.drawEllipse(QPointF(first + page * spacing, centre.y() + 34), 3, 3);
        }
    }
}

}  // namespace wendrel
