// Small patches with no family of their own: Noise (smooth pseudo-random
// values over time), String MD5 and FPS Display.

#include "runtime/ExecutionContext.h"
#include "runtime/patches/PatchFamilies.h"
#include "runtime/patches/SmoothNoise.h"
#include "runtime/patches/TextRasterizer.h"

#include <QCryptographicHash>

#include <algorithm>
#include <cmath>
#include <deque>
#include <memory>

namespace runtime {

namespace {

// Smooth noise by patch time: `inputFrequency` lattice points per second,
// scaled to min…max. The same seed and time always give the same value,
// so renders repeat exactly.
class NoisePatch : public Patch {
public:
    explicit NoisePatch(const PatchSetup& setup) : Patch(setup)
    {
        min_ = &addInput(QStringLiteral("inputMin"), PortType::Number, 0.0);
        max_ = &addInput(QStringLiteral("inputMax"), PortType::Number, 1.0);
        frequency_ = &addInput(QStringLiteral("inputFrequency"), PortType::Number, stateNumber(setup, "frequency", 1.0));
        seed_ = &addInput(QStringLiteral("inputSeed"), PortType::Number, stateNumber(setup, "randomSeed", 1.0));
        value_ = &addOutput(QStringLiteral("outputValue"), PortType::Number);
    }
    TimeMode timeMode() const override { return TimeMode::TimeBase; }
    void execute(ExecutionContext&, double time) override
    {
        const double unit = smoothNoise(std::uint64_t(saturatedInt64(number(seed_))), time * number(frequency_));
        setOutput(*value_, number(min_) + (number(max_) - number(min_)) * unit);
    }

private:
    InputPort* min_;
    InputPort* max_;
    InputPort* frequency_;
    InputPort* seed_;
    OutputPort* value_;
};

// The digest of the string's UTF-8 bytes in lower-case hexadecimal.
class StringMD5Patch : public Patch {
public:
    explicit StringMD5Patch(const PatchSetup& setup) : Patch(setup)
    {
        string_ = &addInput(QStringLiteral("inputString"), PortType::String, QString());
        digest_ = &addOutput(QStringLiteral("outputMD5"), PortType::String);
    }
    void execute(ExecutionContext&, double) override
    {
        const QByteArray hash = QCryptographicHash::hash(string(string_).toUtf8(), QCryptographicHash::Md5);
        setOutput(*digest_, QString::fromLatin1(hash.toHex()));
    }

private:
    InputPort* string_;
    OutputPort* digest_;
};

// Draws "NN.N FPS" in the destination's top-left corner, white on a
// translucent black box. The rate is measured on the renderer's own clock:
// frames per second of composition time over the last second, so a
// deterministic render at 25 frames a second shows 25 on every machine.
class FpsDisplayPatch : public Patch {
public:
    explicit FpsDisplayPatch(const PatchSetup& setup) : Patch(setup)
    {
        rate_ = &addOutput(QStringLiteral("outputFPS"), PortType::Number);
    }
    ExecutionMode executionMode() const override { return ExecutionMode::Consumer; }
    TimeMode timeMode() const override { return TimeMode::Idle; }
    void reset() override { frameTimes_.clear(); }

    void execute(ExecutionContext& context, double) override
    {
        const double now = context.rootTime();
        if (!frameTimes_.empty() && now < frameTimes_.back()) frameTimes_.clear();  // time went back: a new run
        if (frameTimes_.empty() || now > frameTimes_.back()) frameTimes_.push_back(now);
        while (frameTimes_.size() > 2 && now - frameTimes_.front() > 1.0) frameTimes_.pop_front();
        const double span = frameTimes_.size() > 1 ? frameTimes_.back() - frameTimes_.front() : 0.0;
        const double fps = span > 0 ? double(frameTimes_.size() - 1) / span : 0.0;
        setOutput(*rate_, fps);

        RenderTarget* target = context.target();
        if (!target || target->pixelSize().isEmpty()) return;
        const QSize destination = target->pixelSize();
        const QString text = QStringLiteral("%1 FPS").arg(fps, 0, 'f', 1);
        if (text != shownText_ || shown_.pixels.isNull()) {
            TextBox box;
            box.pixelSize = std::clamp(destination.height() / 24, 9, 48);
            box.fontName = QStringLiteral("Menlo");
            if (!rasterizer_) rasterizer_ = std::make_unique<TextRasterizer>();
            shown_ = rasterizer_->render(text, box);
            shownImage_ = Image::fromRaster(shown_.pixels);
            shownText_ = text;
        }
        const double unitsPerPixel = 2.0 / destination.width();
        const double margin = 4 * unitsPerPixel;
        const double w = shown_.pixels.width() * unitsPerPixel, h = shown_.pixels.height() * unitsPerPixel;
        const double left = -1.0 + margin, top = target->unitsHigh() / 2 - margin;

        QuadDraw backing;
        backing.rect = QRectF(left - margin / 2, top - h - margin / 2, w + margin, h + margin);
        backing.color = Color{0, 0, 0, 0.6};
        backing.antialias = false;
        target->drawQuad(backing);

        QuadDraw label;
        label.rect = QRectF(left, top - h, w, h);
        label.image = shownImage_;
        label.antialias = false;
        target->drawQuad(label);
    }

private:
    OutputPort* rate_;
    std::deque<double> frameTimes_;
    std::unique_ptr<TextRasterizer> rasterizer_;
    RenderedText shown_;
    Image shownImage_;
    QString shownText_;
};

}  // namespace

void registerUtilityPatches(PatchRegistry& registry)
{
    registry.add(QStringLiteral("QCNoise"), factoryOf<NoisePatch>());
    registry.add(QStringLiteral("QCStringMD5"), factoryOf<StringMD5Patch>());
    registry.add(QStringLiteral("QCFPSDisplay"), factoryOf<FpsDisplayPatch>());
}

}  // namespace runtime
