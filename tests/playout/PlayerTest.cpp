// The headless player: stepping, stop frames, triggers, reload, keyed
// pictures and the thumbnail it must agree with.

#include "PlayoutFixture.h"

#include "document/CompositionExport.h"
#include "document/Thumbnail.h"
#include "runtime/Renderer.h"

using playout::Player;
using playout::PlayerOptions;

namespace {
const QSize kSmall(320, 180);  // a quarter of 720p: quick, and boxes stay whole pixels

bool triggerInput(const Player& player)
{
    return player.renderer()->inputValue(document::CompositionExport::triggerKey()).toBool();
}
}  // namespace

class PlayerTest : public PlayoutFixture {
protected:
    void renderSteps(Player& player, qint64 through)
    {
        while (player.nextStep() <= through) player.renderStep(player.nextStep());
    }
};

TEST_F(PlayerTest, StatusFollowsStopFramesTriggersAndTheEnd)
{
    addBox(QRectF(100, 100, 200, 100));
    composition().addStopFrame(1.0, QStringLiteral("In"));
    composition().addStopFrame(2.0, QStringLiteral("Out"));
    Player player;
    load(player, PlayerOptions{true, kSmall});
    QStringList events;
    QObject::connect(&player, &Player::waitingForTriggerChanged, [&](bool w) { events << (w ? "waiting" : "released"); });
    QObject::connect(&player, &Player::activeChanged, [&](bool a) { events << (a ? "active" : "finished"); });

    EXPECT_TRUE(player.isActive());
    EXPECT_FALSE(player.isWaitingForTrigger());
    qint64 heldSince = -1;
    for (qint64 step = 0; step < 120; ++step) {
        player.renderStep(step);
        // The operator lets each stop frame stand for five steps.
        if (player.isWaitingForTrigger() && heldSince < 0) heldSince = step;
        if (heldSince >= 0 && step - heldSince == 5) {
            EXPECT_TRUE(player.sendTrigger());
            heldSince = -1;
        }
    }
    EXPECT_EQ(events, QStringList({"waiting", "released", "waiting", "released", "finished"}));
    EXPECT_FALSE(player.isActive());
}

TEST_F(PlayerTest, TheTriggerPulseLastsATenthOfASecond)
{
    addBox(QRectF(100, 100, 200, 100));
    composition().addStopFrame(1.0, QString());
    Player player;
    load(player, PlayerOptions{true, kSmall});
    renderSteps(player, 25);  // 1.00 s, 25 frames a second
    ASSERT_TRUE(player.isWaitingForTrigger());
    ASSERT_TRUE(player.sendTrigger());
    EXPECT_TRUE(triggerInput(player));
    player.renderStep(26);  // 1.04: released by the rising edge
    EXPECT_FALSE(player.isWaitingForTrigger());
    player.renderStep(27);  // 1.08: the pulse still holds
    EXPECT_TRUE(triggerInput(player));
    player.renderStep(28);  // 1.12: past 1.10
    EXPECT_FALSE(triggerInput(player));
}

TEST_F(PlayerTest, ReleasingSetsTheTriggerFalseEvenWhenNotWaiting)
{
    addBox(QRectF(100, 100, 200, 100));
    composition().addStopFrame(1.0, QString());
    Player player;
    load(player, PlayerOptions{true, kSmall});
    renderSteps(player, 10);
    EXPECT_FALSE(player.setTrigger()) << "nothing waits before the stop frame";
    EXPECT_FALSE(triggerInput(player));

    renderSteps(player, 25);
    ASSERT_TRUE(player.setTrigger());  // Space pressed and held
    renderSteps(player, 30);
    ASSERT_FALSE(player.isWaitingForTrigger());
    EXPECT_TRUE(triggerInput(player)) << "held while the key is down";
    player.releaseTrigger();  // Space released after the template moved on
    EXPECT_FALSE(triggerInput(player));
}

TEST_F(PlayerTest, ATapQuickerThanAStepStillReleasesTheStopFrame)
{
    addBox(QRectF(100, 100, 200, 100));
    composition().addStopFrame(1.0, QString());
    Player player;
    load(player, PlayerOptions{true, kSmall});
    renderSteps(player, 25);
    ASSERT_TRUE(player.setTrigger());  // pressed and released between two steps
    player.releaseTrigger();
    EXPECT_TRUE(triggerInput(player)) << "held until a step has seen it";
    player.renderStep(26);
    EXPECT_FALSE(triggerInput(player));
    EXPECT_FALSE(player.isWaitingForTrigger()) << "released";
}

TEST_F(PlayerTest, ATemplateWithoutStopFramesIgnoresTriggers)
{
    addBox(QRectF(100, 100, 200, 100));
    Player player;
    load(player, PlayerOptions{true, kSmall});
    EXPECT_FALSE(player.hasTrigger());
    EXPECT_FALSE(player.renderer()->composition().output(document::CompositionExport::waitingForTriggerKey()));
    renderSteps(player, 30);
    EXPECT_FALSE(player.isWaitingForTrigger());
    EXPECT_FALSE(player.setTrigger());
    EXPECT_FALSE(player.sendTrigger());
    player.releaseTrigger();
    EXPECT_FALSE(player.renderer()->inputValue(document::CompositionExport::triggerKey()).isValid());
    renderSteps(player, 80);
    EXPECT_FALSE(player.isActive()) << "and plays through to its end";
}

