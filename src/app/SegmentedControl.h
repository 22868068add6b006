// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>
#include <QWidget>

class QButtonGroup;
class QHBoxLayout;

// A row of exclusive, checkable buttons. Segment i carries tag i, which is how the tab
// selector, the tab view and the View menu stay in step.
class SegmentedControl : public QWidget
{
    Q_OBJECT
public:
    explicit SegmentedControl(QWidget *parent = nullptr);

    void setSegments(const QStringList &labels);
    int segmentCount() const;
    QString labelForSegment(int segment) const;
    void setToolTipForSegment(int segment, const QString &toolTip);

    // -1 when no segment is selected.
    int selectedSegment() const;
    // Selects a segment without emitting segmentClicked.
    void setSelectedSegment(int segment);
    int tagForSegment(int segment) const { return segment; }
    // Selects the segment carrying `tag`; false when there is none.
    bool selectSegmentWithTag(int tag);

Q_SIGNALS:
    // The user clicked a segment.
    void segmentClicked(int segment);

private:
    QButtonGroup *m_group;
    QHBoxLayout *m_layout;
};
