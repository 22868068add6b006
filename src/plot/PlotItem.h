// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QChartView>
#include <QImage>
#include <QList>
#include <QMarginsF>
#include <QObject>
#include <QPointF>
#include <QPointer>
#include <QRectF>
#include <QSizeF>
#include <QString>
#include <QVariantMap>

#include <memory>
#include <optional>

class PlotTheme;
class QChart;
class QWidget;

// The base of the program's graphs. A plot item owns the charts ("graphs") of one plot,
// hosts them in a chart view placed inside a caller's widget, gives them a theme, a title
// and paddings, tears everything down on request and can draw itself off screen.
//
// Ownership: the hosted chart belongs to the hosting view, and the hosting view to the
// caller's widget; the item keeps guarded pointers to both and deletes them in killGraph().
// Charts added without a hosting view belong to the item.
class PlotItem : public QObject
{
    Q_OBJECT

public:
    // The default title defaults for some bounds: font size and displacement of the title.
    struct TitleDefaults
    {
        int fontSize = 0;
        QPointF displacement;
    };
    // Off-screen image size.
    static constexpr int kImageWidth = 400;
    static constexpr int kImageHeight = 300;

    explicit PlotItem(QObject *parent = nullptr);
    ~PlotItem() override;
    Q_DISABLE_COPY_MOVE(PlotItem)

    // Plot classes announce themselves here; nothing keeps a registry.
    static void registerPlotItem(const QMetaObject *plotClass);

    QChartView *defaultLayerHostingView() const { return m_hostingView; }
    void setDefaultLayerHostingView(QChartView *view) { m_hostingView = view; }
    // The live graphs, in the order added; the last is the one a subclass works on.
    QList<QChart *> graphs() const;
    // The first and the last live graph, or null; cheaper than graphs() on hot paths.
    QChart *firstGraph() const;
    QChart *lastGraph() const;
    QString section() const { return m_section; }
    void setSection(const QString &section) { m_section = section; }
    QString title() const { return m_title; }
    void setTitle(const QString &title) { m_title = title; }

    void addGraph(QChart *graph, QChartView *hostingView = nullptr);
    // Removes the hosting view from its parent and deletes it with its chart, deletes every
    // other graph, and drops the cached image.
    virtual void killGraph();
    virtual void generateData();
    // Section first, then title, both ignoring case: -1, 0 or 1.
    int titleCompare(const PlotItem &other) const;

    static TitleDefaults titleDefaultsForBounds(const QRectF &bounds);
    static QMarginsF paddingDefaultsForBounds(const QRectF &bounds, QPointF titleDisplacement);
    void setTitleDefaultsForGraph(QChart *graph, const QRectF &bounds);
    void setPaddingDefaultsForGraph(QChart *graph, const QRectF &bounds);

    // The plot rendered off screen at 400 x 300, made once and kept until killGraph(). Making
    // it renders the plot anew into an off-screen view, which takes the graph out of the view
    // it was shown in; callers that want both render into their view again afterwards.
    QImage image();
    QImage cachedImage() const { return m_cachedImage; }

    // Null theme: the default; PlotTheme::nullTheme(): none; otherwise that theme.
    static void applyTheme(const PlotTheme *theme, QChart *graph, const PlotTheme *defaultTheme);

    // Size changes of a PlotView are passed here; the hosting view follows its parent by
    // itself, so there is nothing to do.
    Q_INVOKABLE virtual void setFrameSize(const QSizeF &size);

    void renderInView(QWidget *view, const PlotTheme *theme, bool animated);
    void render(const std::optional<QList<QVariantMap>> &series, QWidget *view,
                const PlotTheme *theme, bool animated);
    virtual void renderInLayer(QChartView *hostingView, const PlotTheme *theme, bool animated);
    virtual void renderInLayer(const std::optional<QList<QVariantMap>> &series,
                               QChartView *hostingView, const PlotTheme *theme, bool animated);
    virtual void reloadData();

    // The identifier a view carries: its "identifier" property, else its object name.
    static QString identifierOfView(const QWidget *view);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QChartView *makeHostingView(QWidget *view);

    QPointer<QChartView> m_hostingView;
    QPointer<QWidget> m_hostParent;
    QList<QPointer<QChart>> m_graphs;
    QString m_section;
    QString m_title;
    QImage m_cachedImage;
    // The widget image() renders into; it keeps the graph alive until the next killGraph().
    std::unique_ptr<QWidget> m_offscreenView;
};
