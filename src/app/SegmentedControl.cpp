// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/SegmentedControl.h"

#include <QAbstractButton>
#include <QButtonGroup>
#include <QHBoxLayout>
#include <QToolButton>

SegmentedControl::SegmentedControl(QWidget *parent)
    : QWidget(parent), m_group(new QButtonGroup(this)), m_layout(new QHBoxLayout(this))
{
    m_layout->setContentsMargins(0, 0, 0, 0);
    m_layout->setSpacing(0);
    m_group->setExclusive(true);
    connect(m_group, &QButtonGroup::idClicked, this, &SegmentedControl::segmentClicked);
}

void SegmentedControl::setSegments(const QStringList &labels)
{
    for (QAbstractButton *b : m_group->buttons()) {
        m_group->removeButton(b);
        delete b;
    }
    for (int i = 0; i < labels.size(); ++i) {
        auto *button = new QToolButton(this);
        button->setText(labels.at(i));
        button->setCheckable(true);
        button->setAutoRaise(false);
        button->setToolButtonStyle(Qt::ToolButtonTextOnly);
        button->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
        m_group->addButton(button, i);
        m_layout->addWidget(button);
    }
}

int SegmentedControl::segmentCount() const
{
    return m_group->buttons().size();
}

QString SegmentedControl::labelForSegment(int segment) const
{
    QAbstractButton *b = m_group->button(segment);
    return b ? b->text() : QString();
}

void SegmentedControl::setToolTipForSegment(int segment, const QString &toolTip)
{
    if (QAbstractButton *b = m_group->button(segment))
        b->setToolTip(toolTip);
}

int SegmentedControl::selectedSegment() const
{
    return m_group->checkedId();
}

void SegmentedControl::setSelectedSegment(int segment)
{
    if (QAbstractButton *b = m_group->button(segment))
        b->setChecked(true);
}

bool SegmentedControl::selectSegmentWithTag(int tag)
{
    for (int i = 0; i < segmentCount(); ++i) {
        if (tagForSegment(i) == tag) {
            setSelectedSegment(i);
            return true;
        }
    }
    return false;
}
