#pragma once
// Builds, with the file model, the graph the export makes for components
// (its geometry, time window and local time parts), so that the "Renderer"
// file is tested the way it is used.

#include "StandardComponentsSupport.h"

#include "quartz/QuartzPatch.h"

namespace stdtest {

struct Placement {
    double originX = 0, originY = 0, width = 100, height = 100;  // template pixels, origin lower left
    double opacity = 1, zRotation = 0;
    double startTime = 0, endTime = 10;
    bool visible = true;
};

class ExportedTemplate {
public:
    explicit ExportedTemplate(QSize templateSize = QSize(1920, 1080))
        : rendererFile_(loadModel(QStringLiteral("Renderer.qtz")))
    {
        QuartzPatch& root = out_.rootPatch();
        QuartzPatch& scaler = copy(QStringLiteral("Scaling Factor"), QStringLiteral("Scaler"));
        scaler.setPortValue(plist::Value::singleReal(float(templateSize.width())), QStringLiteral("compositionWidth"));
        scaler.setPortValue(plist::Value::singleReal(float(templateSize.height())), QStringLiteral("compositionHeight"));

        plist::Value parent = plist::Value::emptyDictionary();
        parent.set("timebase", "parent");
        root.addPatchWithClass(QStringLiteral("QLNPatchTimePlugIn"), parent)->setKey(QStringLiteral("stopframetimer"));
        plist::Value stopState = plist::Value::emptyDictionary();
        stopState.set("timebase", "external");
        plist::Value plugInState = plist::Value::emptyDictionary();
        plugInState.set("compositionDuration", 100.0);
        plugInState.set("enableStopframesInQLNApps", false);
        stopState.set("plugInState", plugInState);
        QuartzPatch* stops = root.addPatchWithClass(QStringLiteral("QCPlugInPatch"), stopState);
        stops->setIdentifier(QStringLiteral("QLNStopframesPlugIn"));
        stops_ = stops->key();
        root.addConnectionFromComponent(QStringLiteral("stopframetimer"), QStringLiteral("outputTime"), stops_, QStringLiteral("_time"));
    }

