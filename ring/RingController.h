#pragma once

#include "RingModel.h"
#include "RingView.h"

#include <QObject>
#include <QPropertyAnimation>
#include <QTimer>

namespace wendrel {

// Puts the ring on screen: one frameless, always-on-top panel centred on the point and kept
// on its screen. In drag mode it never takes the focus from the application the files come
// from; in click mode it is activated so keys and clicks reach it. It hides after a drag
// ends or once a job's outcome has been shown long enough, fading out.
class RingController : public QObject {
    Q_OBJECT

public:
    RingController(const OperationCatalog& catalog, JobRunner& runner, QObject* parent = nullptr);

    RingModel& model() { return m_model; }
    RingView& view() { return m_view; }

    // Opens the ring at `point` (global logical coordinates), or pages it when the same ring
    // for the same files is on show.
    // `requestedAt`, when known, is when the request reached the program.
    void show(RingKind kind, const QStringList& urls, bool clickMode, QPoint point,
              std::chrono::steady_clock::time_point requestedAt = std::chrono::steady_clock::now());

    // The drag that opened the ring has ended.
    void dragEnded();

    // Fades the ring out.
    void hide();

    bool isShown() const;

    // Draws everything once off screen (fonts, the icons of `symbols` in both colours), so the
    // first ring the user asks for appears as fast as every later one.
    void warmUp(const QStringList& symbols);

private:
    void onJobFinished();
    void scheduleHide(double seconds);
    void finishHiding();

    RingModel m_model;
    RingView m_view;
    QTimer m_hideTimer;
    QPropertyAnimation m_fade;
    bool m_resultShown = false;
};

}  // namespace wendrel
