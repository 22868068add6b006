// SPDX-License-Identifier: GPL-3.0-or-later
// Shows the main window on a real (virtual) display with the simulated radio, runs a minute
// of one-second cycles on a clock that moves one second per cycle, then saves a PNG of every
// tab at two window sizes, of the hover panel and of the join and ad-hoc sheets.
// Exit code 1 when a picture is blank (one colour) or cannot be written, or, on a screen of
// more than one device pixel per point (QT_SCALE_FACTOR=2), when a table icon is blurred.
#include "app/AppDelegate.h"
#include "app/SegmentedControl.h"
#include "util/StreamAlertPresenter.h"
#include "prefs/PreferenceStore.h"
#include "util/Clock.h"
#include "util/RandomSource.h"
#include "wireless/WirelessBackend.h"
#include "wireless/simulated/SimulatedBackend.h"

#include <QApplication>
#include <QComboBox>
#include <QCursor>
#include <QDir>
#include <QImage>
#include <QPainter>
#include <QScreen>
#include <QSettings>
#include <QSvgRenderer>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <cstdio>

namespace {
int failures = 0;

bool isBlank(const QImage &image)
{
    if (image.isNull())
        return true;
    const QRgb first = image.pixel(0, 0);
    for (int y = 0; y < image.height(); y += 3) {
        for (int x = 0; x < image.width(); x += 3) {
            if (image.pixel(x, y) != first)
                return false;
        }
    }
    return true;
}

void save(const QImage &image, const QString &path)
{
    if (isBlank(image)) {
        std::fprintf(stderr, "BLANK: %s\n", qUtf8Printable(path));
        ++failures;
    }
    if (!image.save(path)) {
        std::fprintf(stderr, "cannot write %s\n", qUtf8Printable(path));
        ++failures;
    }
    std::printf("saved %s (%dx%d)\n", qUtf8Printable(path), image.width(), image.height());
}

void settle(int ms = 150)
{
    QTest::qWait(ms);
}

// How sharp the edges of a picture are: the mean luminance step between neighbouring
// pixels, each step weighted by its own size. A step drawn at the screen's resolution falls
// within one or two device pixels; a bitmap scaled up to it spreads it over more, smaller
// steps.
double edgeSharpness(const QImage &image)
{
    double sum = 0, squares = 0;
    for (int y = 0; y + 1 < image.height(); ++y) {
        for (int x = 0; x + 1 < image.width(); ++x) {
            const int here = qGray(image.pixel(x, y));
            for (const int there : {qGray(image.pixel(x + 1, y)), qGray(image.pixel(x, y + 1))}) {
                const double step = std::abs(there - here);
                sum += step;
                squares += step * step;
            }
        }
    }
    return sum > 0 ? squares / sum : 0;
}

// Of the luminance steps between neighbouring pixels, the share that falls inside the blocks
// of ratio x ratio device pixels that one point covers (the picture's origin on a block
// corner). A bitmap of one pixel per point scaled up without smoothing repeats each pixel
// over its block, so the share is about zero; a drawing at the screen's resolution has its
// edges anywhere, about half of them inside blocks.
double stepsInsideBlocks(const QImage &image, int ratio)
{
    double inside = 0, all = 0;
    for (int y = 0; y + 1 < image.height(); ++y) {
        for (int x = 0; x + 1 < image.width(); ++x) {
            const int here = qGray(image.pixel(x, y));
            const double right = std::abs(qGray(image.pixel(x + 1, y)) - here);
            const double down = std::abs(qGray(image.pixel(x, y + 1)) - here);
            all += right + down;
            inside += ((x + 1) % ratio != 0 ? right : 0) + ((y + 1) % ratio != 0 ? down : 0);
        }
    }
    return all > 0 ? inside / all : 0;
}

// The table icon of a network as it should look (`ratio` device pixels per point) and as
// a bitmap of one pixel per point scaled up would: the padlock SVG on the network's colour.
QImage iconAt(const QString &svg, const QColor &color, qreal ratio, bool scaledUp)
{
    const qreal drawn = scaledUp ? 1.0 : ratio;
    QImage image(QSize(19, 17) * drawn, QImage::Format_ARGB32_Premultiplied);
    image.fill(color);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    QSvgRenderer(svg).render(&painter, QRectF(1 * drawn, 1 * drawn, 17 * drawn, 16 * drawn));
    painter.end();
    return scaledUp ? image.scaled(QSize(19, 17) * ratio, Qt::IgnoreAspectRatio,
                                   Qt::SmoothTransformation)
                    : image;
}

// On a HiDPI screen the table's icons must be drawn for it: their size on screen in device
// pixels, and edges as sharp as a drawing at that resolution rather than a scaled bitmap.
void checkIconSharpness(AppDelegate &app, QTableView *table, const QString &out)
{
    const qreal ratio = table->devicePixelRatioF();
    int checked = 0;
    for (int row = 0; row < app.numberOfRowsInTableView() && checked < 3; ++row) {
        const QImage record =
            app.objectValueForTableColumn(QStringLiteral("icon"), row).value<QImage>();
        if (record.isNull())
            continue;
        const QColor color = record.pixelColor(0, 0);
        const QRect cell = table->visualRect(table->model()->index(row, 0));
        const QImage shot = table->viewport()->grab(cell).toImage();
        // The icon is the rectangle of the network's colour within the cell.
        QRect icon;
        for (int y = 0; y < shot.height(); ++y) {
            for (int x = 0; x < shot.width(); ++x) {
                if (shot.pixelColor(x, y) == color)
                    icon |= QRect(x, y, 1, 1);
            }
        }
        const QSize want = QSize(19, 17) * ratio;
        if (icon.size() != want) {
            std::fprintf(stderr, "ICON: row %d is %dx%d device pixels on screen, not %dx%d\n", row,
                         icon.width(), icon.height(), want.width(), want.height());
            ++failures;
            continue;
        }
        const QImage onScreen = shot.copy(icon);
        onScreen.save(QStringLiteral("%1/icon-row%2.png").arg(out).arg(row));
        const bool open = app.objectValueForTableColumn(QStringLiteral("SECURITY_MODE"), row)
                              .toString()
                              .isEmpty();
        const QString svg =
            open ? QStringLiteral(":/icons/clear.svg") : QStringLiteral(":/icons/lock.svg");
        const double sharp = edgeSharpness(iconAt(svg, color, ratio, false));
        const double blurred = edgeSharpness(iconAt(svg, color, ratio, true));
        const double measured = edgeSharpness(onScreen);
        const double inside = stepsInsideBlocks(onScreen, qRound(ratio));
        std::printf("icon of row %d: edge sharpness %.1f (drawn for the screen %.1f, scaled up "
                    "smoothly %.1f), share of steps inside point blocks %.2f\n",
                    row, measured, sharp, blurred, inside);
        // Scaled up smoothly, the edges are soft; scaled up by repeating pixels, the steps
        // only fall between blocks.
        if (measured < (sharp + blurred) / 2 || inside < 0.25) {
            std::fprintf(stderr, "BLURRED: the icon of row %d\n", row);
            ++failures;
        }
        ++checked;
    }
    if (checked == 0) {
        std::fprintf(stderr, "no table icon could be checked\n");
        ++failures;
    }
}

// The row of the first network whose security text is `security` ("" = open).
int rowWithSecurity(AppDelegate &app, const QString &security)
{
    for (qsizetype row = 0; row < app.numberOfRowsInTableView(); ++row) {
        const QVariant s = app.objectValueForTableColumn(QStringLiteral("SECURITY_MODE"), row);
        if (s.isValid() && s.toString() == security)
            return int(row);
    }
    return -1;
}
} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    const QString out = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("screenshots");
    QDir().mkpath(out);
    QTemporaryDir settings;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings.path());

    ManualClock clock(QDateTime::currentDateTime());
    Clock::setInstance(&clock);
    SeededRandomSource random(11);
    RandomSource::setInstance(&random);
    WirelessBackend::setCurrent(SimulatedBackend::createDefault(5));

    PreferenceStore preferences;
    preferences.setUpdateInterval(1);
    StreamAlertPresenter alerts(true);
    AppDelegate::Options options;
    options.alerts = &alerts;
    options.preferences = &preferences;
    options.runStartupProbe = false;
    options.startTimer = false;
    AppDelegate app(options);
    app.setDetailPanelDelays(100, 60000);
    QMainWindow *window = app.window();
    window->resize(1280, 800);
    window->move(0, 0);
    window->show();
    if (!QTest::qWaitForWindowExposed(window))
        std::fprintf(stderr, "the window was never shown\n");
    app.applicationDidFinishLaunching();
    for (int second = 0; second < 60; ++second) {
        clock.advance(1000);
        app.updateData();
    }
    settle();

    auto *segments = window->findChild<SegmentedControl *>(QStringLiteral("segmentedControl"));
    const char *names[] = {"interface",  "map",  "signal",  "channels-2.4",
                           "channels-5", "scan", "channels"};
    for (QSize size : {QSize(1280, 800), QSize(1920, 1080)}) {
        window->resize(size);
        settle(300);
        for (int tab = 0; tab < 7; ++tab) {
            segments->setSelectedSegment(tab);
            app.changeTabView(segments);
            clock.advance(1000);
            app.updateData();
            settle();
            save(window->grab().toImage(), QStringLiteral("%1/%2-%3x%4.png")
                                               .arg(out, QLatin1String(names[tab]))
                                               .arg(size.width())
                                               .arg(size.height()));
        }
    }
    window->resize(1280, 800);
    settle(300);

    auto *table = window->findChild<QTableView *>(QStringLiteral("scanResultsTable"));
    if (window->devicePixelRatioF() > 1) {
        segments->setSelectedSegment(5);
        app.changeTabView(segments);
        settle();
        checkIconSharpness(app, table, out);
    }

    // The hover panel over a table row.
    segments->setSelectedSegment(5);
    app.changeTabView(segments);
    const QPoint rowPoint =
        table->viewport()->mapToGlobal(QPoint(200, table->rowViewportPosition(2) + 8));
    QCursor::setPos(rowPoint);
    app.mouseMoved(window, QPointF(rowPoint));
    QTest::qWait(400);
    if (app.detailPanel()->isVisible()) {
        save(app.detailPanel()->grab().toImage(), out + QStringLiteral("/detail-panel.png"));
        save(window->screen()->grabWindow(0).toImage().copy(0, 0, 1400, 1000),
             out + QStringLiteral("/detail-panel-on-screen.png"));
    } else {
        std::fprintf(stderr, "the detail panel did not show\n");
        ++failures;
    }
    app.hideDetailPanel();

    // The join sheet for an open, a WPA2 and an enterprise network, and the ad-hoc sheet.
    const QList<QPair<QString, QString>> joins = {
        {QString(), QStringLiteral("open")},
        {QStringLiteral("WPA2 Personal"), QStringLiteral("wpa2")},
        {QStringLiteral("WPA2 Enterprise"), QStringLiteral("enterprise")}};
    for (const auto &[security, name] : joins) {
        const int row = rowWithSecurity(app, security);
        if (row < 0) {
            std::fprintf(stderr, "no %s network in the scenario\n", qUtf8Printable(name));
            continue;
        }
        table->selectRow(row);
        app.joinButtonPressed();
        settle(300);
        save(app.joinDialogWindow()->grab().toImage(),
             QStringLiteral("%1/join-%2.png").arg(out, name));
        app.joinCancelButtonPressed();
        settle();
    }
    app.createIBSSButtonPressed();
    settle(300);
    save(app.ibssDialogWindow()->grab().toImage(), out + QStringLiteral("/adhoc.png"));
    app.ibssCancelButtonPressed();

    WirelessBackend::setCurrent(nullptr);
    RandomSource::setInstance(nullptr);
    Clock::setInstance(nullptr);
    std::printf("%d blank or unwritable pictures\n", failures);
    return failures == 0 ? 0 : 1;
}
