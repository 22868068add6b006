// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/PlotItem.h"

#include "plot/GraphFrame.h"
#include "plot/PlotTheme.h"

#include <QChart>
#include <QChartView>
#include <QCoreApplication>
#include <QDebug>
#include <QEvent>
#include <QFont>
#include <QPainter>
#include <QWidget>

#include <cmath>

PlotItem::PlotItem(QObject *parent) : QObject(parent) {}

PlotItem::~PlotItem()
{
    // A subclass has already run its own teardown; this releases what the base holds.
    PlotItem::killGraph();
}

void PlotItem::registerPlotItem(const QMetaObject *plotClass)
{
    Q_UNUSED(plotClass);
}

QList<QChart *> PlotItem::graphs() const
{
    QList<QChart *> live;
    live.reserve(m_graphs.size());
    for (const QPointer<QChart> &graph : m_graphs) {
        if (graph)
            live.append(graph.data());
    }
    return live;
}

QChart *PlotItem::firstGraph() const
{
    for (const QPointer<QChart> &graph : m_graphs) {
        if (graph)
            return graph.data();
    }
    return nullptr;
}

QChart *PlotItem::lastGraph() const
{
    for (auto it = m_graphs.crbegin(); it != m_graphs.crend(); ++it) {
        if (*it)
            return it->data();
    }
    return nullptr;
}

void PlotItem::addGraph(QChart *graph, QChartView *hostingView)
{
    if (!graph)
        return;
    m_graphs.append(graph);
    if (hostingView)
        hostingView->setChart(graph);
}

void PlotItem::killGraph()
{
    if (m_hostParent)
        m_hostParent->removeEventFilter(this);
    m_hostParent = nullptr;
    if (m_hostingView) {
        // Deleting the view deletes its scene, and with it the hosted chart and its series.
        QChartView *view = m_hostingView.data();
        m_hostingView = nullptr;
        view->setParent(nullptr);
        delete view;
    }
    m_cachedImage = QImage();
    for (const QPointer<QChart> &graph : std::as_const(m_graphs)) {
        if (graph) {
            // Live data is never animated, but a theme or a caller may have switched it on.
            graph->setAnimationOptions(QChart::NoAnimation);
            delete graph.data();
        }
    }
    m_graphs.clear();
    m_offscreenView.reset();
}

void PlotItem::generateData() {}

int PlotItem::titleCompare(const PlotItem &other) const
{
    int order = QString::compare(m_section, other.m_section, Qt::CaseInsensitive);
    if (order == 0)
        order = QString::compare(m_title, other.m_title, Qt::CaseInsensitive);
    return order < 0 ? -1 : (order > 0 ? 1 : 0);
}

PlotItem::TitleDefaults PlotItem::titleDefaultsForBounds(const QRectF &bounds)
{
    const double height = bounds.height();
    return {int(std::lround(height / 20.0)), QPointF(0.0, double(std::lround(height / 18.0)))};
}

QMarginsF PlotItem::paddingDefaultsForBounds(const QRectF &bounds, QPointF titleDisplacement)
{
    const double p = double(std::lround(bounds.width() / 40.0));
    const double top = titleDisplacement.y() > 0.0 ? 2.0 * titleDisplacement.y() : p;
    return QMarginsF(p, top, p, p);
}

void PlotItem::setTitleDefaultsForGraph(QChart *graph, const QRectF &bounds)
{
    if (!graph)
        return;
    const TitleDefaults defaults = titleDefaultsForBounds(bounds);
    GraphFrame *frame = GraphFrame::of(graph);
    frame->setTitle(m_title);
    // Sizes in this program are device-independent pixels, as the layout numbers are.
    QFont font(QStringLiteral("Helvetica"));
    font.setBold(true);
    font.setPixelSize(std::max(1, defaults.fontSize));
    frame->setTitleFont(font);
    frame->setTitleColor(QColor::fromRgbF(0.5f, 0.5f, 0.5f, 1.0f));
    frame->setTitleDisplacement(defaults.displacement);
}

