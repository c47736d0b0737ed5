#pragma once

#include "RingTheme.h"

#include <QTimer>
#include <QWidget>

#include <chrono>
#include <optional>

namespace wendrel {

class RingModel;

// The ring's window content: draws the model and turns the pointer, drops and keys into the
// model's operations. Offsets go to the model with dy growing upward.
class RingView : public QWidget {
    Q_OBJECT

public:
    explicit RingView(RingModel& model, QWidget* parent = nullptr);

    // Without a compositor the window is cut to the ring's shape instead of being translucent.
    void setCutToShape(bool cut);

    // The moment the ring was asked for, for the log line that tells how long the next frame
    // took to appear.
    void markRequest(std::chrono::steady_clock::time_point requestedAt) { m_requestedAt = requestedAt; }

Q_SIGNALS:
    void closeRequested();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    struct Offset {
        double dx;
        double dy;
    };
    static Offset offsetFromCentre(QPointF position);

    // Moves the hover to what is under `position`; true when that is a segment or a child.
    bool updateHover(QPointF position);
    void activate(QPointF position, const std::optional<QStringList>& files);
    void scheduleDwell();
    void updateShape();

    RingModel& m_model;
    RingTheme m_theme;
    QTimer m_dwellTimer;
    std::optional<std::chrono::steady_clock::time_point> m_requestedAt;
    bool m_cutToShape = false;
};

}  // namespace wendrel
