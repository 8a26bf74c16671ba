// Rendering the played template to files: frame counts, alpha, movies read
// back with FFmpeg, woven fields, trigger times and ranges.

#include "MovieProbe.h"
#include "PlayoutFixture.h"

#include "playout/MovieWriter.h"
#include "playout/PlayoutRender.h"
#include "playout/PngSequenceWriter.h"

#include <QFile>

using playout::Player;
using playout::PlayerOptions;
using playout::PlayoutRender;
using playout::RenderRange;

namespace {

// Keeps copies of what it is given.
class KeepingSink : public playout::FrameSink {
public:
    bool open(const playout::FrameFormat& f, QString*) override
    {
        format = f;
        return true;
    }
    bool write(const QImage& frame, qint64 index, QString*) override
    {
        EXPECT_EQ(index, qint64(frames.size()));
        frames.push_back(frame.copy());
        return true;
    }
    bool close(QString*) override { return closed = true; }

    playout::FrameFormat format;
    std::vector<QImage> frames;
    bool closed = false;
};

}  // namespace

class PlayoutRenderTest : public PlayoutFixture {
protected:
    // Keyed, unattended unless `range` gives trigger times.
    playout::RenderOutcome render(playout::FrameSink& sink, RenderRange range = {}, QSize size = QSize(160, 90))
    {
        Player player;
        player.load(exportTemplate(false), PlayerOptions{false, size, !range.triggerTimes});
        return PlayoutRender::run(player, range, sink);
    }
};

TEST_F(PlayoutRenderTest, EveryFrameOfTheDurationIsWritten)
{
    struct Row {
        const char* mode;
        double duration;
        qint64 frames;
    };
    for (const Row& row : {Row{"720p25 RGBA", 2, 50}, Row{"720p59.94 RGBA", 2, 120}, Row{"1080i25 RGBA", 1.5, 38},
                           Row{"480i29.97 RGBA", 1, 30}}) {
        useMode(QString::fromLatin1(row.mode));
        composition().setDuration(row.duration);
        addBox(QRectF(100, 100, 200, 100));
        KeepingSink sink;
        const playout::RenderOutcome outcome = render(sink, {}, QSize(32, 18));
        EXPECT_TRUE(outcome.ok) << row.mode << outcome.error.toStdString();
        EXPECT_EQ(qint64(sink.frames.size()), row.frames) << row.mode;
        EXPECT_EQ(sink.format.frameCount, row.frames) << row.mode;
        EXPECT_TRUE(sink.closed);
    }
}

TEST_F(PlayoutRenderTest, PngFilesHaveAlphaWhereNothingIsDrawn)
{
    composition().setDuration(1);
    composition().setBackgroundMode(model::kBackgroundColor);  // not played: keyed
    addBox(QRectF(320, 180, 640, 360));
    const QString folder = dir.filePath(QStringLiteral("frames"));
    playout::PngSequenceWriter sink(folder);
    const playout::RenderOutcome outcome = render(sink, {}, QSize(320, 180));
    ASSERT_TRUE(outcome.ok) << outcome.error.toStdString();
    EXPECT_EQ(QDir(folder).entryList({QStringLiteral("*.png")}).size(), 25);
    const QImage frame(QDir(folder).filePath(playout::PngSequenceWriter::fileName(24)));
    ASSERT_FALSE(frame.isNull());
    EXPECT_TRUE(frame.hasAlphaChannel());
    EXPECT_EQ(frame.pixelColor(5, 5).alpha(), 0);
    EXPECT_EQ(frame.pixelColor(160, 90), QColor(Qt::red));
}

