// The JavaScript patch (QCJavaScript) on Qt's QJSEngine. Two script forms:
//   newer: "function (__number out) main (__string in, __number list[2]) {...}"
//          declares typed ports; main's returned object carries the outputs;
//   older: the script reads inputs[i] and sets outputs[i] (ports "input_i",
//          "output_i", counts from the state).
// A script that runs longer than a moment is interrupted, so a loop that
// never ends cannot hang rendering. The renderer's patches share one engine
// (ScriptEngine.h).

#include "runtime/ExecutionContext.h"
#include "runtime/Mesh.h"
#include "runtime/RendererServices.h"
#include "runtime/patches/PatchFamilies.h"
#include "runtime/patches/ScriptEngine.h"

#include <QJSEngine>
#include <QRegularExpression>

namespace runtime {

namespace {

constexpr int kMaxArrayPorts = 64;

struct ScriptPort {
    QString name;
    PortType type = PortType::Virtual;
    int arraySize = 0;  // "__number list[2]": two ports list_0, list_1
};

PortType typeFromAnnotation(const QString& t)
{
    if (t == QLatin1String("number")) return PortType::Number;
    if (t == QLatin1String("boolean")) return PortType::Boolean;
    if (t == QLatin1String("string")) return PortType::String;
    if (t == QLatin1String("index")) return PortType::Index;
    if (t == QLatin1String("image")) return PortType::Image;
    if (t == QLatin1String("structure")) return PortType::Structure;
    if (t == QLatin1String("color")) return PortType::Color;
    return PortType::Virtual;
}

std::vector<ScriptPort> parsePorts(const QString& list)
{
    static const QRegularExpression re(QStringLiteral("^__(\\w+)\\s+(\\w+)\\s*(?:\\[\\s*(\\d+)\\s*\\])?$"));
    std::vector<ScriptPort> ports;
    for (const QString& part : list.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        const auto m = re.match(part.trimmed());
        if (!m.hasMatch()) continue;
        ports.push_back({m.captured(2), typeFromAnnotation(m.captured(1)), std::min(m.captured(3).toInt(), kMaxArrayPorts)});
    }
    return ports;
}

QJSValue toScript(QJSEngine& engine, const Value& value)
{
    switch (value.kind()) {
    case Value::Kind::Null: return QJSValue(QJSValue::UndefinedValue);
    case Value::Kind::Boolean: return QJSValue(value.toBool());
    case Value::Kind::Number: return QJSValue(value.toNumber());
    case Value::Kind::String: return QJSValue(value.toString());
    case Value::Kind::Color: {
        const Color c = value.toColor();
        QJSValue array = engine.newArray(4);
        array.setProperty(0, c.red);
        array.setProperty(1, c.green);
        array.setProperty(2, c.blue);
        array.setProperty(3, c.alpha);
        return array;
    }
    case Value::Kind::Image: return engine.toScriptValue(QVariant::fromValue(value.toImage()));
    case Value::Kind::Mesh: return engine.toScriptValue(QVariant::fromValue(value.toMesh()));
    case Value::Kind::Structure: {
        const StructurePtr s = value.toStructure();
        if (s->isKeyed()) {
            QJSValue object = engine.newObject();
            for (const auto& m : s->members()) object.setProperty(m.key, toScript(engine, m.value));
            return object;
        }
        QJSValue array = engine.newArray(uint(s->count()));
        for (std::size_t i = 0; i < s->count(); ++i) array.setProperty(quint32(i), toScript(engine, s->members()[i].value));
        return array;
    }
    }
    return {};
}

Value fromVariant(const QVariant& v, int depth = 0)
{
    if (v.userType() == qMetaTypeId<Image>()) return Value(v.value<Image>());
    if (depth < 32 && v.typeId() == QMetaType::QVariantList) {
        std::vector<Structure::Member> members;
        for (const QVariant& item : v.toList()) members.push_back({QString(), fromVariant(item, depth + 1)});
        return Value(std::make_shared<const Structure>(std::move(members)));
    }
    if (depth < 32 && v.typeId() == QMetaType::QVariantMap) {
        std::vector<Structure::Member> members;
        const QVariantMap map = v.toMap();
        for (auto it = map.begin(); it != map.end(); ++it) members.push_back({it.key(), fromVariant(it.value(), depth + 1)});
        return Value(std::make_shared<const Structure>(std::move(members)));
    }
    return Value::fromVariant(v);
}

Value fromScript(const QJSValue& value)
{
    if (value.isUndefined() || value.isNull()) return {};
    return fromVariant(value.toVariant());
}

class JavaScriptPatch : public Patch {
public:
    explicit JavaScriptPatch(const PatchSetup& setup) : Patch(setup)
    {
        script_ = stateString(setup, "script");
        static const QRegularExpression header(QStringLiteral("function\\s*\\(([^)]*)\\)\\s*main\\s*\\(([^)]*)\\)"));
        const auto m = header.match(script_);
        newMode_ = m.hasMatch();
        if (newMode_) {
            outputsDeclared_ = parsePorts(m.captured(1));
            inputsDeclared_ = parsePorts(m.captured(2));
            QStringList names;
            for (const ScriptPort& p : inputsDeclared_) names << p.name;
            script_.replace(m.capturedStart(), m.capturedLength(),
                            QStringLiteral("function main(%1)").arg(names.join(QStringLiteral(", "))));
            for (const ScriptPort& p : inputsDeclared_) {
                if (p.arraySize == 0) {
                    inputs_.push_back({&addInput(p.name, p.type)});
                    continue;
                }
                std::vector<InputPort*> elements;
                for (int i = 0; i < p.arraySize; ++i) elements.push_back(&addInput(QStringLiteral("%1_%2").arg(p.name).arg(i), p.type));
                inputs_.push_back(elements);
            }
            for (const ScriptPort& p : outputsDeclared_) outputs_.push_back(&addOutput(p.name, p.type));
        } else {
            const int in = std::clamp(saturatedInt(stateNumber(setup, "inputCount", stateNumber(setup, "numberOfInputs", 0))), 0, kMaxArrayPorts);
            const int out = std::clamp(saturatedInt(stateNumber(setup, "outputCount", stateNumber(setup, "numberOfOutputs", 0))), 0, kMaxArrayPorts);
            for (int i = 0; i < in; ++i) inputs_.push_back({&addInput(QStringLiteral("input_%1").arg(i), PortType::Virtual)});
            for (int i = 0; i < out; ++i) outputs_.push_back(&addOutput(QStringLiteral("output_%1").arg(i), PortType::Virtual));
        }
    }

