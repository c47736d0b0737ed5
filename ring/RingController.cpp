#include "RingController.h"

#include "HidePolicy.h"
#include "RingGeometry.h"
#include "RingPlacement.h"
#include "operations/JobRunner.h"
#include "platform/WindowSystem.h"

#include "SymbolIcons.h"

#include <QGuiApplication>
#include <QImage>
#include <QScreen>

namespace wendrel {

namespace {

constexpr int fadeMilliseconds = 120;
constexpr double dragEndedDelay = 0.6;

QList<ScreenArea> screenAreas()
{
    QList<ScreenArea> areas;
    // The primary screen first: it takes a point that lies on no screen.
    if (QScreen* primary = QGuiApplication::primaryScreen())
        areas.append({primary->geometry(), primary->availableGeometry()});
    for (QScreen* screen : QGuiApplication::screens()) {
        if (screen != QGuiApplication::primaryScreen())
            areas.append({screen->geometry(), screen->availableGeometry()});
    }
    return areas;
}

}  // namespace

RingController::RingController(const OperationCatalog& catalog, JobRunner& runner, QObject* parent)
    : QObject(parent), m_model(catalog, runner), m_view(m_model), m_fade(&m_view, "windowOpacity")
{
    m_view.setWindowTitle(QStringLiteral("Wendrel Ring"));
    m_view.setWindowFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::NoDropShadowWindowHint);
    m_view.setAttribute(Qt::WA_TranslucentBackground);
    m_view.setAttribute(Qt::WA_ShowWithoutActivating);

    m_hideTimer.setSingleShot(true);
    // A coarse timer may fire 5 % early: a failure's 4 s would become 3.8.
    m_hideTimer.setTimerType(Qt::PreciseTimer);
    connect(&m_hideTimer, &QTimer::timeout, this, &RingController::hide);
    m_fade.setDuration(fadeMilliseconds);
    m_fade.setEndValue(0.0);
    connect(&m_fade, &QPropertyAnimation::finished, this, &RingController::finishHiding);
    connect(&m_view, &RingView::closeRequested, this, &RingController::hide);
    m_model.onFinished = [this] { onJobFinished(); };
    // Cancelled questions after a drop: the drag is over, so the ring goes as after any drag.
    m_model.onPromptCancelled = [this] {
        if (!m_model.isClickMode())
            scheduleHide(dragEndedDelay);
    };
}

bool RingController::isShown() const { return m_view.isVisible() && m_view.windowOpacity() > 0; }

void RingController::show(RingKind kind, const QStringList& urls, bool clickMode, QPoint point,
                          std::chrono::steady_clock::time_point requestedAt)
{
    m_hideTimer.stop();
    m_fade.stop();
    m_view.markRequest(requestedAt);
    const bool mayAdvance = isShown();
    if (!mayAdvance)
        m_resultShown = false;
    m_model.load(kind, urls, clickMode, mayAdvance);

    m_view.setCutToShape(!hasCompositingManager());
    m_view.move(ringPanelOrigin(point, screenAreas(), int(RingGeometry::panelSize)));
    // Drag mode must leave the focus where it is; click mode needs keys and clicks.
    m_view.setWindowFlag(Qt::WindowDoesNotAcceptFocus, !clickMode);
    m_view.setAttribute(Qt::WA_ShowWithoutActivating, !clickMode);
    m_view.setWindowOpacity(1.0);
    m_view.show();
    m_view.raise();
    if (clickMode) {
        m_view.activateWindow();
        m_view.setFocus();
    }
}

void RingController::warmUp(const QStringList& symbols)
{
    const RingTheme theme = RingTheme::from(m_view.palette());
    const qreal ratio = m_view.devicePixelRatioF();
    for (const QString& symbol : symbols) {
        symbolPixmap(symbol, theme.text, 26, ratio);
        symbolPixmap(symbol, theme.onAccent, 26, ratio);
    }
    QImage canvas(m_view.size() * ratio, QImage::Format_ARGB32_Premultiplied);
    canvas.setDevicePixelRatio(ratio);
    canvas.fill(Qt::transparent);
    m_view.render(&canvas);
}

void RingController::dragEnded()
{
    // A job started by the drop keeps the ring until its outcome has been read, and so do the
    // questions an entry asks before it runs.
    if (!m_model.runner().status().isRunning() && !m_resultShown && !m_model.isAsking())
        scheduleHide(dragEndedDelay);
}

void RingController::hide()
{
    m_hideTimer.stop();
    if (!m_view.isVisible())
        return;
    m_fade.setStartValue(m_view.windowOpacity());
    m_fade.start();
}

void RingController::finishHiding()
{
    if (m_view.windowOpacity() > 0)
        return;  // a new request came in while fading
    m_view.hide();
    m_model.closeGroup();
    if (!m_model.runner().status().isRunning())
        m_model.runner().reset();
    m_resultShown = false;
}

void RingController::scheduleHide(double seconds) { m_hideTimer.start(int(seconds * 1000)); }

void RingController::onJobFinished()
{
    const HideDecision decision = hideAfterJob(m_model.runner().status().state, m_resultShown);
    m_resultShown = decision.resultShown;
    if (decision.delaySeconds)
        scheduleHide(*decision.delaySeconds);
    else
        hide();
}

}  // namespace wendrel
