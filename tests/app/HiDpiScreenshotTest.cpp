// At a device pixel ratio of 2 (QT_SCALE_FACTOR=2) the editor draws its
// rulers and icons at the screen's density: a ruler tick is whole device
// pixels with no half-covered pixel beside it, and an icon has detail
// finer than a doubled 1× picture, with edges as steep as at 1×. A picture
// drawn at 1× and scaled up fails either way: smoothed, its edges ramp over
// two pixels; unsmoothed, it is made of 2 × 2 blocks.

#include <QDir>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

namespace {

class HiDpiScreenshotTest : public ::testing::Test {
protected:
    // Screens of the same logical size at both scales (the first window
    // opens maximised), so that the parts are laid out alike.
    QString screenFile(int scale)
    {
        const QString path = dir.filePath(QStringLiteral("screen-%1.json").arg(scale));
        QFile screen(path);
        EXPECT_TRUE(screen.open(QIODevice::WriteOnly));
        screen.write(QStringLiteral(R"({"screens": [{"name": "wide", "x": 0, "y": 0, "width": %1, "height": %2,
                                       "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 1}]})")
                         .arg(1600 * scale)
                         .arg(1000 * scale)
                         .toUtf8());
        return path;
    }

    // The window part of that object name, rendered at the scale factor.
    QImage part(const QString& name, int scale, int expectedExit = 0)
    {
        const QString output = dir.filePath(QStringLiteral("%1-%2.png").arg(name).arg(scale));
        QProcess editor;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"),
                           QStringLiteral("offscreen:configfile=") + screenFile(scale));
        environment.insert(QStringLiteral("QT_SCALE_FACTOR"), QString::number(scale));
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), dir.filePath(QStringLiteral("config")));
        editor.setProcessEnvironment(environment);
        editor.start(QStringLiteral(VELLORAN_EXECUTABLE),
                     {QStringLiteral("--screenshot"), output, QStringLiteral("--part"), name, demo});
        if (!editor.waitForFinished(60000)) {
            editor.kill();
            editor.waitForFinished();
        }
        errors = QString::fromLocal8Bit(editor.readAllStandardError());
        EXPECT_EQ(editor.exitCode(), expectedExit) << errors.toStdString();
        return QImage(output).convertToFormat(QImage::Format_Grayscale8);
    }

    QTemporaryDir dir;
    QString errors;
    const QString demo = QStringLiteral(VELLORAN_SOURCE_DIR "/resources/demo/Demo.composition");
};

int grey(const QImage& image, int x, int y) { return image.constScanLine(y)[x]; }

int mostCommonInRow(const QImage& image, int y)
{
    std::map<int, int> counts;
    for (int x = 0; x < image.width(); ++x) ++counts[grey(image, x, y)];
    return std::max_element(counts.begin(), counts.end(), [](auto& a, auto& b) { return a.second < b.second; })->first;
}

struct TickRow {
    int ticks = 0;   // narrow runs that stand out from the ruler's ground
    int clean = 0;   // of those, runs whose every pixel is fully the tick's colour
};

// Ticks are the narrow runs (at most 4 pixels) off the row's ground colour;
// labels and the playhead are wider and left out.
TickRow ticksInRow(const QImage& image, int y)
{
    const int ground = mostCommonInRow(image, y);
    int ink = ground;
    for (int x = 0; x < image.width(); ++x)
        if (std::abs(grey(image, x, y) - ground) > std::abs(ink - ground)) ink = grey(image, x, y);
    const int contrast = std::abs(ink - ground);
    TickRow row;
    if (contrast < 40) return row;
    for (int x = 0; x < image.width();) {
        if (std::abs(grey(image, x, y) - ground) * 6 <= contrast) {
            ++x;
            continue;
        }
        int end = x;
        bool full = true;
        while (end < image.width() && std::abs(grey(image, end, y) - ground) * 6 > contrast) {
            full = full && std::abs(grey(image, end, y) - ink) * 6 <= contrast;
            ++end;
        }
        if (end - x <= 4) {
            ++row.ticks;
            if (full) ++row.clean;
        }
        x = end;
    }
    return row;
}