TEST_F(PlayoutRenderTest, ProResMoviesCarryAlphaAtTheModesRate)
{
    composition().setDuration(1);
    // Saturated, so that a wrong colour matrix would show.
    const QColor orange(255, 140, 0);
    addBox(QRectF(320, 180, 640, 360))->attributeForKey(QStringLiteral("Color"))->setCurrentValue(orange);
    const QString path = dir.filePath(QStringLiteral("keyed.mov"));
    playout::MovieWriter sink(path, playout::MovieCodec::ProRes4444);
    // At an HD size, whose matrix (BT.709) is not the one a player assumes
    // for a picture that does not say.
    const playout::RenderOutcome outcome = render(sink, {}, QSize(1280, 720));
    ASSERT_TRUE(outcome.ok) << outcome.error.toStdString();

    const MovieFacts movie = probeMovie(path, 10);
    ASSERT_TRUE(movie.opened);
    EXPECT_EQ(movie.codec, QStringLiteral("prores"));
    EXPECT_EQ(movie.codecTag, QStringLiteral("ap4h")) << "ProRes 4444";
    EXPECT_TRUE(movie.alpha) << movie.pixelFormat.toStdString();
    EXPECT_EQ(movie.rateNumerator, 25);
    EXPECT_EQ(movie.rateDenominator, 1);
    EXPECT_EQ(movie.frames, 25);
    EXPECT_NE(movie.fieldOrder, AV_FIELD_TT);
    EXPECT_NE(movie.fieldOrder, AV_FIELD_BB);
    ASSERT_FALSE(movie.decoded.isNull());
    EXPECT_EQ(movie.decoded.pixelColor(5, 5).alpha(), 0);
    const QColor box = movie.decoded.pixelColor(640, 360);
    EXPECT_EQ(box.alpha(), 255);
    EXPECT_NEAR(box.red(), orange.red(), 3);
    EXPECT_NEAR(box.green(), orange.green(), 3);
    EXPECT_NEAR(box.blue(), orange.blue(), 3);
}

TEST_F(PlayoutRenderTest, AnimationMoviesAreExactAndInterlacedOnesKeepTheirFieldOrder)
{
    useMode(QStringLiteral("480i29.97 RGBA"));
    composition().setDuration(1);
    addBox(QRectF(180, 120, 360, 240));
    const QString path = dir.filePath(QStringLiteral("exact.mov"));
    playout::MovieWriter sink(path, playout::MovieCodec::Animation);
    ASSERT_TRUE(render(sink, {}, QSize(180, 120)).ok);

    const MovieFacts movie = probeMovie(path, 3);
    EXPECT_EQ(movie.codec, QStringLiteral("qtrle"));
    EXPECT_EQ(movie.pixelFormat, QStringLiteral("argb"));
    EXPECT_TRUE(movie.alpha);
    EXPECT_EQ(movie.rateNumerator, 30000);
    EXPECT_EQ(movie.rateDenominator, 1001);
    EXPECT_EQ(movie.frames, 30);
    EXPECT_EQ(movie.fieldOrder, AV_FIELD_BB);
    EXPECT_EQ(movie.decoded.pixelColor(2, 2).alpha(), 0);
    EXPECT_EQ(movie.decoded.pixelColor(90, 60), QColor(Qt::red));

    useMode(QStringLiteral("1080i25 RGBA"));
    composition().setDuration(0.2);
    addBox(QRectF(100, 100, 200, 100));
    const QString hd = dir.filePath(QStringLiteral("hd.mov"));
    playout::MovieWriter prores(hd, playout::MovieCodec::ProRes4444);
    ASSERT_TRUE(render(prores, {}, QSize(192, 108)).ok);
    EXPECT_EQ(probeMovie(hd).fieldOrder, AV_FIELD_TT);
}

TEST_F(PlayoutRenderTest, A50iFrameWeavesTwoMomentsLineByLine)
{
    useMode(QStringLiteral("576i25 RGBA"));
    composition().setDuration(1);
    addMovingBox(720, 1.0, 200);
    KeepingSink interlaced;
    ASSERT_TRUE(render(interlaced, {}, QSize(720, 576)).ok);
    const QImage& woven = interlaced.frames[10];
    const int row = 576 - 250;  // inside the box; even, so the upper field
    ASSERT_EQ(row % 2, 0);
    const int early = redFrom(woven, row), late = redFrom(woven, row + 1);
    EXPECT_GT(late, early + 5) << "the lower field shows the box a field later";
    EXPECT_EQ(redFrom(woven, row + 2), early);
    // Each field is the whole picture at its own time: 0.40 s and 0.42 s.
    Player player;
    player.load(exportTemplate(false), PlayerOptions{false, QSize(720, 576), true});
    player.renderStep(20);
    EXPECT_EQ(redFrom(player.stepImage(), row), early);
    EXPECT_EQ(redFrom(player.stepImage(), row + 1), early);
    player.renderStep(21);
    EXPECT_EQ(redFrom(player.stepImage(), row + 1), late);

    useMode(QStringLiteral("720p50 RGBA"));
    composition().setDuration(1);
    addMovingBox(1280, 1.0, 200);
    KeepingSink progressive;
    ASSERT_TRUE(render(progressive, {}, QSize(1280, 720)).ok);
    const QImage& whole = progressive.frames[10];
    EXPECT_EQ(redFrom(whole, 720 - 250), redFrom(whole, 720 - 249)) << "a progressive frame is one moment";
}

