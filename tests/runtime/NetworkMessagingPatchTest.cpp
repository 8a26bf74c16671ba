// Network Broadcaster and Receiver, on the loopback address only.

#include "CompositionBuilder.h"

#include "runtime/patches/UdpChannel.h"

#include <QElapsedTimer>
#include <QThread>
#include <QUdpSocket>

#include <gtest/gtest.h>

using test::Node;

namespace {

// A port nobody listens on right now.
int freePort()
{
    QUdpSocket probe;
    if (!probe.bind(QHostAddress::LocalHost, 0)) return 0;
    return probe.localPort();
}

TEST(NetworkMessage, TextTravelsAsBigEndianUtf32AndPlainUtf8IsUnderstood)
{
    const QString text = QStringLiteral("Apple \u00e9\U0001F600");
    const QByteArray wire = runtime::encodeNetworkMessage(text);
    ASSERT_EQ(wire.size(), 4 * 8);
    EXPECT_EQ(wire.left(8), QByteArray("\0\0\0A\0\0\0p", 8));
    EXPECT_EQ(wire.mid(7 * 4), QByteArray("\0\x01\xF6\x00", 4));  // one unit, not a surrogate pair
    EXPECT_EQ(runtime::decodeNetworkMessage(wire), text);
    // "abcd" is four bytes, but not a character in UTF-32: read as UTF-8.
    EXPECT_EQ(runtime::decodeNetworkMessage("abcd"), "abcd");
    EXPECT_EQ(runtime::decodeNetworkMessage("caf\xc3\xa9"), QStringLiteral("caf\u00e9"));
    EXPECT_EQ(runtime::decodeNetworkMessage(QByteArray()), QString());
}

struct Pair {
    std::unique_ptr<runtime::Renderer> broadcaster;
    std::unique_ptr<runtime::Renderer> receiver;
};

Pair loopbackPair(int port)
{
    Node sender("QCNetworkBroadcaster", "NetworkBroadcaster_1");
    sender.input("inputAddress", "127.0.0.1").input("inputPort", port);
    Node s = test::root();
    s.child(sender).publishInput("Data", "NetworkBroadcaster_1", "inputData");
    Node listener("QCNetworkReceiver", "NetworkReceiver_1");
    listener.input("inputAddress", "127.0.0.1").input("inputPort", port);
    Node r = test::root();
    r.child(listener).publishOutput("Data", "NetworkReceiver_1", "outputData").publishOutput("Signal", "NetworkReceiver_1", "outputSignal");
    return {std::make_unique<runtime::Renderer>(test::load(s), QSize(8, 8)),
            std::make_unique<runtime::Renderer>(test::load(r), QSize(8, 8))};
}

// Renders the receiver frame after frame (10 ms apart, as a fast player
// would) until `expected` arrives; returns the frames it took, or -1.
int framesUntil(runtime::Renderer& receiver, const QString& expected, int& frame)
{
    for (int n = 1; n <= 200; ++n) {
        receiver.render(++frame / 100.0);
        if (receiver.outputValue("Data").toString() == expected) return n;
        QThread::msleep(10);
    }
    return -1;
}

TEST(NetworkMessaging, ABroadcastValueReachesTheReceiverWithinAFewFrames)
{
    const int port = freePort();
    ASSERT_GT(port, 0);
    Pair pair = loopbackPair(port);
    int frame = 0;
    // The receiver listens first (it opens its socket when it first runs).
    pair.receiver->render(0);
    EXPECT_EQ(pair.receiver->outputValue("Data").toString(), QString());
    EXPECT_FALSE(pair.receiver->outputValue("Signal").toBool());

    pair.broadcaster->setInputValue("Data", QStringLiteral("Breaking news"));
    pair.broadcaster->render(0);
    const int frames = framesUntil(*pair.receiver, QStringLiteral("Breaking news"), frame);
    EXPECT_GT(frames, 0) << "nothing arrived in 200 frames";
    EXPECT_LE(frames, 20);
    EXPECT_TRUE(pair.receiver->outputValue("Signal").toBool());  // the frame it came
    pair.receiver->render(++frame / 100.0);
    EXPECT_FALSE(pair.receiver->outputValue("Signal").toBool());  // and only then
    EXPECT_EQ(pair.receiver->outputValue("Data").toString(), QStringLiteral("Breaking news"));  // kept

    // Numbers go as their text; a new value replaces the old one.
    pair.broadcaster->setInputValue("Data", 42.5);
    pair.broadcaster->render(0.04);
    EXPECT_GT(framesUntil(*pair.receiver, QStringLiteral("42.5"), frame), 0);
}

TEST(NetworkMessaging, AReceiverStartedLateHearsTheRepeatButNoNewsFromIt)
{
    const int port = freePort();
    ASSERT_GT(port, 0);
    Pair pair = loopbackPair(port);
    pair.broadcaster->setInputValue("Data", QStringLiteral("On air"));
    pair.broadcaster->render(0);
    QThread::msleep(50);  // sent before anyone listens: lost
    int frame = 0;
    const int frames = framesUntil(*pair.receiver, QStringLiteral("On air"), frame);
    EXPECT_GT(frames, 0) << "the repeat did not arrive in 200 frames";
    // Repeats of the same text (one a second) do not raise the signal again.
    int signals = 0;
    for (int i = 0; i < 120; ++i) {
        pair.receiver->render(++frame / 100.0);
        signals += pair.receiver->outputValue("Signal").toBool();
        QThread::msleep(10);
    }
    EXPECT_EQ(signals, 0);
    EXPECT_EQ(pair.receiver->outputValue("Data").toString(), QStringLiteral("On air"));
}

TEST(NetworkMessaging, AReceiverWithNothingToHearNeverHoldsAFrame)
{
    const int port = freePort();
    ASSERT_GT(port, 0);
    Pair pair = loopbackPair(port);
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < 20; ++i) pair.receiver->render(i / 25.0);
    // Generous for a loaded machine; a frame waiting on the socket's poll
    // interval would take 20 × 50 ms.
    EXPECT_LT(timer.elapsed(), 800);
    EXPECT_EQ(pair.receiver->outputValue("Data").toString(), QString());
}

TEST(NetworkMessaging, BadEndpointsAreLoggedNotFatal)
{
    runtime::UdpListener listener({QStringLiteral("127.0.0.1"), 70000});
    for (int i = 0; i < 50 && listener.error().isEmpty(); ++i) QThread::msleep(10);
    EXPECT_TRUE(listener.error().contains("out of range")) << listener.error().toStdString();

    runtime::UdpSender sender;
    sender.send({QStringLiteral("not an address"), 5000}, QStringLiteral("x"));
    for (int i = 0; i < 50 && sender.lastError().isEmpty(); ++i) QThread::msleep(10);
    EXPECT_TRUE(sender.lastError().contains("not an IP address")) << sender.lastError().toStdString();
    EXPECT_EQ(sender.sentCount(), 0u);
}

}  // namespace
