#include "document/ComponentExport.h"

#include "model/Attribute.h"
#include "model/Composition.h"
#include "model/QuartzComponent.h"
#include "plist/LegacyArchive.h"

#include <QFileInfo>
#include <QLoggingCategory>

#include <map>

namespace document {

Q_DECLARE_LOGGING_CATEGORY(lcExport)

namespace {

const QStringList kGeometryKeys{QStringLiteral("originX"),    QStringLiteral("originY"),
                                QStringLiteral("inputWidth"), QStringLiteral("inputHeight"),
                                QStringLiteral("opacity"),    QStringLiteral("zRotation")};
const QStringList kPositionKeys{QStringLiteral("originX"), QStringLiteral("originY"), QStringLiteral("inputWidth"),
                                QStringLiteral("inputHeight")};

// Geometry and colour channels show red on a timeline, everything else green.
plist::Value timelineColor(bool red)
{
    return plist::Value::data(red ? plist::legacy::encodeColor(1, 0, 0) : plist::legacy::encodeColor(0, 1, 0));
}

plist::Value fixedGeometryValue(const model::Attribute& attribute)
{
    return QuartzComposition::quartzValueForObject(
        attribute.marginAdjustedValueForTimepoint(model::kConstantTimepoint));
}

// A fixed value goes into the node; anything the operator may change (and
// a live video input, always) is published.
bool isFixed(const model::Attribute& attribute)
{
    return !attribute.permissionToChange() && !attribute.typeInfo().alwaysPublished;
}

class ComponentExporter {
public:
    ComponentExporter(ExportContext& context, const model::QuartzComponent& component, int index)
        : context_(context), component_(component), index_(index), y_(500 + 250 * index)
    {
    }

    void run()
    {
        if (!addComponentNode()) return;
        renderer_ = addCopy(context_.templates.renderer, QStringLiteral("Renderer"), 750);
        if (QFileInfo(component_.compositionFilename()).completeBaseName() == QLatin1String("EngineOutput")) {
            position_ = addCopy(context_.templates.position, QStringLiteral("Position"), 900);
            for (const char* axis : {"X", "Y", "W", "H"})
                position_->publishOutputPort(QLatin1String(axis), QStringLiteral("engineOut_") + QLatin1String(axis));
        }
        exportComponentPorts();
        exportGeometryPorts();
        fixPositionGeometry();
        addTimeline();
        connectRenderer();
        addTimer();
        addTimeWindow();
    }

private:
    bool addComponentNode()
    {
        const plist::Value document = component_.quartzCompositionDocument();
        auto source = document.isDictionary() ? std::make_unique<QuartzComposition>(document) : nullptr;
        if (!source || source->rootPatch().nodes().empty()) {
            qCWarning(lcExport) << "Skipping component" << component_.title() << "without a usable composition";
            return false;
        }
        componentRoot_ = std::move(source);
        node_ = root().addNode(componentRoot_->rootPatch().nodes().front()->clone());
        node_->setKey(QStringLiteral("Component_%1").arg(index_));
        node_->setName(component_.title());
        node_->setPosition(QPointF(500, y_));
        return true;
    }

    QuartzPatch* addCopy(const QuartzPatch* source, const QString& kind, double x)
    {
        QuartzPatch* copy = root().addNode(source->clone());
        copy->setName(QStringLiteral("%1 %2").arg(kind).arg(index_));
        copy->setKey(QStringLiteral("%1_%2").arg(kind).arg(index_));
        copy->setPosition(QPointF(x, y_));
        return copy;
    }

    void addEntry(const QString& identifier, const plist::Value& keyFrames, bool red)
    {
        plist::Value entry = plist::Value::emptyDictionary();
        entry.set("color", timelineColor(red));
        entry.set("identifier", identifier.toStdString());
        entry.set("keyFrames", keyFrames);
        entry.set("portNumber", plist::Value(int64_t(entries_.size() + 1)));
        entry.set("visible", true);
        entries_.push_back(std::move(entry));
        identifiers_.append(identifier);
    }

