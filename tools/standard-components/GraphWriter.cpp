#include "GraphWriter.h"

#include "quartz/QuartzStrings.h"

namespace standardcomponents {

namespace {

const char* portClassName(PortClass type)
{
    switch (type) {
    case PortClass::Number: return "QCNumberPort";
    case PortClass::Index: return "QCIndexPort";
    case PortClass::Boolean: return "QCBooleanPort";
    case PortClass::String: return "QCStringPort";
    case PortClass::Color: return "QCColorPort";
    case PortClass::Image: return "QCGLImagePort";
    }
    return "QCVirtualPort";
}

Value portValue(const Value& value)
{
    Value entry = Value::emptyDictionary();
    entry.set("value", value);
    return entry;
}

void addPortAttributes(QuartzComposition& composition, const QString& key, const InputLabel& label)
{
    Value attributes = composition.dictionary().value("portAttributes");
    if (!attributes.isDictionary()) attributes = Value::emptyDictionary();
    Value entry = Value::emptyDictionary();
    entry.set("name", quartz::toStd(label.label));
    if (!label.description.isEmpty()) entry.set("description", quartz::toStd(label.description));
    if (!label.menu.isEmpty()) {
        plist::Array items;
        for (const QString& item : label.menu) items.emplace_back(quartz::toStd(item));
        entry.set("menu", Value(std::move(items)));
    }
    attributes.set(quartz::toStd(key), std::move(entry));
    composition.dictionary().set("portAttributes", std::move(attributes));
}

}  // namespace

Value colour(double red, double green, double blue, double alpha)
{
    Value c = Value::emptyDictionary();
    c.set("red", red);
    c.set("green", green);
    c.set("blue", blue);
    c.set("alpha", alpha);
    return c;
}

QPointF cell(int column, int row) { return QPointF(60 + column * 240, 60 + row * 120); }

QuartzPatch& GraphWriter::add(const QString& patchClass, const QString& key, QPointF position,
                              const plist::Dictionary& inputs, Value state)
{
    QuartzPatch* patch = macro_.addPatchWithClass(patchClass, state, inputs);
    patch->setKey(key);
    patch->setPosition(position);
    return *patch;
}

QuartzPatch& GraphWriter::addMacro(const QString& key, const QString& name, QPointF position)
{
    QuartzPatch& patch = add(QStringLiteral("QCPatch"), key, position);
    // A macro keeps no port values of its own.
    plist::Value& state = patch.data().mutableDictionary()["state"];
    state.remove("ivarInputPortStates");
    patch.setName(name);
    return patch;
}

QuartzPatch& GraphWriter::addSplitter(const QString& key, PortClass type, const Value& value, QPointF position,
                                      const SplitterLimits& limits)
{
    Value state = Value::emptyDictionary();
    state.set("portClass", portClassName(type));
    state.set("version", 1);
    if (limits.minimum) state.set("inputMin", *limits.minimum);
    if (limits.maximum) state.set("inputMax", *limits.maximum);
    if (!limits.menu.isEmpty()) {
        plist::Array labels;
        for (const QString& item : limits.menu) labels.emplace_back(quartz::toStd(item));
        state.set("indexLabels", Value(std::move(labels)));
    }
    // A splitter's "input" is a port it makes itself: its value is a
    // custom port state, as Quartz Composer stores it.
    if (!value.isNull()) {
        Value custom = Value::emptyDictionary();
        custom.set("input", portValue(value));
        state.set("customInputPortStates", std::move(custom));
    }
    return add(QStringLiteral("QCSplitter"), key, position, {}, std::move(state));
}

QuartzPatch& GraphWriter::addExpression(const QString& key, const QString& expression, QPointF position,
                                        const plist::Dictionary& values)
{
    Value state = Value::emptyDictionary();
    state.set("expression", quartz::toStd(expression));
    if (!values.empty()) {
        plist::Dictionary custom;
        for (const auto& [port, value] : values) custom.emplace(port, portValue(value));
        state.set("customInputPortStates", Value(std::move(custom)));
    }
    return add(QStringLiteral("QCExpression"), key, position, {}, std::move(state));
}

QuartzPatch& GraphWriter::addBillboard(const QString& key, QPointF position, bool pixelAligned)
{
    Value state = Value::emptyDictionary();
    state.set("sizeMode", "custom");
    state.set("pixelAligned", pixelAligned);
    state.set("CIRendering", true);
    state.set("version", 2);
    // The size ports of the custom mode are made by the patch: custom states.
    Value custom = Value::emptyDictionary();
    custom.set("inputWidth", portValue(Value(1.0)));
    custom.set("inputHeight", portValue(Value(1.0)));
    state.set("customInputPortStates", std::move(custom));
    return add(QStringLiteral("QCBillboard"), key, position,
               {{"inputX", Value(0.0)},
                {"inputY", Value(0.0)},
                {"inputRotation", Value(0.0)},
                {"inputColor", colour(1, 1, 1)},
                {"inputBlending", Value(1)},  // Over
                {"inputPixelAligned", Value(pixelAligned)}},
               std::move(state));
}

void GraphWriter::connect(const QString& source, const QString& sourcePort, const QString& destination,
                          const QString& destinationPort)
{
    macro_.addConnectionFromComponent(source, sourcePort, destination, destinationPort);
}

std::unique_ptr<QuartzComposition> newComposition(const QString& name, const QString& description)
{
    auto composition = std::make_unique<QuartzComposition>();
    composition->dictionary().set("name", quartz::toStd(name));
    composition->dictionary().set("description", quartz::toStd(description));
    return composition;
}

void publishComponentInput(QuartzComposition& composition, QuartzPatch& inner, const QString& port, const QString& key,
                           const InputLabel& label)
{
    inner.publishPort(port, key, label.label);
    publishProducerInput(composition, *inner.parentPatch(), key, label);
}

void publishProducerInput(QuartzComposition& composition, QuartzPatch& producer, const QString& port,
                          const InputLabel& label)
{
    producer.publishPort(port, port, label.label);
    addPortAttributes(composition, port, label);
}

void publishComponentImage(QuartzPatch& producer, const QString& port)
{
    producer.publishOutputPort(port, QStringLiteral("outputImage"));
}

QuartzPatch& addRenderInImage(GraphWriter& root, const QString& key, const QString& name, int width, int height,
                              bool timeBased)
{
    Value state = Value::emptyDictionary();
    state.set("target", "GL_TEXTURE_RECTANGLE_EXT");
    state.set("colorCorrection", 1);
    state.set("noFeedback", true);
    state.set("noDepthBuffer", false);
    state.set("width", width);
    state.set("height", height);
    state.set("version", 1);
    // A "timebase" marks the producer as time-based: the export then feeds
    // it the component's local time through "_time".
    if (timeBased) state.set("timebase", "parent");
    QuartzPatch& producer = root.add(QStringLiteral("QCRenderInImage"), key, cell(0, 0),
                                     {{"inputWidth", Value(width)},
                                      {"inputHeight", Value(height)},
                                      {"inputRender", Value(true)},
                                      {"inputMipmaps", Value(false)},
                                      {"inputTarget", Value(0)}},
                                     std::move(state));
    producer.setName(name);
    return producer;
}

QByteArray fileData(const QuartzComposition& composition, QString* error)
{
    const auto data = composition.fileDataByRemovingPixelFormatSetting(false);
    if (!data) {
        if (error) *error = QStringLiteral("the composition cannot be serialised");
        return {};
    }
    return *data;
}

}  // namespace standardcomponents
