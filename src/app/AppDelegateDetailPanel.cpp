// SPDX-License-Identifier: GPL-3.0-or-later
// The hover detail panel: mouse tracking, the show and hide timers, placement, contents.
#include "app/AppDelegate.h"
#include "app/DetailPanelController.h"
#include "app/NetworkTableView.h"
#include "app/SegmentedControl.h"
#include "plot/PlotView.h"
#include "plot/RealTimePlot.h"
#include "plot/WiFiMapView.h"
#include "ui_DetailPanel.h"
#include "ui_MainWindow.h"
#include "util/GeometryUtil.h"

#include <QApplication>
#include <QCursor>
#include <QMainWindow>
#include <QMouseEvent>
#include <QScreen>
#include <QTimer>

namespace {
bool isValid(const QPointer<QTimer> &timer)
{
    return timer && timer->isActive();
}

void invalidate(QPointer<QTimer> &timer)
{
    if (timer) {
        timer->stop();
        timer->deleteLater();
    }
}

// A one-shot timer that has fired is done: free it and clear its slot. One still pending
// (the slot was called directly) stays.
void releaseFiredTimer(QPointer<QTimer> &timer)
{
    if (timer && !timer->isActive()) {
        timer->deleteLater();
        timer.clear();
    }
}
} // namespace

void AppDelegate::setupDetailPanel()
{
    // A floating panel that never takes the focus from the main window. A tooltip window
    // with the main window as its transient parent: on Wayland, where a window cannot
    // place itself, the compositor puts it where we ask relative to the main window (a popup
    // without a grab); on X11 it goes exactly where it is moved.
    const Qt::WindowFlags flags =
        Qt::ToolTip | Qt::FramelessWindowHint | Qt::WindowDoesNotAcceptFocus;
    m_detailPanel = new QWidget(m_window, flags);
    m_detailPanel->setAttribute(Qt::WA_ShowWithoutActivating);
    detailUi = std::make_unique<Ui::DetailPanel>();
    detailUi->setupUi(m_detailPanel);
    m_detailPanel->setWindowFlags(flags);
    // Frameless, so it draws its own edge to stand apart from the window below it.
    m_detailPanel->setAttribute(Qt::WA_StyledBackground);
    m_detailPanel->setStyleSheet(QStringLiteral(
        "#detailPanel { background: palette(window); border: 1px solid palette(shadow); }"));
    m_detailPanel->adjustSize();
    detailUi->detailPlotView->setIdentifier(QStringLiteral("detail"));
    connect(m_detailPanel, &QWidget::windowTitleChanged, detailUi->detailTitleLabel,
            &QLabel::setText);

    auto c = std::make_unique<DetailPanelController>();
    c->parentWindow = m_window;
    c->detailPanel = m_detailPanel;
    c->bssidField = detailUi->bssidField;
    c->channelField = detailUi->channelField;
    c->bandField = detailUi->bandField;
    c->channelWidthField = detailUi->channelWidthField;
    c->modeField = detailUi->modeField;
    c->securityModeField = detailUi->securityModeField;
    c->dataRatesField = detailUi->dataRatesField;
    c->signalQualityField = detailUi->signalQualityField;
    c->signalField = detailUi->signalField;
    c->noiseField = detailUi->noiseField;
    c->snrField = detailUi->snrField;
    c->signalAvgField = detailUi->signalAvgField;
    c->noiseAvgField = detailUi->noiseAvgField;
    c->snrAvgField = detailUi->snrAvgField;
    c->signalMinField = detailUi->signalMinField;
    c->noiseMinField = detailUi->noiseMinField;
    c->snrMinField = detailUi->snrMinField;
    c->signalMaxField = detailUi->signalMaxField;
    c->noiseMaxField = detailUi->noiseMaxField;
    c->snrMaxField = detailUi->snrMaxField;
    m_detailPanelController = std::move(c);

    // Mouse moves without a pressed button reach only widgets that track the mouse.
    const QList<QWidget *> tracked = {m_window.data(),
                                      ui->centralwidget,
                                      ui->tabView,
                                      ui->scanResultsTable,
                                      ui->scanResultsTable->viewport(),
                                      ui->wiFiMapView,
                                      m_detailPanel.data()};
    for (QWidget *w : tracked)
        w->setMouseTracking(true);
    for (QWidget *w : m_detailPanel->findChildren<QWidget *>())
        w->setMouseTracking(true);
}

void AppDelegate::setDetailPanelDelays(int showMs, int hideMs)
{
    m_showDelayMs = showMs;
    m_hideDelayMs = hideMs;
}

bool AppDelegate::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::MouseMove: {
        auto *widget = qobject_cast<QWidget *>(watched);
        if (!widget)
            break;
        auto *move = static_cast<QMouseEvent *>(event);
        // With a button held the pointer drags (a selection, a scroll bar): not a hover.
        if (move->buttons() != Qt::NoButton)
            break;
        // One move is offered to each widget it propagates through: handle it once.
        if (move->timestamp() == m_lastMoveTimestamp && move->globalPosition() == m_lastMovePos)
            break;
        m_lastMoveTimestamp = move->timestamp();
        m_lastMovePos = move->globalPosition();
        mouseMoved(widget->window(), move->globalPosition());
        break;
    }
    case QEvent::Leave:
        if (watched == m_window)
            mouseMoved(nullptr, QCursor::pos());
        break;
    case QEvent::ApplicationDeactivate:
        if (watched == qApp)
            mouseMoved(nullptr, QCursor::pos());
        break;
    default:
        break;
    }
    return false; // every event goes on unchanged
}