    void publish(QuartzPatch* node, const QString& port, const QString& name, const QString& label,
                 const plist::Value& value)
    {
        node->publishPort(port, name, label);
        context_.output.setInputParameter(value, name);
        context_.usedNames.insert(name);
    }

    void exportComponentPorts()
    {
        for (const model::Attribute* attribute : component_.attributes()) {
            if (!attribute->quartzAttribute()) continue;
            const plist::Value values = attribute->quartzValues();
            for (const auto& [key, value] : values.dictionary()) {
                const QString portKey = QString::fromStdString(key);
                const plist::Value info = componentRoot_->rootPatch().infoForPublishedInputPortWithName(portKey);
                const QString port = info.isNull() ? portKey : QString::fromStdString(info.value("port").string());
                exportComponentPort(*attribute, port, value);
            }
        }
    }

    void exportComponentPort(const model::Attribute& attribute, const QString& port, const plist::Value& value)
    {
        if (attribute.animateable()) {
            if (attribute.typeInfo().curve == model::ExportCurve::SmoothPerChannel) {
                const plist::Value curves = attribute.keyFrameInformation();
                const char* channels[] = {"%1_red", "%1_green", "%1_blue"};
                for (size_t c = 0; c < 3; ++c) {
                    const QString identifier = QString::fromLatin1(channels[c]).arg(port);
                    addEntry(identifier, c < curves.size() ? curves.array()[c] : plist::Value::emptyArray(), true);
                    colourChannels_.insert(identifier);
                }
            } else {
                addEntry(port, value, false);
                const plist::Array multiplexed = attribute.keyFrameValuesForMultiplexer();
                if (!multiplexed.empty()) multiplexerValues_[port] = multiplexed;
            }
            return;
        }
        if (value.isNull()) return;
        if (isFixed(attribute)) {
            node_->setPortValue(value, port);
        } else if (port.startsWith(QLatin1String("CI"))) {
            // An image filter's own port keeps its key as the published name.
            publish(node_, port, port, port + context_.separator + component_.title(), value);
        } else {
            QString label = context_.keyFactory(component_, context_.separator, port);
            const QString name = context_.uniqueName(label, true);
            publish(node_, port, name, label, value);
        }
    }

    void exportGeometryPorts()
    {
        for (const QString& key : kGeometryKeys) {
            const model::Attribute* attribute = component_.attributeForKey(key);
            if (!attribute) continue;
            if (attribute->animateable()) {
                if (!identifiers_.contains(key)) addEntry(key, attribute->keyFrameInformation(), true);
                continue;
            }
            const plist::Value value = fixedGeometryValue(*attribute);
            if (value.isNull()) continue;
            if (isFixed(*attribute)) {
                renderer_->setPortValue(value, key);
            } else {
                QString label = context_.keyFactory(component_, context_.separator, key);
                publish(renderer_, key, context_.uniqueName(label, false), label, value);
            }
        }
    }

    void fixPositionGeometry()
    {
        if (!position_) return;
        for (const QString& key : kPositionKeys) {
            const model::Attribute* attribute = component_.attributeForKey(key);
            if (!attribute || attribute->animateable() || !isFixed(*attribute)) continue;
            const plist::Value value = fixedGeometryValue(*attribute);
            if (!value.isNull()) position_->setPortValue(value, key);
        }
    }

    std::vector<QString> destinationsFor(const QString& identifier) const
    {
        std::vector<QString> nodes;
        if (kGeometryKeys.contains(identifier)) {
            nodes.push_back(renderer_->key());
            if (identifier == QLatin1String("inputWidth") || identifier == QLatin1String("inputHeight"))
                nodes.push_back(node_->key());
        } else {
            nodes.push_back(node_->key());
        }
        if (position_ && kPositionKeys.contains(identifier)) nodes.push_back(position_->key());
        return nodes;
    }

