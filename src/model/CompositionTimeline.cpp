// A composition's stop frames, guide rulers and info dictionary.

#include "model/Attribute.h"
#include "model/Composition.h"
#include "model/StandardComponents.h"
#include "model/ObjectStore.h"
#include "model/PathUtilities.h"
#include "model/QuartzComponent.h"
#include "model/Ruler.h"
#include "model/StopFrame.h"

#include <QFileInfo>

#include <algorithm>
#include <cmath>

namespace model {

std::vector<StopFrame*> Composition::stopFrames() const
{
    std::vector<StopFrame*> result;
    for (ManagedObject* o : toMany(QStringLiteral("stopFrames"))) result.push_back(static_cast<StopFrame*>(o));
    return result;
}

std::vector<double> Composition::stopFrameTimepoints() const
{
    std::vector<double> times;
    for (const StopFrame* s : stopFrames()) times.push_back(s->timepoint());
    std::sort(times.begin(), times.end());
    return times;
}

QVariantList Composition::stopFrameDictionaries() const
{
    std::vector<StopFrame*> sorted = stopFrames();
    std::stable_sort(sorted.begin(), sorted.end(), [](const StopFrame* a, const StopFrame* b) { return a->timepoint() < b->timepoint(); });
    QVariantList result;
    for (const StopFrame* s : sorted) result.append(s->dictionary());
    return result;
}

StopFrame* Composition::addStopFrame(double timepoint, const QString& name)
{
    StopFrame* stopFrame = store()->insertNewObject<StopFrame>();
    stopFrame->setTimepoint(timepoint);
    if (!name.isEmpty()) stopFrame->setTriggerInformation(name);
    addToMany(QStringLiteral("stopFrames"), stopFrame);
    return stopFrame;
}

void Composition::removeStopFrame(StopFrame* stopFrame)
{
    removeFromMany(QStringLiteral("stopFrames"), stopFrame);
    store()->deleteObject(stopFrame);
}

std::vector<Ruler*> Composition::rulers() const
{
    std::vector<Ruler*> result;
    for (ManagedObject* o : toMany(QStringLiteral("rulers"))) result.push_back(static_cast<Ruler*>(o));
    return result;
}

Ruler* Composition::addRulerAtPosition(double position, bool horizontal)
{
    if (!showsRulers()) setShowsRulers(true);
    Ruler* ruler = store()->insertNewObject<Ruler>();
    ruler->setToOne(QStringLiteral("composition"), this);
    ruler->setPosition(std::round(position));
    ruler->setHorizontal(horizontal);
    return ruler;
}

void Composition::removeRuler(Ruler* ruler)
{
    // A ruler without its composition has no use: it goes with the link.
    removeFromMany(QStringLiteral("rulers"), ruler);
    store()->deleteObject(ruler);
}

QVariantMap Composition::compositionInfo() const
{
    QVariantList stops;
    for (const StopFrame* s : stopFrames()) {
        QVariantMap entry{{QStringLiteral("timepoint"), float(s->timepoint())}};
        if (!s->triggerInformation().isEmpty()) entry.insert(QStringLiteral("title"), s->triggerInformation());
        stops.append(entry);
    }
    QVariantList components;
    for (const QuartzComponent* c : componentsSortedByZLevel()) components.append(c->componentInfo());
    return {
        {QStringLiteral("duration"), float(duration())},
        {QStringLiteral("width"), qint32(videoResolution_.width())},
        {QStringLiteral("height"), qint32(videoResolution_.height())},
        {QStringLiteral("pixelAspectRatio"), float(videoResolution_.aspectRatio())},
        {QStringLiteral("stopframes"), stops},
        {QStringLiteral("components"), components},
    };
}

}  // namespace model

namespace model {

namespace {
bool isFilePathAttribute(const Attribute* a) { return a->typeInfo().filePath; }
}  // namespace

QStringList Composition::upgradeComponents()
{
    // Only the text component has ever changed in ways documents must follow.
    static const QStringList upgradable{QStringLiteral("Text.qtz")};
    QStringList upgraded;
    for (QuartzComponent* c : componentsSortedByZLevel()) {
        const QString file = QFileInfo(c->compositionFilename()).fileName();
        if (!upgradable.contains(file)) continue;
        const QString current = StandardComponents::pathForComponent(QFileInfo(file).completeBaseName());
        if (current.isEmpty()) continue;
        c->updateWithFile(current);
        upgraded.append(c->title());
    }
    return upgraded;
}

QStringList Composition::makePathsRelative()
{
    QStringList oldPaths;
    if (!fileURL_.isValid() || !fileURL_.isLocalFile()) return oldPaths;
    const QString documentPath = fileURL_.toLocalFile();
    for (QuartzComponent* c : componentsSortedByZLevel()) {
        for (Attribute* a : c->attributes()) {
            if (!isFilePathAttribute(a)) continue;
            const QString path = a->currentValue().toString();
            oldPaths.append(path);
            c->setValueForKey(a->key(), pathRelativeTo(path, documentPath));
        }
    }
    return oldPaths;
}

QList<QVariantMap> Composition::embedResources()
{
    QList<QVariantMap> copies;
    if (!fileURL_.isValid() || !fileURL_.isLocalFile()) return copies;
    const QString folder = QFileInfo(fileURL_.toLocalFile()).path();
    for (QuartzComponent* c : componentsSortedByZLevel()) {
        for (Attribute* a : c->attributes()) {
            if (!isFilePathAttribute(a)) continue;
            const QFileInfo file(a->currentValue().toString());
            if (!file.exists() || file.isDir()) continue;
            copies.append({{QStringLiteral("source"), file.filePath()},
                           {QStringLiteral("dest"), folder + QLatin1Char('/') + file.fileName()}});
            c->setValueForKey(a->key(), file.fileName());
        }
    }
    return copies;
}

}  // namespace model
