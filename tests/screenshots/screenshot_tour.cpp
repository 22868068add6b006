// SPDX-License-Identifier: GPL-3.0-or-later
// Shows the main window on a real (virtual) display with the simulated radio, runs a minute
// of one-second cycles on a clock that moves one second per cycle, then saves a PNG of every
// tab at two window sizes, of the hover panel and of the join and ad-hoc sheets.
// Exit code 1 when a picture is blank (one colour) or cannot be written, or, on a screen of
// more than one device pixel per point (QT_SCALE_FACTOR=2), when a table icon is blurred.
#include "app/support/AppHarness.h"
#include "wireless/simulated/SimulatedBackend.h"

#include <QApplication>
#include <QComboBox>
#include <QCursor>
#include <QDir>
#include <QImage>
#include <QPainter>
#include <QScreen>
#include <QSvgRenderer>
#include <QTableView>
#include <QTest>

#include <cstdio>

namespace {
int failures = 0;

template <typename... Args> void fail(const char *format, Args... args)
{
    std::fprintf(stderr, format, args...);
    ++failures;
}

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
    if (isBlank(image))
        fail("BLANK: %s\n", qUtf8Printable(path));
    if (!image.save(path))
        fail("cannot write %s\n", qUtf8Printable(path));
    std::printf("saved %s (%dx%d)\n", qUtf8Printable(path), image.width(), image.height());
}

// The luminance steps between neighbouring pixels of a picture. First, how sharp its edges
// are: the mean step, each step weighted by its own size. A step drawn at the screen's
// resolution falls within one or two device pixels; a bitmap scaled up to it spreads it over
// more, smaller steps. Second, the share of the steps that falls inside the blocks of ratio x
// ratio device pixels that one point covers (the picture's origin on a block corner). A bitmap
// of one pixel per point scaled up without smoothing repeats each pixel over its block, so the
// share is about zero; a drawing at the screen's resolution has its edges anywhere, about half
// of them inside blocks.
std::pair<double, double> steps(const QImage &image, int ratio)
{
    double sum = 0, squares = 0, inside = 0;
    for (int y = 0; y + 1 < image.height(); ++y) {
        for (int x = 0; x + 1 < image.width(); ++x) {
            const int here = qGray(image.pixel(x, y));
            const double right = std::abs(qGray(image.pixel(x + 1, y)) - here);
            const double down = std::abs(qGray(image.pixel(x, y + 1)) - here);
            sum += right + down;
            squares += right * right + down * down;
            inside += ((x + 1) % ratio != 0 ? right : 0) + ((y + 1) % ratio != 0 ? down : 0);
        }
    }
    return sum > 0 ? std::pair(squares / sum, inside / sum) : std::pair(0.0, 0.0);
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
            fail("ICON: row %d is %dx%d device pixels on screen, not %dx%d\n", row, icon.width(),
                 icon.height(), want.width(), want.height());
            continue;
        }
        const QImage onScreen = shot.copy(icon);
        onScreen.save(QStringLiteral("%1/icon-row%2.png").arg(out).arg(row));
        const bool open = app.objectValueForTableColumn(QStringLiteral("SECURITY_MODE"), row)
                              .toString()
                              .isEmpty();
        const QString svg =
            open ? QStringLiteral(":/icons/clear.svg") : QStringLiteral(":/icons/lock.svg");
        const double sharp = steps(iconAt(svg, color, ratio, false), 1).first;
        const double blurred = steps(iconAt(svg, color, ratio, true), 1).first;
        const auto [measured, inside] = steps(onScreen, qRound(ratio));
        std::printf("icon of row %d: edge sharpness %.1f (drawn for the screen %.1f, scaled up "
                    "smoothly %.1f), share of steps inside point blocks %.2f\n",
                    row, measured, sharp, blurred, inside);
        // Scaled up smoothly, the edges are soft; scaled up by repeating pixels, the steps
        // only fall between blocks.
        if (measured < (sharp + blurred) / 2 || inside < 0.25)
            fail("BLURRED: the icon of row %d\n", row);
        ++checked;
    }
    if (checked == 0)
        fail("no table icon could be checked\n");
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
    AppHarness h; // settings in a temporary folder, the manual clock, a seeded random source
    WirelessBackend::setCurrent(SimulatedBackend::createDefault(5));
    h.preferences->setUpdateInterval(1);
    AppDelegate &app = h.restart();
    app.setDetailPanelDelays(100, 60000);
    QMainWindow *window = app.window();
    window->resize(1280, 800);
    window->move(0, 0);
    window->show();
    if (!QTest::qWaitForWindowExposed(window))
        std::fprintf(stderr, "the window was never shown\n");
    app.applicationDidFinishLaunching();
    h.runSeconds(60);
    QTest::qWait(150);

    const char *names[] = {"interface",  "map",  "signal",  "channels-2.4",
                           "channels-5", "scan", "channels"};
    for (QSize size : {QSize(1280, 800), QSize(1920, 1080)}) {
        window->resize(size);
        QTest::qWait(300);
        for (int tab = 0; tab < 7; ++tab) {
            h.showTab(tab);
            h.runSeconds(1);
            QTest::qWait(150);
            save(window->grab().toImage(), QStringLiteral("%1/%2-%3x%4.png")
                                               .arg(out, QLatin1String(names[tab]))
                                               .arg(size.width())
                                               .arg(size.height()));
        }
    }
    window->resize(1280, 800);
    h.showTab(5);
    QTest::qWait(300);
    auto *table = window->findChild<QTableView *>(QStringLiteral("scanResultsTable"));
    if (window->devicePixelRatioF() > 1)
        checkIconSharpness(app, table, out);

    // The hover panel over a table row.
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
        fail("the detail panel did not show\n");
    }
    app.hideDetailPanel();

    // The join sheet for an open, a WPA2 and an enterprise network, and the ad-hoc sheet.
    const std::pair<const char *, const char *> joins[] = {
        {"", "open"}, {"WPA2 Personal", "wpa2"}, {"WPA2 Enterprise", "enterprise"}};
    for (const auto &[security, name] : joins) {
        const int row = rowWithSecurity(app, QString::fromLatin1(security));
        if (row < 0) {
            std::fprintf(stderr, "no %s network in the scenario\n", name);
            continue;
        }
        table->selectRow(row);
        app.joinButtonPressed();
        QTest::qWait(300);
        save(app.joinDialogWindow()->grab().toImage(),
             QStringLiteral("%1/join-%2.png").arg(out, QLatin1String(name)));
        app.joinCancelButtonPressed();
        QTest::qWait(150);
    }
    app.createIBSSButtonPressed();
    QTest::qWait(300);
    save(app.ibssDialogWindow()->grab().toImage(), out + QStringLiteral("/adhoc.png"));
    app.ibssCancelButtonPressed();
    for (const QString &alert : h.alerts.lines())
        std::fprintf(stderr, "alert: %s\n", qUtf8Printable(alert));
    std::printf("%d blank or unwritable pictures\n", failures);
    return failures == 0 ? 0 : 1;
}