void AppDelegate::detailPanelOrderOut()
{
    if (m_detailPanel && m_detailPanel->isVisible())
        m_detailPanel->hide();
}

void AppDelegate::mouseMoved(QWidget *eventWindow, const QPointF &globalPos)
{
    // 1. Anywhere but the main window: the panel itself, another window, another program.
    if (eventWindow != m_window) {
        if (m_detailPanel)
            m_detailPanel->hide();
        invalidate(m_detailPanelMoveTimer);
        m_detailPanelMoveTimer.clear();
        if (isValid(m_showDetailTimer))
            invalidate(m_showDetailTimer);
        m_showDetailTimer.clear();
        m_lastMoveOnRow = kNoRow;
        return;
    }
    m_pointerInWindow = m_window->mapFromGlobal(globalPos);
    // 2.
    switch (ui->segmentedControl->selectedSegment()) {
    case 1: {
        const NetworkObjectRef n = ui->wiFiMapView->networkUnderMouse();
        if (isValid(m_showDetailTimer))
            invalidate(m_showDetailTimer);
        if (!n) {
            detailPanelOrderOut();
            return;
        }
        const bool alreadyShown =
            !m_detailNetworkBssid.isEmpty() && m_detailNetworkBssid == n->bssid();
        if (!alreadyShown) {
            detailPanelOrderOut();
            m_detailNetworkBssid = n->bssid();
            updateDetailPlot();
        }
        armDetailTimers();
        return;
    }
    case 5: {
        QWidget *viewport = ui->scanResultsTable->viewport();
        const QPoint local = viewport->mapFromGlobal(globalPos.toPoint());
        const qint64 r =
            viewport->rect().contains(local) ? ui->scanResultsTable->rowAt(local.y()) : -1;
        if (isValid(m_showDetailTimer))
            invalidate(m_showDetailTimer);
        // The bound is the full list; -1 ("no row") lands here too.
        if (quint64(r) >= quint64(networks().size())) {
            detailPanelOrderOut();
            return;
        }
        if (quint64(r) != m_lastMoveOnRow || m_lastMoveOnRow == kNoRow) {
            detailPanelOrderOut();
            m_lastMoveOnRow = quint64(r);
            if (r < filteredNetworks().size()) {
                const quint64 index = filteredNetworks().at(r);
                if (index < quint64(networks().size())) {
                    m_detailNetworkBssid = networks().at(qsizetype(index))->bssid();
                    updateDetailPlot();
                }
            }
        }
        armDetailTimers();
        return;
    }
    default:
        return; // a visible panel stays until its hide timer fires
    }
}

void AppDelegate::armDetailTimers()
{
    if (!m_detailPanel->isVisible()) {
        m_showDetailTimer = new QTimer(this);
        m_showDetailTimer->setSingleShot(true);
        connect(m_showDetailTimer, &QTimer::timeout, this, &AppDelegate::showDetailPanel);
        m_showDetailTimer->start(m_showDelayMs);
    }
    invalidate(m_hideDetailTimer);
    m_hideDetailTimer = new QTimer(this);
    m_hideDetailTimer->setSingleShot(true);
    connect(m_hideDetailTimer, &QTimer::timeout, this, &AppDelegate::hideDetailPanel);
    m_hideDetailTimer->start(m_hideDelayMs);
}

void AppDelegate::showDetailPanel()
{
    releaseFiredTimer(m_showDetailTimer);
    calcDetailPanelLocation();
    m_detailPanel->move(m_detailPanelLocation.toPoint());
    m_detailPanel->show();
    m_detailPanel->raise();
}

void AppDelegate::hideDetailPanel()
{
    releaseFiredTimer(m_hideDetailTimer);
    if (m_detailPanel)
        m_detailPanel->hide();
}

void AppDelegate::calcDetailPanelLocation()
{
    // Only the screen's size counts, not its origin: the panel is kept within
    // (0, 0)-(width, height), on a secondary screen too.
    const QScreen *screen = m_window ? m_window->screen() : nullptr;
    const QSizeF s = screen ? QSizeF(screen->geometry().size()) : QSizeF(0, 0);
    // The pointer where it last moved over the main window, taken through that window's
    // position into screen coordinates.
    const QPointF m = m_window ? m_window->mapToGlobal(m_pointerInWindow) : m_pointerInWindow;
    const QSizeF p = m_detailPanel ? QSizeF(m_detailPanel->frameGeometry().size()) : QSizeF(0, 0);
    // Qt's y grows downwards: the panel's top edge sits 17 points below the pointer.
    const double x = GeometryUtil::clampFloat(m.x(), 0, s.width() - p.width());
    const double y = GeometryUtil::clampFloat(m.y() + 17, 0, s.height() - p.height());
    m_detailPanelLocation = QPointF(x, y);
}

void AppDelegate::updateDetailPlot()
{
    const NetworkObjectRef record = networks().networkWithBssid(m_detailNetworkBssid);
    if (!record)
        return;
    if (m_detailPlot) {
        m_detailPlot->setData(record->signals(), QStringLiteral("s"));
        m_detailPlot->setData(record->noises(), QStringLiteral("n"));
        m_detailPlot->setData(record->SNRs(), QStringLiteral("r"));
    }
    m_detailPanelController->updateDetailWithNetwork(*record);
}