TEST_F(PlayerTest, TwoStopFramesHoldIdenticalFramesUntilEachTrigger)
{
    addMovingBox(1000, 3.0);
    composition().addStopFrame(1.0, QString());
    composition().addStopFrame(2.0, QString());
    Player player;
    load(player, PlayerOptions{true, kSmall});
    for (int stop = 1; stop <= 2; ++stop) {
        while (!player.isWaitingForTrigger() && player.nextStep() < 200) player.renderStep(player.nextStep());
        ASSERT_TRUE(player.isWaitingForTrigger()) << "stop frame " << stop;
        const QImage held = player.frame().copy();
        for (int i = 1; i <= 10; ++i) {
            player.renderStep(player.nextStep());
            EXPECT_EQ(player.frame(), held) << "step " << player.nextStep() - 1;
        }
        EXPECT_TRUE(player.sendTrigger());
        // The release shows the stop frame once more; the time runs on
        // from there.
        player.renderStep(player.nextStep());
        EXPECT_FALSE(player.isWaitingForTrigger());
        player.renderStep(player.nextStep());
        EXPECT_GT(redFrom(player.frame(), 140), redFrom(held, 140)) << "moves on after the trigger";
    }
}

TEST_F(PlayerTest, ReloadStartsFromTheBeginning)
{
    addMovingBox(1000, 3.0);
    composition().addStopFrame(1.0, QString());
    Player player;
    load(player, PlayerOptions{true, kSmall});
    player.renderStep(0);
    const QImage first = player.frame().copy();
    renderSteps(player, 30);
    ASSERT_TRUE(player.sendTrigger());
    renderSteps(player, 50);
    ASSERT_NE(player.frame(), first);

    QStringList events;
    QObject::connect(&player, &Player::waitingForTriggerChanged, [&](bool w) { events << (w ? "waiting" : "released"); });
    player.reload();
    EXPECT_EQ(player.nextStep(), 0);
    EXPECT_FALSE(triggerInput(player));
    player.renderStep(0);
    EXPECT_EQ(player.frame(), first);
    renderSteps(player, 26);
    EXPECT_TRUE(player.isWaitingForTrigger()) << "the stop frame holds again";
    EXPECT_EQ(events, QStringList({"waiting"}));
}

TEST_F(PlayerTest, AnUnsavedDocumentPlaysWithoutAFileLocation)
{
    addBox(QRectF(100, 100, 200, 100));
    const QString key = model::QuartzComponent::documentURLKey();
    Player player;
    load(player, PlayerOptions{true, kSmall});
    EXPECT_FALSE(player.renderer()->userInfo().contains(key));
    player.renderStep(0);
    EXPECT_GE(redFrom(player.frame(), 150), 0) << "and still plays";

    const QString package = dir.filePath(QStringLiteral("Saved.composition"));
    ASSERT_TRUE(document->saveAs(package, nullptr));
    load(player, PlayerOptions{true, kSmall});
    EXPECT_EQ(player.renderer()->userInfo().value(key).toUrl(),
              QUrl::fromLocalFile(QDir(package).filePath(QStringLiteral("Composition.qtz"))));
}

TEST_F(PlayerTest, KeyedPlayoutLeavesWhatIsNotDrawnTransparent)
{
    composition().setBackgroundMode(model::kBackgroundColor);
    composition().setBackgroundColor(QColor(0, 0, 255));
    addMovingBox(1000, 3.0);
    Player keyed;
    keyed.load(exportTemplate(false), PlayerOptions{false, kSmall});
    Player withBackground;
    withBackground.load(exportTemplate(true), PlayerOptions{true, kSmall});
    for (qint64 step = 0; step < 20; ++step) {
        keyed.renderStep(step);
        withBackground.renderStep(step);
    }
    // Without the clear the moving box would leave a trail on the left.
    EXPECT_EQ(keyed.frame().pixelColor(2, 150).alpha(), 0);
    EXPECT_EQ(keyed.frame().pixelColor(300, 10).alpha(), 0);
    EXPECT_EQ(keyed.frame().pixelColor(redFrom(keyed.frame(), 150) + 5, 150), QColor(Qt::red));
    EXPECT_EQ(withBackground.frame().pixelColor(300, 10), QColor(0, 0, 255));
    EXPECT_EQ(redFrom(keyed.frame(), 150), redFrom(withBackground.frame(), 150));
}

TEST_F(PlayerTest, TheFrameAtThePosterTimeEqualsTheThumbnail)
{
    useMode(QStringLiteral("1080p25 RGBA"));
    composition().setBackgroundMode(model::kBackgroundColor);
    composition().setBackgroundColor(QColor(30, 40, 60));
    // At rest before the stop frame, and one that appears only after it.
    addMovingBox(600, 0.8, 500);
    model::QuartzComponent* late = addBox(QRectF(100, 100, 300, 200), QStringLiteral("Late"));
    late->setStartTime(1.5);
    composition().addStopFrame(1.0, QString());
    composition().setPosterFrameTimepoint(2.0);
    ASSERT_TRUE(document->saveAs(dir.filePath(QStringLiteral("Poster.composition")), nullptr));

    const playout::PlayoutTemplate played = exportTemplate(true);
    Player player;
    player.load(played, PlayerOptions{true, {}, true});
    player.playTo(composition().posterFrameTimepoint());
    const QImage thumbnail = document::renderThumbnail(played.composition, played.size, composition().posterFrameTimepoint(),
                                                       played.compositionFile);
    ASSERT_EQ(player.stepImage().size(), thumbnail.size());
    EXPECT_EQ(player.stepImage().convertToFormat(QImage::Format_ARGB32), thumbnail.convertToFormat(QImage::Format_ARGB32));
    EXPECT_GE(redFrom(thumbnail, 1080 - 200), 0) << "the late box shows: the stop frame was passed";
}