    void addTimeline()
    {
        if (entries_.empty()) return;
        plist::Value state = plist::Value::emptyDictionary();
        state.set("timeLines", plist::Value(entries_));
        state.set("version", plist::Value(int64_t(1)));
        state.set("timebase", context_.hasStopFrames ? "external" : "parent");
        QuartzPatch* timeline = root().addPatchWithClass(QStringLiteral("QCTimeLine"), state);
        timeline->setKey(QStringLiteral("TimeLine_%1").arg(node_->key()));
        timeline->setName(QStringLiteral("TimeLine %1").arg(node_->name()));
        timeline->setPosition(QPointF(250, y_ + 100));
        const QString timelineKey = timeline->key();
        auto output = [](int portNumber) { return QStringLiteral("output_%1").arg(portNumber); };

        for (int i = 0; i < identifiers_.size(); ++i) {
            const QString& identifier = identifiers_[i];
            const int portNumber = i + 1;
            const std::vector<QString> destinations = destinationsFor(identifier);
            if (auto mux = multiplexerValues_.find(identifier); mux != multiplexerValues_.end()) {
                plist::Value sources = plist::Value::emptyDictionary();
                for (size_t n = 0; n < mux->second.size(); ++n) {
                    plist::Value entry = plist::Value::emptyDictionary();
                    entry.set("value", mux->second[n]);
                    sources.set(QStringLiteral("source_%1").arg(n).toStdString(), std::move(entry));
                }
                plist::Value muxState = plist::Value::emptyDictionary();
                muxState.set("customInputPortStates", std::move(sources));
                muxState.set("inputCount", plist::Value(int64_t(mux->second.size())));
                muxState.set("portClass", "QCStringPort");
                QuartzPatch* multiplexer = root().addPatchWithClass(QStringLiteral("QCMultiplexer"), muxState);
                multiplexer->setKey(QStringLiteral("Multiplexer_%1").arg(identifier));
                multiplexer->setName(QStringLiteral("Multiplexer %1").arg(identifier));
                multiplexer->setPosition(QPointF(375, y_));
                root().addConnectionFromComponent(timelineKey, output(portNumber), multiplexer->key(),
                                                  QStringLiteral("inputIndex"));
                for (const QString& d : destinations)
                    root().addConnectionFromComponent(multiplexer->key(), QStringLiteral("output"), d, identifier);
            } else if (colourChannels_.contains(identifier)) {
                // The red entry brings the colour maker; green and blue
                // arrive through it.
                if (!identifier.contains(QLatin1String("_red"))) continue;
                const QString base = identifier.left(identifier.size() - 4);
                QuartzPatch* maker = root().addPatchWithClass(QStringLiteral("QCColorFromComponents"), plist::Value(),
                                                              plist::Dictionary{{"inputAlpha", 1.0}});
                maker->setIdentifier(QStringLiteral("rgb"));
                maker->setKey(QStringLiteral("ColorMaker_%1").arg(base));
                maker->setName(QStringLiteral("Color Maker %1").arg(base));
                maker->setPosition(QPointF(375, y_));
                for (int c = 0; c < 3; ++c)
                    root().addConnectionFromComponent(timelineKey, output(portNumber + c), maker->key(),
                                                      QStringLiteral("input%1").arg(c + 1));
                for (const QString& d : destinations)
                    root().addConnectionFromComponent(maker->key(), QStringLiteral("outputColor"), d, base);
            } else {
                for (const QString& d : destinations)
                    root().addConnectionFromComponent(timelineKey, output(portNumber), d, identifier);
            }
        }
        timeline->setTimebase(plist::Value("external"));
        root().addConnectionFromComponent(context_.stopFramesKey, QStringLiteral("outputTime"), timelineKey,
                                          QStringLiteral("_time"));
    }

    void connectRenderer()
    {
        const QString& scaler = context_.scalerKey;
        const QString renderer = renderer_->key();
        root().addConnectionFromComponent(node_->key(), QStringLiteral("outputImage"), renderer, QStringLiteral("image"));
        const std::pair<const char*, const char*> scaling[] = {{"widthScalingFactor", "scaleFactorWidth"},
                                                               {"heightScalingFactor", "scaleFactorHeight"},
                                                               {"renderWidth", "renderWidth"},
                                                               {"renderHeight", "renderHeight"}};
        for (const auto& [from, to] : scaling)
            root().addConnectionFromComponent(scaler, QLatin1String(from), renderer, QLatin1String(to));
        if (position_) {
            root().addConnectionFromComponent(scaler, QStringLiteral("pixelScaleW"), position_->key(),
                                              QStringLiteral("scaleFactorWidth"));
            root().addConnectionFromComponent(scaler, QStringLiteral("pixelScaleH"), position_->key(),
                                              QStringLiteral("scaleFactorHeight"));
        }
    }

