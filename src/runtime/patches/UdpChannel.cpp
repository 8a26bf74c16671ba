#include "runtime/patches/UdpChannel.h"

#include <QHostAddress>
#include <QNetworkDatagram>
#include <QUdpSocket>
#include <QVariant>

namespace runtime {

namespace {

// Larger datagrams are cut; no template sends pages over UDP.
constexpr qsizetype kMaxDatagram = 65000;
// How often a listener looks whether it should stop.
constexpr int kListenerPollMs = 50;
constexpr std::chrono::milliseconds kRepeatInterval{1000};

}  // namespace

QByteArray encodeNetworkMessage(const QString& text)
{
    QByteArray bytes;
    const QList<uint> characters = text.toUcs4();
    bytes.reserve(characters.size() * 4);
    for (uint c : characters) {
        if (bytes.size() + 4 > kMaxDatagram) break;
        bytes.append(char((c >> 24) & 0xFF)).append(char((c >> 16) & 0xFF)).append(char((c >> 8) & 0xFF)).append(char(c & 0xFF));
    }
    return bytes;
}

QString decodeNetworkMessage(const QByteArray& datagram)
{
    bool utf32 = datagram.size() % 4 == 0;
    QString text;
    for (qsizetype i = 0; utf32 && i < datagram.size(); i += 4) {
        const auto* b = reinterpret_cast<const unsigned char*>(datagram.constData() + i);
        const char32_t c = (char32_t(b[0]) << 24) | (char32_t(b[1]) << 16) | (char32_t(b[2]) << 8) | char32_t(b[3]);
        // Plain text in UTF-8 ("abcd") would read as huge code points.
        if (c == 0 || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) utf32 = false;
        else text += QString::fromUcs4(&c, 1);
    }
    return utf32 ? text : QString::fromUtf8(datagram);
}

UdpSender::UdpSender() : thread_([this] { work(); }) {}

UdpSender::~UdpSender()
{
    {
        std::lock_guard lock(mutex_);
        stop_ = true;
    }
    wake_.notify_all();
    thread_.join();
}

void UdpSender::send(const UdpEndpoint& to, const QString& text)
{
    {
        std::lock_guard lock(mutex_);
        pending_.emplace(to, encodeNetworkMessage(text));
    }
    wake_.notify_all();
}

QString UdpSender::lastError() const
{
    std::lock_guard lock(mutex_);
    return error_;
}

void UdpSender::work()
{
    QUdpSocket socket;  // made and used on this thread only
    // Multicast stays on the local network segment (the option needs an
    // open socket, hence the bind to any port).
    if (socket.bind(QHostAddress::AnyIPv4, 0)) socket.setSocketOption(QAbstractSocket::MulticastTtlOption, QVariant(1));
    std::optional<std::pair<UdpEndpoint, QByteArray>> last;
    for (;;) {
        std::pair<UdpEndpoint, QByteArray> message;
        {
            std::unique_lock lock(mutex_);
            // The last message goes out again now and then, for receivers
            // that started listening after it was first sent.
            const bool woken = wake_.wait_for(lock, kRepeatInterval, [this] { return stop_ || pending_; });
            if (stop_) return;
            if (woken) {
                message = std::move(*pending_);
                pending_.reset();
            } else if (last) {
                message = *last;
            } else {
                continue;
            }
        }
        last = message;
        const QHostAddress address(message.first.address);
        QString error;
        if (address.isNull()) error = QStringLiteral("\"%1\" is not an IP address").arg(message.first.address);
        else if (message.first.port <= 0 || message.first.port > 65535) error = QStringLiteral("port %1 is out of range").arg(message.first.port);
        else if (socket.writeDatagram(message.second, address, quint16(message.first.port)) < 0) error = socket.errorString();
        else ++sent_;
        std::lock_guard lock(mutex_);
        error_ = error;
    }
}

UdpListener::UdpListener(UdpEndpoint endpoint) : endpoint_(std::move(endpoint)), thread_([this] { work(); })
{
    // Binding is a local call that takes microseconds; waiting for it means
    // a message sent after this returns is heard.
    std::unique_lock lock(mutex_);
    ready_.wait(lock, [this] { return started_; });
}

UdpListener::~UdpListener()
{
    stop_ = true;
    thread_.join();
}

std::optional<UdpListener::Message> UdpListener::latest() const
{
    std::lock_guard lock(mutex_);
    return latest_;
}

QString UdpListener::error() const
{
    std::lock_guard lock(mutex_);
    return error_;
}

void UdpListener::work()
{
    const auto started = [this](const QString& error) {
        {
            std::lock_guard lock(mutex_);
            error_ = error;
            started_ = true;
        }
        ready_.notify_all();
    };
    if (endpoint_.port <= 0 || endpoint_.port > 65535) return started(QStringLiteral("port %1 is out of range").arg(endpoint_.port));
    const QHostAddress group(endpoint_.address);
    QUdpSocket socket;
    // Several receivers (several renderers) may listen on one port.
    if (!socket.bind(QHostAddress::AnyIPv4, quint16(endpoint_.port), QUdpSocket::ShareAddress | QUdpSocket::ReuseAddressHint))
        return started(QStringLiteral("cannot listen on port %1: %2").arg(endpoint_.port).arg(socket.errorString()));
    if (group.isMulticast() && !socket.joinMulticastGroup(group))
        started(QStringLiteral("cannot join %1: %2").arg(endpoint_.address, socket.errorString()));
    else
        started(QString());
    std::uint64_t serial = 0;
    while (!stop_) {
        if (!socket.waitForReadyRead(kListenerPollMs)) continue;
        while (socket.hasPendingDatagrams()) {
            const QNetworkDatagram datagram = socket.receiveDatagram(kMaxDatagram);
            if (!datagram.isValid()) break;
            const QString text = decodeNetworkMessage(datagram.data());
            std::lock_guard lock(mutex_);
            // A repeat of the same text is not news.
            if (latest_ && latest_->text == text) continue;
            latest_ = Message{text, ++serial};
        }
    }
}

}  // namespace runtime