void PlotItem::setPaddingDefaultsForGraph(QChart *graph, const QRectF &bounds)
{
    if (!graph)
        return;
    GraphFrame *frame = GraphFrame::of(graph);
    frame->setPadding(paddingDefaultsForBounds(bounds, frame->titleDisplacement()));
}

QImage PlotItem::image()
{
    if (!m_cachedImage.isNull())
        return m_cachedImage;

    auto view = std::make_unique<QWidget>();
    view->setAttribute(Qt::WA_DontShowOnScreen);
    view->resize(kImageWidth, kImageHeight);
    renderInView(view.get(), nullptr, false);
    m_offscreenView = std::move(view);

    // Qt Charts lays the chart out through posted events; a widget that is never shown
    // must have them delivered before it is drawn.
    QCoreApplication::sendPostedEvents();
    QImage bitmap(kImageWidth, kImageHeight, QImage::Format_ARGB32_Premultiplied);
    bitmap.fill(Qt::transparent);
    {
        QPainter painter(&bitmap);
        painter.setRenderHint(QPainter::Antialiasing, true);
        painter.setRenderHint(QPainter::TextAntialiasing, true);
        m_offscreenView->render(&painter, QPoint(), QRegion(),
                                QWidget::DrawChildren); // the widget itself is transparent
    }
    m_cachedImage = bitmap;
    return m_cachedImage;
}

void PlotItem::applyTheme(const PlotTheme *theme, QChart *graph, const PlotTheme *defaultTheme)
{
    if (!graph)
        return;
    if (!theme) {
        if (defaultTheme)
            defaultTheme->applyToGraph(graph);
        return;
    }
    if (theme->isNullMarker())
        return;
    theme->applyToGraph(graph);
}

void PlotItem::setFrameSize(const QSizeF &size)
{
    Q_UNUSED(size);
}

QString PlotItem::identifierOfView(const QWidget *view)
{
    if (!view)
        return QString();
    const QString identifier = view->property("identifier").toString();
    return identifier.isEmpty() ? view->objectName() : identifier;
}

QChartView *PlotItem::makeHostingView(QWidget *view)
{
    auto *hosting = new QChartView(view);
    hosting->setFrameShape(QFrame::NoFrame);
    hosting->setRenderHint(QPainter::Antialiasing, true);
    if (view)
        hosting->setGeometry(view->rect());
    else
        hosting->resize(0, 0);
    const QString identifier = identifierOfView(view);
    hosting->setObjectName(identifier);
    hosting->setProperty("identifier", identifier);
    if (view) {
        // Follow the parent in width and height.
        view->installEventFilter(this);
        m_hostParent = view;
        hosting->show();
    }
    return hosting;
}

bool PlotItem::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Resize && watched == m_hostParent && m_hostingView)
        m_hostingView->setGeometry(m_hostParent->rect());
    return QObject::eventFilter(watched, event);
}

void PlotItem::renderInView(QWidget *view, const PlotTheme *theme, bool animated)
{
    killGraph();
    m_hostingView = makeHostingView(view);
    generateData();
    renderInLayer(m_hostingView, theme, animated);
}

void PlotItem::render(const std::optional<QList<QVariantMap>> &series, QWidget *view,
                      const PlotTheme *theme, bool animated)
{
    killGraph();
    m_hostingView = makeHostingView(view);
    generateData();
    renderInLayer(series, m_hostingView, theme, animated);
}

void PlotItem::renderInLayer(QChartView *hostingView, const PlotTheme *theme, bool animated)
{
    Q_UNUSED(hostingView);
    Q_UNUSED(theme);
    Q_UNUSED(animated);
    qInfo().noquote() << "PlotItem:renderInLayer: Override me";
}

void PlotItem::renderInLayer(const std::optional<QList<QVariantMap>> &series,
                             QChartView *hostingView, const PlotTheme *theme, bool animated)
{
    Q_UNUSED(series);
    renderInLayer(hostingView, theme, animated);
}

void PlotItem::reloadData() {}
