// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

// A small indeterminate progress indicator: a ring of dots that turns while animating.
class BusySpinner : public QWidget
{
    Q_OBJECT
public:
    explicit BusySpinner(QWidget *parent = nullptr);

    void startAnimation();
    void stopAnimation();
    bool isAnimating() const { return m_timerId != 0; }
    QSize sizeHint() const override { return {20, 20}; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void timerEvent(QTimerEvent *event) override;

private:
    int m_timerId = 0;
    int m_step = 0;
};
