// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/BusySpinner.h"

#include <QPainter>
#include <QTimerEvent>

namespace {
constexpr int kDots = 12;
}

BusySpinner::BusySpinner(QWidget *parent) : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void BusySpinner::startAnimation()
{
    if (!m_timerId)
        m_timerId = startTimer(80);
    update();
}

void BusySpinner::stopAnimation()
{
    if (m_timerId) {
        killTimer(m_timerId);
        m_timerId = 0;
    }
    update();
}

void BusySpinner::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != m_timerId)
        return QWidget::timerEvent(event);
    m_step = (m_step + 1) % kDots;
    update();
}

void BusySpinner::paintEvent(QPaintEvent *)
{
    if (!isAnimating())
        return;
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    const qreal side = qMin(width(), height());
    p.translate(width() / 2.0, height() / 2.0);
    const QColor base = palette().color(QPalette::WindowText);
    for (int i = 0; i < kDots; ++i) {
        QColor c = base;
        // The dot at the current step is solid; the trail behind it fades out.
        c.setAlphaF(0.15 + 0.85 * ((i - m_step + kDots) % kDots) / double(kDots - 1));
        p.setPen(Qt::NoPen);
        p.setBrush(c);
        p.save();
        p.rotate(360.0 * i / kDots);
        p.drawEllipse(QRectF(side * 0.30, -side * 0.06, side * 0.16, side * 0.12));
        p.restore();
    }
}
