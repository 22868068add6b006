// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

// A swatch of pure green beside the detail panel's signal row: the signal's colour in the
// panel's plot.
class SignalRightView : public QWidget
{
    Q_OBJECT
public:
    using QWidget::QWidget;

protected:
    void paintEvent(QPaintEvent *event) override;
};
