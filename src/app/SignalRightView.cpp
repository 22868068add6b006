// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/SignalRightView.h"

#include <QPainter>

void SignalRightView::paintEvent(QPaintEvent *)
{
    QPainter(this).fillRect(rect(), QColor::fromRgbF(0, 1, 0, 1));
}
