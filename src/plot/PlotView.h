// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QSizeF>
#include <QString>
#include <QWidget>

#include <memory>

// The plain widget a window reserves for a plot. It draws nothing itself; a plot item
// places its chart view inside it. The identifier tells the plot which variant to build
// ("info", "signal", "detail"). Size changes are passed on to the delegate when it has an
// invokable setFrameSize(QSizeF), as PlotItem does.
class PlotView : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(QString identifier READ identifier WRITE setIdentifier)

public:
    explicit PlotView(QWidget *parent = nullptr);

    QString identifier() const { return m_identifier; }
    void setIdentifier(const QString &identifier) { m_identifier = identifier; }

    // The view keeps its delegate alive.
    std::shared_ptr<QObject> delegate() const { return m_delegate; }
    void setDelegate(std::shared_ptr<QObject> delegate) { m_delegate = std::move(delegate); }

    // Resizes the view; the delegate hears of it through resizeEvent().
    void setFrameSize(const QSizeF &size);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    QString m_identifier;
    std::shared_ptr<QObject> m_delegate;
};