// The row of the ruler's lower part with the most ticks.
TickRow bestTickRow(const QImage& image)
{
    TickRow best;
    for (int y = image.height() / 2; y < image.height() - 2; ++y) {
        const TickRow row = ticksInRow(image, y);
        if (row.ticks > best.ticks) best = row;
    }
    return best;
}

// The share of 2 × 2 blocks that are not one colour, of those that are not
// plain ground, on the grid of blocks where it is lowest: a 1× picture
// doubled is all plain blocks on one of them.
double finerThanBlocks(const QImage& image, const QRect& area)
{
    const int ground = grey(image, area.left(), area.top());
    double lowest = 1.0;
    for (int dy : {0, 1})
        for (int dx : {0, 1}) {
            int drawn = 0, detailed = 0;
            for (int y = area.top() + dy; y + 1 <= area.bottom(); y += 2)
                for (int x = area.left() + dx; x + 1 <= area.right(); x += 2) {
                    const int a = grey(image, x, y), b = grey(image, x + 1, y), c = grey(image, x, y + 1),
                              d = grey(image, x + 1, y + 1);
                    if (a == ground && b == ground && c == ground && d == ground) continue;
                    ++drawn;
                    if (std::max({a, b, c, d}) - std::min({a, b, c, d}) > 8) ++detailed;
                }
            lowest = std::min(lowest, drawn == 0 ? 0.0 : double(detailed) / drawn);
        }
    return lowest;
}

// The steepest step between neighbours, averaged over the rows.
double steepestSteps(const QImage& image, const QRect& area)
{
    double sum = 0;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        int steepest = 0;
        for (int x = area.left(); x < area.right(); ++x)
            steepest = std::max(steepest, std::abs(grey(image, x + 1, y) - grey(image, x, y)));
        sum += steepest;
    }
    return sum / area.height();
}

TEST_F(HiDpiScreenshotTest, RulerTicksAreWholeDevicePixels)
{
    for (const QString& ruler : {QStringLiteral("HorizontalRuler"), QStringLiteral("TimeRuler")}) {
        const QImage single = part(ruler, 1);
        const QImage doubled = part(ruler, 2);
        ASSERT_FALSE(single.isNull() || doubled.isNull()) << ruler.toStdString();
        // Text measures a little differently at 2×, so the layout may move a few pixels.
        EXPECT_NEAR(double(doubled.width()) / single.width(), 2.0, 0.05) << ruler.toStdString() << ": drawn at the screen's density";
        EXPECT_NEAR(double(doubled.height()) / single.height(), 2.0, 0.1) << ruler.toStdString();
        const TickRow ticks = bestTickRow(doubled);
        EXPECT_GE(ticks.ticks, 5) << ruler.toStdString();
        EXPECT_GE(ticks.clean, ticks.ticks * 9 / 10) << ruler.toStdString() << ": " << ticks.ticks - ticks.clean
                                                     << " ticks have half-covered pixels at their edges";
    }
}

TEST_F(HiDpiScreenshotTest, IconsAreDrawnAtTheScreensDensity)
{
    const QImage single = part(QStringLiteral("Preview"), 1);
    const QImage doubled = part(QStringLiteral("Preview"), 2);
    ASSERT_FALSE(single.isNull() || doubled.isNull());
    // The icon sits above the button's caption.
    const QRect icon1(0, 0, single.width(), single.height() * 6 / 10);
    const QRect icon2(0, 0, doubled.width(), doubled.height() * 6 / 10);
    EXPECT_GT(finerThanBlocks(doubled, icon2), 0.15) << "not a 1× picture doubled";
    EXPECT_GT(steepestSteps(doubled, icon2), 0.7 * steepestSteps(single, icon1)) << "edges as steep as at 1×, not smoothed";
}

TEST_F(HiDpiScreenshotTest, APartTheWindowDoesNotHaveIsRefusedByName)
{
    EXPECT_TRUE(part(QStringLiteral("NoSuchPart"), 1, 1).isNull());
    EXPECT_TRUE(errors.contains(QStringLiteral("no part named \"NoSuchPart\""))) << errors.toStdString();
}

}  // namespace