TEST_F(PlayoutRenderTest, TriggerTimesReplaceThePulseAtEveryStopFrame)
{
    composition().setDuration(2);
    addMovingBox(1000, 2.0);
    composition().addStopFrame(0.5, QString());
    const int row = 720 / 4 - 35;
    auto xAt = [&](const KeepingSink& sink, double seconds) { return redFrom(sink.frames[std::size_t(seconds * 25)], row); };

    KeepingSink unattended;
    ASSERT_TRUE(render(unattended, {}, QSize(320, 180)).ok);
    EXPECT_GT(xAt(unattended, 1.0), xAt(unattended, 0.6)) << "released after one step";

    KeepingSink never;
    RenderRange none;
    none.triggerTimes.emplace();
    ASSERT_TRUE(render(never, none, QSize(320, 180)).ok);
    EXPECT_EQ(never.frames[20], never.frames[49]) << "held to the end";

    KeepingSink atOne;
    RenderRange one;
    one.triggerTimes = std::vector<double>{0.2, 1.0};
    const playout::RenderOutcome outcome = render(atOne, one, QSize(320, 180));
    ASSERT_TRUE(outcome.ok);
    EXPECT_EQ(outcome.warnings.size(), 1) << "0.2 s comes before the stop frame";
    EXPECT_EQ(atOne.frames[13], atOne.frames[25]);
    EXPECT_GT(xAt(atOne, 1.2), xAt(atOne, 1.0));
    // Unattended, the hold lasts from 0.5 s to the release at 0.56 s; at
    // 1.0 s, to the release at 1.04 s: the same pictures 0.48 s later.
    EXPECT_EQ(xAt(atOne, 1.12), xAt(unattended, 0.64));
}

TEST_F(PlayoutRenderTest, ARangeIsPlayedFromTheBeginningButWrittenOnlyInside)
{
    composition().setDuration(2);
    addMovingBox(1000, 2.0);
    composition().addStopFrame(0.5, QString());
    KeepingSink whole, part;
    ASSERT_TRUE(render(whole).ok);
    ASSERT_TRUE(render(part, RenderRange{1.0, 1.5, std::nullopt}).ok);
    ASSERT_EQ(part.frames.size(), 13u);
    EXPECT_EQ(part.frames.front(), whole.frames[25]);
    EXPECT_EQ(part.frames.back(), whole.frames[37]);
}

TEST_F(PlayoutRenderTest, CancellingAndFailingStopTheRender)
{
    composition().setDuration(2);
    addBox(QRectF(100, 100, 200, 100));
    Player player;
    player.load(exportTemplate(false), PlayerOptions{false, QSize(32, 18), true});
    KeepingSink sink;
    const playout::RenderOutcome cancelled =
        PlayoutRender::run(player, {}, sink, [](qint64 done, qint64) { return done < 5; });
    EXPECT_TRUE(cancelled.cancelled);
    EXPECT_FALSE(cancelled.ok);
    EXPECT_EQ(sink.frames.size(), 5u);
    EXPECT_TRUE(sink.closed);

    QFile blocker(dir.filePath(QStringLiteral("file")));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    playout::PngSequenceWriter png(dir.filePath(QStringLiteral("file/frames")));
    playout::RenderOutcome failed = PlayoutRender::run(player, {}, png);
    EXPECT_FALSE(failed.ok);
    EXPECT_FALSE(failed.error.isEmpty());

    playout::MovieWriter movie(dir.filePath(QStringLiteral("missing/folder/out.mov")), playout::MovieCodec::ProRes4444);
    failed = PlayoutRender::run(player, {}, movie);
    EXPECT_FALSE(failed.ok);
    EXPECT_TRUE(failed.error.contains(QStringLiteral("out.mov"))) << failed.error.toStdString();
}
