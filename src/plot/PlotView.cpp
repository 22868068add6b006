// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/PlotView.h"

#include <QMetaObject>
#include <QResizeEvent>

#include <cmath>

PlotView::PlotView(QWidget *parent) : QWidget(parent) {}

void PlotView::setFrameSize(const QSizeF &size)
{
    resize(int(std::lround(size.width())), int(std::lround(size.height())));
}

void PlotView::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    if (!m_delegate)
        return;
    const QMetaObject *meta = m_delegate->metaObject();
    if (meta->indexOfMethod("setFrameSize(QSizeF)") < 0)
        return;
    QMetaObject::invokeMethod(m_delegate.get(), "setFrameSize", Qt::DirectConnection,
                              Q_ARG(QSizeF, QSizeF(event->size())));
}