    // The component's span, cut at the composition's end.
    void setSpan(QuartzPatch* patch) const
    {
        const double end = std::min(context_.composition.duration(), component_.endTime());
        patch->setPortValue(plist::Value::singleReal(float(component_.startTime())), QStringLiteral("startTime"));
        patch->setPortValue(plist::Value::singleReal(float(end)), QStringLiteral("endTime"));
    }

    void addTimer()
    {
        if (!node_->timebased() || !context_.templates.timer) return;
        QuartzPatch* timer = root().addNode(context_.templates.timer->clone());
        timer->setKey(QStringLiteral("timer_%1").arg(renderer_->key()));
        setSpan(timer);
        timer->setPosition(QPointF(250, y_));
        root().addConnectionFromComponent(context_.stopFramesKey, QStringLiteral("outputTime"), timer->key(),
                                          QStringLiteral("patchTime"));
        node_->setTimebase(plist::Value("external"));
        root().addConnectionFromComponent(timer->key(), QStringLiteral("time"), node_->key(), QStringLiteral("_time"));
    }

    void addTimeWindow()
    {
        if (!context_.templates.enabler || !context_.templates.logic) return;
        QuartzPatch* enabler = root().addNode(context_.templates.enabler->clone());
        setSpan(enabler);
        enabler->setPosition(QPointF(250, y_));
        enabler->setKey(QStringLiteral("enabler_%1").arg(renderer_->key()));
        QuartzPatch* logic = root().addNode(context_.templates.logic->clone());
        logic->setPosition(QPointF(400, y_));
        logic->setKey(QStringLiteral("enablelogic_%1").arg(renderer_->key()));
        enabler->setTimebase(plist::Value("external"));
        root().addConnectionFromComponent(context_.stopFramesKey, QStringLiteral("outputTime"), enabler->key(),
                                          QStringLiteral("patchTime"));
        root().addConnectionFromComponent(enabler->key(), QStringLiteral("outputResult"), logic->key(),
                                          QStringLiteral("inputValue1"));
        root().addConnectionFromComponent(logic->key(), QStringLiteral("outputResult"), renderer_->key(),
                                          QStringLiteral("_enable"));
        if (position_)
            root().addConnectionFromComponent(logic->key(), QStringLiteral("outputResult"), position_->key(),
                                              QStringLiteral("enabled"));
        // The per-component switch the operator sees.
        QString label = component_.title() + context_.separator + QStringLiteral("Enable");
        const QString name = context_.uniqueName(label, false);
        publish(logic, QStringLiteral("inputValue2"), name, label,
                plist::Value(component_.visibleInCompositionEditor()));
    }

    QuartzPatch& root() { return context_.root(); }

    ExportContext& context_;
    const model::QuartzComponent& component_;
    const int index_;
    const double y_;
    std::unique_ptr<QuartzComposition> componentRoot_;
    QuartzPatch* node_ = nullptr;
    QuartzPatch* renderer_ = nullptr;
    QuartzPatch* position_ = nullptr;
    plist::Array entries_;
    QStringList identifiers_;
    QSet<QString> colourChannels_;
    std::map<QString, plist::Array> multiplexerValues_;
};

}  // namespace

QString ExportContext::uniqueName(QString& label, bool numberLabel) const
{
    QString name = CompositionExport::stringByTrimmingInvalidKeyCharacters(label);
    const QString base = label;
    for (int n = 1; usedNames.contains(name); ++n) {
        const QString numbered = base + separator + QString::number(n);
        name = CompositionExport::stringByTrimmingInvalidKeyCharacters(numbered);
        if (numberLabel) label = numbered;
    }
    return name;
}

void exportComponent(ExportContext& context, const model::QuartzComponent& component, int index)
{
    ComponentExporter(context, component, index).run();
}

}  // namespace document
