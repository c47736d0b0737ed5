#pragma once

#include <QStringList>
#include <QWidget>

namespace wendrel {

// A row of a few mutually exclusive choices drawn as one rounded control, the selected
// segment filled with the highlight colour. Clicks pick a segment; with focus, the arrow keys
// move the selection.
class SegmentedControl : public QWidget {
    Q_OBJECT

public:
    explicit SegmentedControl(QStringList titles, QWidget* parent = nullptr);

    int count() const { return int(m_titles.size()); }
    QString title(int index) const { return m_titles.value(index); }
    int currentIndex() const { return m_current; }
    void setCurrentIndex(int index);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    void currentIndexChanged(int index);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    QRectF segmentRect(int index) const;
    int segmentAt(const QPointF& point) const;

    QStringList m_titles;
    int m_current = 0;
    int m_hovered = -1;
    bool m_showsFocus = false;  // focus that came from the keyboard, which draws a ring
};

}  // namespace wendrel
