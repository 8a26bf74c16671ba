#include "document/CompositionExport.h"

#include "document/ComponentExport.h"
#include "model/Composition.h"
#include "model/QuartzComponent.h"
#include "model/Settings.h"
#include "model/StandardComponents.h"
#include "quartz/QuartzComposition.h"
#include "quartz/QuartzValues.h"

#include <QLoggingCategory>

namespace document {

Q_LOGGING_CATEGORY(lcExport, "velloran.export")

namespace {

std::unique_ptr<QuartzComposition> loadStandard(const QString& name)
{
    const QString path = model::StandardComponents::pathForComponent(name);
    return path.isEmpty() ? nullptr : QuartzComposition::compositionWithFile(path);
}

// Copies the named patch of a standard file into the root; nothing when the
// file or the patch is missing.
QuartzPatch* addStandardPatch(QuartzPatch& root, const QString& file, const QString& patch)
{
    auto composition = loadStandard(file);
    QuartzPatch* source = composition ? composition->rootPatch().patchWithName(patch) : nullptr;
    return source ? root.addNode(source->clone()) : nullptr;
}

void addBackground(const model::Composition& composition, QuartzPatch& root)
{
    const QString background = QStringLiteral("Background");
    switch (composition.backgroundMode()) {
    case 1:
        if (QuartzPatch* p = addStandardPatch(root, background, background))
            p->setPortValue(quartz::fileValueForVariant(composition.backgroundColor()), QStringLiteral("backgroundColor"));
        break;
    case 2:
        if (!composition.backgroundMovie().isEmpty()) {
            if (QuartzPatch* p = addStandardPatch(root, QStringLiteral("MovieBackground"), background))
                p->setPortValue(plist::Value(composition.backgroundMovie().toStdString()), QStringLiteral("Filename"));
        } else if (QuartzPatch* p = addStandardPatch(root, background, background)) {
            p->setPortValue(quartz::fileValueForVariant(composition.backgroundImage()), QStringLiteral("backgroundImage"));
        }
        break;
    default: break;
    }
}

plist::Value stopFramesPlugInState(const model::Composition& composition)
{
    const QVariantList stopFrames = composition.stopFrameDictionaries();
    plist::Value plugInState = plist::Value::emptyDictionary();
    plugInState.set("compositionDuration", plist::Value(composition.duration()));
    plugInState.set("enableStopframesInQLNApps", plist::Value(!stopFrames.isEmpty()));
    if (!stopFrames.isEmpty()) plugInState.set("stopframes", quartz::fileValueForVariant(stopFrames));
    plist::Value state = plist::Value::emptyDictionary();
    state.set("timebase", plist::Value("external"));
    state.set("plugInState", std::move(plugInState));
    return state;
}

}  // namespace

QString CompositionExport::documentKey(const model::QuartzComponent& component, const QString& separator,
                                       const QString& portKey)
{
    return component.title() + separator + portKey;
}

QString CompositionExport::stringByTrimmingInvalidKeyCharacters(const QString& string)
{
    QString result = string;
    for (QChar& c : result)
        if (!c.isLetterOrNumber() && c != QLatin1Char('_')) c = QLatin1Char('_');
    return result;
}

bool CompositionExport::exportToPath(const model::Composition& composition, const QString& path,
                                     bool includeBackground, const KeyFactory& keyFactory,
                                     const WorkProgress& progress)
{
    const auto output = exportedComposition(composition, includeBackground, keyFactory, progress);
    if (!output) return false;
    if (!output->writeToFile(path, true)) {
        qCCritical(lcExport) << "Unable to write output file!";
        return false;
    }
    const qint64 steps = qint64(composition.componentArray().size()) + 1;
    reportProgress(progress, steps, steps);
    return true;
}

std::unique_ptr<QuartzComposition> CompositionExport::exportedComposition(const model::Composition& composition,
                                                                          bool includeBackground,
                                                                          const KeyFactory& keyFactory,
                                                                          const WorkProgress& progress)
{
    auto exported = std::make_unique<QuartzComposition>();
    QuartzComposition& output = *exported;
    output.setViewerSize(composition.size());
    QuartzPatch& root = output.rootPatch();

    QuartzPatch* clear = root.addPatchWithClass(
        QStringLiteral("QCClear"), plist::Dictionary{{"clearColorBuffer", true}, {"clearDepthBuffer", true}});
    clear->setPosition(QPointF(500, 400));
    clear->publishPort(QStringLiteral("_enable"), clearEnableKey(), QStringLiteral("Enable Clear"));
    output.setInputParameter(plist::Value(true), clearEnableKey());

    if (includeBackground) addBackground(composition, root);

    auto rendererFile = loadStandard(QStringLiteral("Renderer"));
    if (!rendererFile) return nullptr;
    ExportTemplates templates;
    QuartzPatch& rendererRoot = rendererFile->rootPatch();
    QuartzPatch* scalerTemplate = rendererRoot.patchWithName(QStringLiteral("Scaling Factor"));
    if (!scalerTemplate) {
        qCCritical(lcExport) << "Unable to find scaling patch";
        return nullptr;
    }
    QuartzPatch* scaler = root.addNode(scalerTemplate->clone());
    scaler->setKey(QStringLiteral("Scaler"));
    scaler->setPosition(QPointF(500, 500));
    scaler->setPortValue(plist::Value::singleReal(float(composition.width())), QStringLiteral("compositionWidth"));
    scaler->setPortValue(plist::Value::singleReal(float(composition.height())), QStringLiteral("compositionHeight"));
    templates.renderer = rendererRoot.patchWithName(QStringLiteral("Renderer"));
    if (!templates.renderer) {
        qCCritical(lcExport) << "Unable to find renderer patch";
        return nullptr;
    }
    templates.position = rendererRoot.patchWithName(QStringLiteral("Position"));
    if (!templates.position) {
        qCCritical(lcExport) << "Unable to find position patch";
        return nullptr;
    }
    templates.timer = rendererRoot.patchWithName(QStringLiteral("Timer"));
    templates.enabler = rendererRoot.patchWithName(QStringLiteral("Enabler"));
    templates.logic = rendererRoot.patchWithName(QStringLiteral("Logic_1"));

    QuartzPatch* patchTime = root.addPatchWithClass(QStringLiteral("QLNPatchTimePlugIn"),
                                                    plist::Dictionary{{"timebase", "parent"}});
    patchTime->setPosition(QPointF(-200, 500));
    patchTime->setKey(QStringLiteral("stopframetimer"));
    patchTime->setName(QStringLiteral("Stop Frame Timer"));

    const bool hasStopFrames = !composition.stopFrames().empty();
    QuartzPatch* stopFrames = root.addPatchWithClass(QStringLiteral("QCPlugInPatch"), stopFramesPlugInState(composition));
    stopFrames->setIdentifier(QStringLiteral("QLNStopframesPlugIn"));
    stopFrames->setPosition(QPointF(0, 500));
    if (hasStopFrames) {
        stopFrames->publishPort(QStringLiteral("inputTrigger"), triggerKey(), QStringLiteral("trigger"));
        stopFrames->publishOutputPort(QStringLiteral("outputWaitingForTrigger"), waitingForTriggerKey());
    }
    root.addConnectionFromComponent(patchTime->key(), QStringLiteral("outputTime"), stopFrames->key(),
                                    QStringLiteral("_time"));
    stopFrames->publishOutputPort(QStringLiteral("outputActive"), activeKey());

    ExportContext context{output, composition, keyFactory, templates, scaler->key(), stopFrames->key()};
    context.separator = model::Settings::value(model::Settings::kAvoidSpacesInPortLabels).toBool()
                            ? QStringLiteral("_")
                            : QStringLiteral(" ");
    context.hasStopFrames = hasStopFrames;
    int index = 1;
    const auto components = composition.componentsSortedByZLevel();
    // One step more for writing the file, which the caller reports.
    const qint64 steps = qint64(components.size()) + 1;
    for (const model::QuartzComponent* component : components) {
        reportProgress(progress, index - 1, steps);
        exportComponent(context, *component, index++);
    }

    if (includeBackground && model::Settings::value(model::Settings::kPreviewFPS).toBool())
        addStandardPatch(root, QStringLiteral("FPS"), QStringLiteral("Background"));
    return exported;
}

}  // namespace document
