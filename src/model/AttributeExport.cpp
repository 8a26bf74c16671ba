// An attribute's value in the forms other parts take it in: pushed into the
// component's renderer, and written into the exported composition as port
// values, timeline key points and multiplexer sources.

#include "model/Attribute.h"
#include "model/QuartzComponent.h"
#include "model/RichFontValue.h"
#include "quartz/QuartzComposition.h"
#include "runtime/Renderer.h"

#include <QFont>

namespace model {

using plist::Value;

namespace {

QString sizeKeyForFontKey(const QString& key)
{
    QString sizeKey = key;
    return sizeKey.replace(QLatin1String("Font_Name"), QLatin1String("Font_Size"));
}

Value fileValue(const QVariant& v) { return QuartzComposition::quartzValueForObject(v); }

}  // namespace

void Attribute::pushValueToRenderer() const
{
    QuartzComponent* owner = component();
    if (!owner || !owner->renderer()) return;
    pushValue(*owner->renderer(), currentValue());
}

void Attribute::pushValue(runtime::Renderer& renderer, const QVariant& value) const
{
    if (!quartzAttribute()) return;
    switch (typeInfo().portForm) {
    case PortForm::FontNameAndSize: {
        const QFont font = value.value<QFont>();
        renderer.setInputValue(key(), font.family());
        renderer.setInputValue(sizeKeyForFontKey(key()), float(font.pointSizeF()));
        break;
    }
    case PortForm::RichFontMembers: {
        const QVariantMap members = value.value<RichFontValue>().renderAttributes();
        for (auto it = members.begin(); it != members.end(); ++it) renderer.setInputValue(it.key(), it.value());
        break;
    }
    case PortForm::Value: renderer.setInputValue(key(), value); break;
    }
}

Value Attribute::quartzValues() const
{
    Value result = Value::emptyDictionary();
    if (animateable() && animationPossible()) {
        result.set(key().toStdString(), keyFrameInformation());
        return result;
    }
    const QVariant value = currentValue();
    switch (typeInfo().portForm) {
    case PortForm::FontNameAndSize: {
        const QFont font = value.value<QFont>();
        result.set(key().toStdString(), font.family().toStdString());
        result.set(sizeKeyForFontKey(key()).toStdString(), Value::singleReal(float(font.pointSizeF())));
        return result;
    }
    case PortForm::RichFontMembers: return value.value<RichFontValue>().quartzValues();
    case PortForm::Value: break;
    }
    if (!value.isValid()) return result;
    result.set(key().toStdString(), fileValue(value));
    return result;
}

Value Attribute::keyFrameInfo(double time, const Value& value, double lc, double rc)
{
    Value kf = Value::emptyDictionary();
    kf.set("time", Value::singleReal(float(time)));
    if (!value.isNull()) kf.set("value", value);
    Value left = Value::emptyDictionary();
    left.set("time", lc);
    left.set("value", 0);
    Value right = Value::emptyDictionary();
    right.set("time", rc);
    right.set("value", 0);
    Value point = Value::emptyDictionary();
    point.set("kf", std::move(kf));
    point.set("lc", std::move(left));
    point.set("rc", std::move(right));
    point.set("fixedControls", true);
    return point;
}

plist::Value Attribute::keyFrameInformation() const
{
    const QList<float> keys = sortedKeyFrames();
    plist::Array points;
    // Smooth curves: control points at half the distance to the neighbours.
    auto smooth = [&](plist::Array& out, auto valueAt) {
        double previous = 0.0;
        for (int i = 0; i < keys.size(); ++i) {
            const double time = keys[i];
            const double next = i + 1 < keys.size() ? double(keys[i + 1]) : 0.0;
            const double lc = previous != time ? (previous - time) * 0.5 : 0.0;
            const double rc = next > 0 ? (next - time) * 0.5 : 0.0;
            out.push_back(keyFrameInfo(time, valueAt(time), lc, rc));
            previous = time;
        }
    };
    switch (typeInfo().curve) {
    case ExportCurve::Smooth:
        if (!keys.isEmpty() && keys.first() > 0)
            points.push_back(keyFrameInfo(0.0, fileValue(marginAdjustedValueForTimepoint(keys.first())), 0, 0));
        smooth(points, [&](double time) { return fileValue(marginAdjustedValueForTimepoint(time)); });
        break;
    case ExportCurve::SmoothPerChannel:
        // One curve per channel; alpha is not animated in the export. The
        // extra point at time 0 is never added here.
        for (const char* channel : {"red", "green", "blue"}) {
            plist::Array curve;
            smooth(curve, [&](double time) { return fileValue(marginAdjustedValueForTimepoint(time)).value(channel); });
            points.push_back(Value(std::move(curve)));
        }
        break;
    case ExportCurve::SteppedValues: {
        // A stepped curve on the values themselves.
        Value previous;
        for (float time : keys) {
            const Value v = fileValue(marginAdjustedValueForTimepoint(time));
            if (points.empty()) points.push_back(keyFrameInfo(0.0, v, 0, 0));
            if (v != previous) points.push_back(keyFrameInfo(time, previous, 0, 0));
            points.push_back(keyFrameInfo(time, v, 0, 0));
            previous = v;
        }
        break;
    }
    case ExportCurve::SteppedIndices:
        // A stepped curve of indices into keyFrameValuesForMultiplexer.
        for (int n = 0; n < keys.size(); ++n) {
            if (n == 0) points.push_back(keyFrameInfo(0.0, Value(0), 0, 0));
            if (n > 0) points.push_back(keyFrameInfo(keys[n], Value(n - 1), 0, 0));
            points.push_back(keyFrameInfo(keys[n], Value(n), 0, 0));
        }
        break;
    }
    return Value(std::move(points));
}

plist::Array Attribute::keyFrameValuesForMultiplexer() const
{
    plist::Array values;
    if (typeInfo().curve != ExportCurve::SteppedIndices) return values;
    for (float time : sortedKeyFrames()) values.push_back(fileValue(marginAdjustedValueForTimepoint(time)));
    return values;
}

}  // namespace model