    // Adds the first child of a component file at the placement; `inputs`
    // are fixed values of its ports. Returns the renderer's key.
    QString addComponent(const QString& fileName, const Placement& p, const std::map<QString, plist::Value>& inputs = {},
                         bool withPosition = false)
    {
        const int i = ++count_;
        QuartzPatch& root = out_.rootPatch();
        auto file = loadModel(fileName);
        auto component = file->rootPatch().nodes().front()->clone();
        component->setKey(QStringLiteral("Component_%1").arg(i));
        QuartzPatch& node = *root.addNode(std::move(component));
        node.setPortValue(plist::Value::singleReal(float(p.width)), QStringLiteral("inputWidth"));
        node.setPortValue(plist::Value::singleReal(float(p.height)), QStringLiteral("inputHeight"));
        for (const auto& [key, value] : inputs) node.setPortValue(value, key);

        const QString r = QStringLiteral("Renderer_%1").arg(i);
        QuartzPatch& renderer = copy(QStringLiteral("Renderer"), r);
        const std::pair<const char*, double> geometry[] = {{"originX", p.originX}, {"originY", p.originY},   {"inputWidth", p.width},
                                                           {"inputHeight", p.height}, {"opacity", p.opacity}, {"zRotation", p.zRotation}};
        for (const auto& [key, value] : geometry) renderer.setPortValue(plist::Value::singleReal(float(value)), QString::fromLatin1(key));
        connect(node.key(), QStringLiteral("outputImage"), r, QStringLiteral("image"));
        connect(QStringLiteral("Scaler"), QStringLiteral("widthScalingFactor"), r, QStringLiteral("scaleFactorWidth"));
        connect(QStringLiteral("Scaler"), QStringLiteral("heightScalingFactor"), r, QStringLiteral("scaleFactorHeight"));
        connect(QStringLiteral("Scaler"), QStringLiteral("renderWidth"), r, QStringLiteral("renderWidth"));
        connect(QStringLiteral("Scaler"), QStringLiteral("renderHeight"), r, QStringLiteral("renderHeight"));

        QString position;
        if (withPosition) {
            position = QStringLiteral("Position_%1").arg(i);
            QuartzPatch& pos = copy(QStringLiteral("Position"), position);
            for (const auto& [key, value] : geometry) {
                if (QLatin1String(key) != QLatin1String("opacity") && QLatin1String(key) != QLatin1String("zRotation"))
                    pos.setPortValue(plist::Value::singleReal(float(value)), QString::fromLatin1(key));
            }
            for (const char* out : {"X", "Y", "W", "H"})
                pos.publishOutputPort(QString::fromLatin1(out), QStringLiteral("engineOut_%1").arg(QLatin1String(out)));
            connect(QStringLiteral("Scaler"), QStringLiteral("pixelScaleW"), position, QStringLiteral("scaleFactorWidth"));
            connect(QStringLiteral("Scaler"), QStringLiteral("pixelScaleH"), position, QStringLiteral("scaleFactorHeight"));
        }

        if (node.timebased()) {
            QuartzPatch& timer = copy(QStringLiteral("Timer"), QStringLiteral("timer_%1").arg(r));
            timer.setPortValue(plist::Value::singleReal(float(p.startTime)), QStringLiteral("startTime"));
            timer.setPortValue(plist::Value::singleReal(float(p.endTime)), QStringLiteral("endTime"));
            connect(stops_, QStringLiteral("outputTime"), timer.key(), QStringLiteral("patchTime"));
            node.setTimebase(plist::Value("external"));
            connect(timer.key(), QStringLiteral("time"), node.key(), QStringLiteral("_time"));
            timer.publishOutputPort(QStringLiteral("time"), QStringLiteral("localTime_%1").arg(i));
        }

        QuartzPatch& enabler = copy(QStringLiteral("Enabler"), QStringLiteral("enabler_%1").arg(r));
        enabler.setPortValue(plist::Value::singleReal(float(p.startTime)), QStringLiteral("startTime"));
        enabler.setPortValue(plist::Value::singleReal(float(p.endTime)), QStringLiteral("endTime"));
        enabler.setTimebase(plist::Value("external"));
        QuartzPatch& logic = copy(QStringLiteral("Logic_1"), QStringLiteral("enablelogic_%1").arg(r));
        connect(stops_, QStringLiteral("outputTime"), enabler.key(), QStringLiteral("patchTime"));
        connect(enabler.key(), QStringLiteral("outputResult"), logic.key(), QStringLiteral("inputValue1"));
        connect(logic.key(), QStringLiteral("outputResult"), r, QStringLiteral("_enable"));
        if (withPosition) connect(logic.key(), QStringLiteral("outputResult"), position, QStringLiteral("enabled"));
        const QString enableName = QStringLiteral("Component_%1_Enable").arg(i);
        logic.publishPort(QStringLiteral("inputValue2"), enableName, enableName);
        out_.setInputParameter(plist::Value(p.visible), enableName);
        enabler.publishOutputPort(QStringLiteral("outputResult"), QStringLiteral("inWindow_%1").arg(i));
        return r;
    }

    std::shared_ptr<const runtime::Composition> load() const
    {
        const auto data = out_.fileDataByRemovingPixelFormatSetting(true);
        EXPECT_TRUE(data);
        QString error;
        auto composition = runtime::Composition::loadData(data.value_or(QByteArray()), &error);
        EXPECT_TRUE(composition) << error.toStdString();
        if (composition) {
            EXPECT_TRUE(composition->problems().isEmpty()) << composition->problems().join(QLatin1Char('\n')).toStdString();
        }
        return composition;
    }

    QImage render(QSize destination, double time) const
    {
        auto composition = load();
        if (!composition) return {};
        runtime::Renderer renderer(composition, destination);
        renderer.render(time);
        return renderer.snapshot();
    }

private:
    QuartzPatch& copy(const QString& name, const QString& key)
    {
        QuartzPatch* original = rendererFile_->rootPatch().patchWithName(name);
        EXPECT_TRUE(original) << name.toStdString();
        auto patch = original->clone();
        patch->setKey(key);
        return *out_.rootPatch().addNode(std::move(patch));
    }
    void connect(const QString& a, const QString& ap, const QString& b, const QString& bp)
    {
        out_.rootPatch().addConnectionFromComponent(a, ap, b, bp);
    }

    std::unique_ptr<QuartzComposition> rendererFile_;
    QuartzComposition out_;
    QString stops_;
    int count_ = 0;
};

}  // namespace stdtest
