#pragma once
// UDP for the Network Broadcaster and Receiver, each end on a worker thread
// of its own so that a frame never waits for the network: the sender takes
// the latest message to send, the listener keeps the latest message heard.
//
// The sender repeats its last message every second, so a receiver that
// starts late still hears it; a receiver reports a message only when its
// text differs from the one before.
//
// Messages are text. On the wire it is UTF-32, big-endian, four bytes a
// character, as public write-ups of Quartz Composer's packets describe; a
// datagram that is not valid UTF-32 is read as UTF-8, so that a shell tool
// can feed a receiver.

#include <QByteArray>
#include <QString>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <thread>

namespace runtime {

QByteArray encodeNetworkMessage(const QString& text);
QString decodeNetworkMessage(const QByteArray& datagram);

// Where messages go or come from: a multicast group, a broadcast address or
// a host (the loopback address in tests).
struct UdpEndpoint {
    QString address;
    int port = 0;
    bool operator==(const UdpEndpoint&) const = default;
};

class UdpSender {
public:
    UdpSender();
    ~UdpSender();
    UdpSender(const UdpSender&) = delete;
    UdpSender& operator=(const UdpSender&) = delete;

    // Queues `text` for `to`, replacing a message not yet sent.
    void send(const UdpEndpoint& to, const QString& text);
    // The last sending error, empty when the last datagram went out.
    QString lastError() const;
    std::uint64_t sentCount() const { return sent_.load(); }

private:
    void work();
    mutable std::mutex mutex_;
    std::condition_variable wake_;
    std::optional<std::pair<UdpEndpoint, QByteArray>> pending_;
    QString error_;
    bool stop_ = false;
    std::atomic<std::uint64_t> sent_{0};
    std::thread thread_;
};

class UdpListener {
public:
    // Returns once the socket is bound (or has failed to be).
    explicit UdpListener(UdpEndpoint endpoint);
    ~UdpListener();
    UdpListener(const UdpListener&) = delete;
    UdpListener& operator=(const UdpListener&) = delete;

    const UdpEndpoint& endpoint() const { return endpoint_; }
    struct Message {
        QString text;
        std::uint64_t serial = 0;  // 1 for the first message heard, and so on
    };
    // The latest message, if any has come; the serial grows only when the
    // text changes.
    std::optional<Message> latest() const;
    // Why nothing can be heard (the port is taken, say), or empty.
    QString error() const;

private:
    void work();
    UdpEndpoint endpoint_;
    mutable std::mutex mutex_;
    std::optional<Message> latest_;
    QString error_;
    std::condition_variable ready_;
    bool started_ = false;
    std::atomic<bool> stop_{false};
    std::thread thread_;
};

}  // namespace runtime