    void execute(ExecutionContext& context, double) override
    {
        if (failed_) return;
        ScriptEngine& engine = context.services().scriptEngine();
        if (main_.isUndefined()) compile(engine);
        if (failed_) return;
        QJSEngine& js = engine.js();
        QJSValueList arguments;
        for (std::size_t n = 0; n < inputs_.size(); ++n) {
            const auto& ports = inputs_[n];
            const bool array = newMode_ && inputsDeclared_[n].arraySize > 0;
            if (!array) {
                arguments << toScript(js, ports[0]->value);
                continue;
            }
            QJSValue elements = js.newArray(uint(ports.size()));
            for (std::size_t i = 0; i < ports.size(); ++i) elements.setProperty(quint32(i), toScript(js, ports[i]->value));
            arguments << elements;
        }
        if (!newMode_) {
            QJSValue inputs = js.newArray(uint(arguments.size()));
            for (int i = 0; i < arguments.size(); ++i) inputs.setProperty(quint32(i), arguments[i]);
            QJSValue outputs = js.newArray(uint(outputs_.size()));
            arguments = {inputs, outputs};
        }
        const ScriptEngine::Result result = engine.call(main_, arguments);
        if (!result.ok()) {
            reportOnce(result.error);
            return;
        }
        if (newMode_) {
            for (std::size_t i = 0; i < outputs_.size(); ++i)
                setOutput(*outputs_[i], fromScript(result.value.property(outputsDeclared_[i].name)));
        } else {
            const QJSValue& outputs = arguments[1];
            for (std::size_t i = 0; i < outputs_.size(); ++i) setOutput(*outputs_[i], fromScript(outputs.property(quint32(i))));
        }
    }
    // A fresh closure on the next call: the script's own variables start over.
    void reset() override { main_ = QJSValue(); }

private:
    // The script becomes one function, made once: its top-level names stay
    // in its closure between calls and apart from other scripts'. The older
    // form's whole text is the function's body.
    void compile(ScriptEngine& engine)
    {
        const QString program = newMode_
            ? QStringLiteral("(function () {\n%1\n;\nreturn typeof main === 'function' ? main : undefined; })()").arg(script_)
            : QStringLiteral("(function (inputs, outputs) {\n%1\n})").arg(script_);
        ScriptEngine::Result result = engine.evaluate(program);
        if (result.ok() && !result.value.isCallable()) result.error = QStringLiteral("the script defines no main function");
        if (!result.ok()) {
            reportOnce(result.error);
            failed_ = true;
            return;
        }
        main_ = result.value;
    }
    void reportOnce(const QString& message)
    {
        if (reported_) return;
        reported_ = true;
        qCWarning(lcRuntime).noquote() << QStringLiteral("%1: JavaScript: %2").arg(path(), message);
    }

    QString script_;
    bool newMode_ = false;
    std::vector<ScriptPort> inputsDeclared_, outputsDeclared_;
    std::vector<std::vector<InputPort*>> inputs_;
    std::vector<OutputPort*> outputs_;
    QJSValue main_;  // the compiled script; undefined until the first call
    bool failed_ = false;
    bool reported_ = false;
};

}  // namespace

void registerScriptPatches(PatchRegistry& registry)
{
    registry.add(QStringLiteral("QCJavaScript"), factoryOf<JavaScriptPatch>());
}

}  // namespace runtime
