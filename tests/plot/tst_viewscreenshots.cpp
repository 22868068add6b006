// SPDX-License-Identifier: GPL-3.0-or-later
// Renders every view with plausible data into PNGs under the build folder
// (tests/screenshots/), to be looked at, and fails when a picture is all one colour.
#include "plot/PlotView.h"
#include "plot/RealTimePlot.h"
#include "plot/WiFiChannelView.h"
#include "plot/WiFiMapView.h"
#include "plot/support/FakeNetworks.h"
#include "plot/support/FakePlotDelegate.h"
#include "util/Clock.h"

#include <QDir>
#include <QPainter>
#include <QtTest>

namespace {

QString screenshotDir()
{
    const QString dir = QCoreApplication::applicationDirPath() + QStringLiteral("/screenshots");
    QDir().mkpath(dir);
    return dir;
}

QImage grabWidget(QWidget &widget)
{
    QCoreApplication::sendPostedEvents();
    QImage image(widget.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    widget.render(&painter);
    return image;
}

bool isOneColour(const QImage &image)
{
    const QRgb first = image.pixel(0, 0);
    for (int y = 0; y < image.height(); ++y) {
        const QRgb *line = reinterpret_cast<const QRgb *>(image.constScanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            if (line[x] != first)
                return false;
        }
    }
    return true;
}

} // namespace

class TestViewScreenshots : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void views_data();
    void views();

private:
    FakePlotDelegate m_delegate;
};

void TestViewScreenshots::init()
{
    m_delegate.list = FakeNetworks::make(40, 151, 7, Clock::now());
    m_delegate.datas = 151;
    m_delegate.top = 10;
    m_delegate.associate(m_delegate.list.at(2)->bssid());
}

void TestViewScreenshots::views_data()
{
    QTest::addColumn<QString>("view");
    QTest::addColumn<QSize>("size");
    for (const QSize size : {QSize(1280, 800), QSize(1920, 1080)}) {
        const QString suffix = QStringLiteral("-%1x%2").arg(size.width()).arg(size.height());
        for (const char *view : {"map", "channels-2.4", "channels-5", "signal", "info"})
            QTest::newRow(qPrintable(view + suffix)) << QString::fromLatin1(view) << size;
    }
    QTest::newRow("detail-420x220") << QStringLiteral("detail") << QSize(420, 220);
    QTest::newRow("signal-all-1280x800") << QStringLiteral("signal-all") << QSize(1280, 800);
}

void TestViewScreenshots::views()
{
    QFETCH(QString, view);
    QFETCH(QSize, size);

    QImage image;
    if (view == QLatin1String("map")) {
        WiFiMapView map;
        map.setDelegate(&m_delegate);
        map.resize(size);
        image = grabWidget(map);
    } else if (view.startsWith(QLatin1String("channels"))) {
        WiFiChannelView channels;
        channels.setDelegate(&m_delegate);
        channels.setIdentifier(view.endsWith(QLatin1String("-5")) ? QStringLiteral("5")
                                                                  : QString());
        channels.resize(size);
        image = grabWidget(channels);
    } else {
        const bool all = view == QLatin1String("signal-all");
        const QString identifier = all ? QStringLiteral("signal") : view;
        if (all)
            m_delegate.top = 100;
        PlotView host;
        host.setIdentifier(identifier);
        host.resize(size);
        RealTimePlot plot;
        plot.setDelegate(&m_delegate);
        if (identifier == QLatin1String("signal")) {
            plot.render(QList<QVariantMap>(), &host, nullptr, false);
            plot.updateSignalPlot();
            for (const NetworkObjectRef &network : m_delegate.networks())
                plot.setData(network->signals(), network->bssid());
        } else {
            plot.renderInView(&host, nullptr, false);
            const NetworkObjectRef &network = m_delegate.networks().at(2);
            QList<LevelSample> gapped = network->signals().toList();
            gapped[100] = std::nullopt; // one missing sample breaks the lines
            plot.setData(gapped, QStringLiteral("s"));
            plot.setData(network->noises(), QStringLiteral("n"));
            plot.setData(network->SNRs(), QStringLiteral("r"));
        }
        image = grabWidget(host);
    }

    QCOMPARE(image.size(), size);
    const QString path = QStringLiteral("%1/%2.png").arg(screenshotDir(), QTest::currentDataTag());
    QVERIFY2(image.save(path), qPrintable(path));
    QVERIFY2(!isOneColour(image), qPrintable(path + QStringLiteral(" is all one colour")));
}

QTEST_MAIN(TestViewScreenshots)
#include "tst_viewscreenshots.moc"
