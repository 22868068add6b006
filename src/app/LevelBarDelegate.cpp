// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/LevelBarDelegate.h"

#include <QApplication>
#include <QPainter>
#include <QStyleOptionProgressBar>

void LevelBarDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                             const QModelIndex &index) const
{
    // Paint the cell's background (selection, alternate rows) without any text.
    QStyleOptionViewItem background = option;
    initStyleOption(&background, index);
    background.text.clear();
    QWidget *view = const_cast<QWidget *>(option.widget);
    QStyle *style = view ? view->style() : QApplication::style();
    style->drawControl(QStyle::CE_ItemViewItem, &background, painter, view);

    bool ok = false;
    const double level = index.data(Qt::DisplayRole).toDouble(&ok);
    if (!ok)
        return;
    QStyleOptionProgressBar bar;
    bar.rect = option.rect.adjusted(3, 3, -3, -3);
    bar.minimum = 0;
    bar.maximum = 100;
    // A level is a signal fraction × 10; out-of-range fractions are possible, clamp them.
    bar.progress = qBound(0, qRound(level * 10.0), 100);
    bar.textVisible = false;
    bar.state = option.state | QStyle::State_Horizontal;
    bar.palette = option.palette;
    style->drawControl(QStyle::CE_ProgressBar, &bar, painter, view);
}

QSize LevelBarDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    QSize size = QStyledItemDelegate::sizeHint(option, index);
    size.setWidth(qMax(size.width(), 80));
    return size;
}
