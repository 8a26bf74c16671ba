// Network Broadcaster and Network Receiver (QCNetworkBroadcaster,
// QCNetworkReceiver): text over UDP between compositions on the local
// network (UdpChannel.h). Both default to the multicast group 225.0.0.0,
// port 50000. The broadcaster sends its data whenever it or the address
// changes (and repeats it every second for late listeners); the receiver
// outputs the latest message heard and raises its signal on the frame a
// different one arrives. Neither ever waits for the
// network, and neither opens a socket until it first runs (loading a
// composition touches no network).

#include "runtime/ExecutionContext.h"
#include "runtime/RendererServices.h"
#include "runtime/patches/PatchFamilies.h"
#include "runtime/patches/UdpChannel.h"

#include <memory>

namespace runtime {

namespace {

const QString kDefaultAddress = QStringLiteral("225.0.0.0");
constexpr int kDefaultPort = 50000;

class NetworkBroadcasterPatch : public Patch {
public:
    explicit NetworkBroadcasterPatch(const PatchSetup& setup) : Patch(setup)
    {
        data_ = &addInput(QStringLiteral("inputData"), PortType::Virtual, QString());
        address_ = &addInput(QStringLiteral("inputAddress"), PortType::String, kDefaultAddress);
        port_ = &addInput(QStringLiteral("inputPort"), PortType::Index, kDefaultPort);
    }
    // Nothing pulls a broadcaster: it runs every frame, as renderers do.
    ExecutionMode executionMode() const override { return ExecutionMode::Consumer; }
    void reset() override { lastSent_.reset(); }

    void execute(ExecutionContext& context, double) override
    {
        const UdpEndpoint to{string(address_), index(port_)};
        const QString text = data_->value.isNull() ? QString() : data_->value.toString();
        if (lastSent_ && lastSent_->first == to && lastSent_->second == text) return;
        if (!sender_) sender_ = std::make_unique<UdpSender>();
        const QString error = sender_->lastError();
        if (!error.isEmpty()) context.services().logOnce(QStringLiteral("%1: %2").arg(path(), error));
        sender_->send(to, text);
        lastSent_.emplace(to, text);
    }

private:
    InputPort* data_;
    InputPort* address_;
    InputPort* port_;
    std::unique_ptr<UdpSender> sender_;
    std::optional<std::pair<UdpEndpoint, QString>> lastSent_;
};

class NetworkReceiverPatch : public Patch {
public:
    explicit NetworkReceiverPatch(const PatchSetup& setup) : Patch(setup)
    {
        address_ = &addInput(QStringLiteral("inputAddress"), PortType::String, kDefaultAddress);
        port_ = &addInput(QStringLiteral("inputPort"), PortType::Index, kDefaultPort);
        data_ = &addOutput(QStringLiteral("outputData"), PortType::String);
        signal_ = &addOutput(QStringLiteral("outputSignal"), PortType::Boolean);
    }
    ExecutionMode executionMode() const override { return ExecutionMode::Provider; }
    // Looks every evaluation whether a message has come.
    TimeMode timeMode() const override { return TimeMode::Idle; }
    void reset() override
    {
        listener_.reset();
        seen_ = 0;
    }

    void execute(ExecutionContext& context, double) override
    {
        const UdpEndpoint from{string(address_), index(port_)};
        if (!listener_ || !(listener_->endpoint() == from)) {
            listener_ = std::make_unique<UdpListener>(from);
            seen_ = 0;
        }
        const QString error = listener_->error();
        if (!error.isEmpty()) context.services().logOnce(QStringLiteral("%1: %2").arg(path(), error));
        const auto message = listener_->latest();
        const bool fresh = message && message->serial != seen_;
        setOutput(*signal_, fresh);
        if (!fresh) return;
        seen_ = message->serial;
        setOutput(*data_, message->text);
    }

private:
    InputPort* address_;
    InputPort* port_;
    OutputPort* data_;
    OutputPort* signal_;
    std::unique_ptr<UdpListener> listener_;
    std::uint64_t seen_ = 0;
};

}  // namespace

void registerNetworkMessagingPatches(PatchRegistry& registry)
{
    registry.add(QStringLiteral("QCNetworkBroadcaster"), factoryOf<NetworkBroadcasterPatch>());
    registry.add(QStringLiteral("QCNetworkReceiver"), factoryOf<NetworkReceiverPatch>());
}

}  // namespace runtime
