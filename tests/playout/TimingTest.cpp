// Video timing, the wall clock of on-screen playback, weaving and the
// slideshow order: the pure parts of the player.

#include "model/VideoModeCatalogue.h"
#include "model/VideoResolution.h"
#include "playout/FieldWeaving.h"
#include "playout/PlaybackClock.h"
#include "playout/Slideshow.h"
#include "playout/VideoTiming.h"

#include <QColor>
#include <QImage>

#include <gtest/gtest.h>

using playout::FieldOrder;
using playout::VideoTiming;

TEST(VideoTiming, ModesGiveTheirRatesAndFieldOrders)
{
    struct Row {
        const char* mode;
        double stepsPerSecond;
        FieldOrder order;
    };
    const Row rows[] = {
        {"1080i25 RGBA", 50, FieldOrder::UpperFirst},     {"576i25 RGBA", 50, FieldOrder::UpperFirst},
        {"480i29.97 RGBA", 60000.0 / 1001, FieldOrder::LowerFirst}, {"1080i29.97 RGBA", 60000.0 / 1001, FieldOrder::UpperFirst},
        {"720p59.94 RGBA", 60000.0 / 1001, FieldOrder::Progressive}, {"1080p23.98 RGBA", 24000.0 / 1001, FieldOrder::Progressive},
        {"2160p50 RGBA", 50, FieldOrder::Progressive},
    };
    for (const Row& row : rows) {
        const VideoTiming timing = VideoTiming::forResolution(model::VideoResolution(QString::fromLatin1(row.mode)));
        EXPECT_DOUBLE_EQ(timing.stepsPerSecond(), row.stepsPerSecond) << row.mode;
        EXPECT_EQ(timing.fieldOrder(), row.order) << row.mode;
    }
    const VideoTiming unknown = VideoTiming::forResolution(model::VideoResolution(QStringLiteral("no such mode")));
    EXPECT_DOUBLE_EQ(unknown.framesPerSecond(), 25);
    EXPECT_FALSE(unknown.interlaced());
}

TEST(VideoTiming, StepsAreExactFractionsAndCountFromTheFrames)
{
    const VideoTiming i25(25, 1, FieldOrder::UpperFirst);
    EXPECT_EQ(i25.stepTime(3), 0.06);
    EXPECT_EQ(i25.frameTime(3), 0.12);
    EXPECT_EQ(i25.frameCount(0, 12), 300);
    EXPECT_EQ(i25.stepAtOrBefore(3.04), 152);
    EXPECT_EQ(i25.stepAtOrBefore(3.039), 151);

    const VideoTiming p2997(30000, 1001, FieldOrder::Progressive);
    EXPECT_DOUBLE_EQ(p2997.stepTime(30000), 1001.0);
    EXPECT_EQ(p2997.frameCount(0, 12), 360) << "a started frame counts: 359.64 rounds up";
    EXPECT_EQ(p2997.frameCount(0, 1001.0 / 30000 * 10), 10);

    const VideoTiming p25(25, 1, FieldOrder::Progressive);
    EXPECT_EQ(p25.frameCount(1.0, 1.5), 13);  // frames 25 to 37
    EXPECT_EQ(p25.firstFrameAtOrAfter(1.0), 25);
    EXPECT_EQ(p25.frameCount(2, 1), 0);
}

TEST(VideoTiming, FieldParityFollowsTheFieldOrder)
{
    const VideoTiming upper(25, 1, FieldOrder::UpperFirst), lower(30000, 1001, FieldOrder::LowerFirst);
    EXPECT_EQ(upper.fieldParity(0), 0);
    EXPECT_EQ(upper.fieldParity(1), 1);
    EXPECT_EQ(lower.fieldParity(0), 1);
    EXPECT_EQ(lower.fieldParity(7), 0);
    EXPECT_EQ(VideoTiming(25, 1, FieldOrder::Progressive).stepsPerFrame(), 1);
}

TEST(FieldWeaving, EachFieldFillsEveryOtherLine)
{
    QImage first(8, 6, QImage::Format_ARGB32_Premultiplied), second = first;
    first.fill(Qt::red);
    second.fill(Qt::blue);
    QImage frame;
    playout::weaveField(first, frame, 0);
    playout::weaveField(second, frame, 1);
    ASSERT_EQ(frame.size(), first.size());
    for (int y = 0; y < 6; ++y)
        EXPECT_EQ(frame.pixelColor(4, y), y % 2 ? QColor(Qt::blue) : QColor(Qt::red)) << y;
}

TEST(PlaybackClock, TheDueStepComesFromTheAnchorAndSkippedStepsAreDropped)
{
    qint64 now = 5'000'000'000;
    playout::PlaybackClock clock([&] { return now; });
    clock.start(50);
    EXPECT_EQ(clock.dueStep(), 0);
    EXPECT_EQ(clock.nanosecondsUntil(1), 20'000'000);
    now += 19'999'999;
    EXPECT_EQ(clock.dueStep(), 0);
    now += 1;
    EXPECT_EQ(clock.dueStep(), 1);
    EXPECT_EQ(clock.nanosecondsUntil(1), 0);

    clock.shown(0);
    clock.shown(1);
    now += 60'000'000;  // a slow step: 2 and 3 came and went
    EXPECT_EQ(clock.dueStep(), 4);
    clock.shown(clock.dueStep());
    clock.shown(4);  // twice is once
    EXPECT_EQ(clock.shownCount(), 3);
    EXPECT_EQ(clock.dropped(), 2);

    clock.start(50);
    EXPECT_EQ(clock.dueStep(), 0) << "a restart anchors again";
    EXPECT_EQ(clock.dropped(), 0);
}

TEST(Slideshow, LoopsThroughItsDocumentsAndForgetsClosedOnes)
{
    using Doc = playout::Slideshow::Document;
    const int a = 0, b = 0, c = 0;
    const Doc A = reinterpret_cast<Doc>(&a), B = reinterpret_cast<Doc>(&b), C = reinterpret_cast<Doc>(&c);

    playout::Slideshow one;
    one.start({A});
    EXPECT_EQ(one.current(), A);
    EXPECT_EQ(one.next(), A) << "a show of one replays it";
    EXPECT_EQ(one.next(), A);

    playout::Slideshow show;
    show.start({A, B, C});
    EXPECT_EQ(show.next(), B);
    EXPECT_EQ(show.next(), C);
    EXPECT_EQ(show.next(), A);
    show.next();  // B
    show.remove(B);
    EXPECT_EQ(show.next(), C) << "the one after the closed document";
    show.remove(A);
    EXPECT_EQ(show.next(), C);
    show.remove(C);
    EXPECT_FALSE(show.isRunning());
    EXPECT_EQ(show.next(), nullptr);
}
