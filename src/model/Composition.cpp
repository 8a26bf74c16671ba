#include "model/Composition.h"

#include "model/NotificationHelper.h"
#include "model/ObjectStore.h"
#include "model/QuartzComponent.h"
#include "model/Settings.h"
#include "model/Timecode.h"
#include "model/VideoModeCatalogue.h"

#include <QDateTime>
#include <QLoggingCategory>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cmath>

namespace model {

Q_LOGGING_CATEGORY(lcComposition, "velloran.composition")

namespace {
double now()
{
    using namespace std::chrono;
    return duration<double>(steady_clock::now().time_since_epoch()).count();
}
constexpr int kPlayStepMs = 20;
}  // namespace

const EntityDescription& Composition::entityDescription()
{
    static const EntityDescription entity(
        QStringLiteral("Composition"),
        {
            {QStringLiteral("backgroundColor"), QVariant()},
            {QStringLiteral("backgroundImage"), QVariant()},
            {QStringLiteral("posterFrameImage"), QVariant()},
            {QStringLiteral("backgroundMovie"), QVariant()},
            {QStringLiteral("backgroundMode"), 0},
            {QStringLiteral("duration"), 10.0},
            {QStringLiteral("posterFrameTimepoint"), -1.0},
            {QStringLiteral("broadcastMode"), VideoModeCatalogue::defaultModeName()},
            {QStringLiteral("showsRulers"), true},
            {QStringLiteral("showsSafeZones"), false},
        },
        {{QStringLiteral("components"), QStringLiteral("composition"), true, DeleteRule::Cascade},
         {QStringLiteral("stopFrames"), QStringLiteral("composition"), true, DeleteRule::Cascade},
         {QStringLiteral("rulers"), QStringLiteral("composition"), true, DeleteRule::Cascade}},
        {
            {QStringLiteral("componentArray"), {QStringLiteral("components")}},
            {QStringLiteral("stopFramesSet"), {QStringLiteral("stopFrames")}},
            {QStringLiteral("validSelection"), {QStringLiteral("selectedComponentsIndexes")}},
            {QStringLiteral("selectedComponentsIndexes"), {QStringLiteral("selectedComponents")}},
            {QStringLiteral("selectedComponentsIndexesSortedByZLevel"), {QStringLiteral("selectedComponents")}},
            {QStringLiteral("imageBackgroundMode"), {QStringLiteral("backgroundMode")}},
            {QStringLiteral("solidColorBackgroundMode"), {QStringLiteral("backgroundMode")}},
            {QStringLiteral("backgroundMode"), {QStringLiteral("backgroundColor"), QStringLiteral("backgroundImage")}},
            {QStringLiteral("componentsSortedByZLevel"), {QStringLiteral("components")}},
            {QStringLiteral("componentsSortedByInverseZLevel"), {QStringLiteral("components")}},
        });
    return entity;
}

Composition::Composition(ObjectStore* store) : ManagedObject(store, entityDescription()) {}

Composition::~Composition() { cleanUp(); }

void Composition::awakeFromInsert()
{
    commonSetup();
    // A new composition takes its background from the preferences.
    UndoRegistrationPause pause(store()->undoManager());
    setBackgroundMode(Settings::value(Settings::kDefaultBackgroundMode).toInt());
    const QVariant colour = Settings::value(Settings::kDefaultBackgroundColor);
    if (colour.isValid()) setBackgroundColor(colour.value<QColor>());
    const QVariant image = Settings::value(Settings::kDefaultBackgroundImage);
    if (image.isValid()) setBackgroundImage(image.value<QImage>());
    setBackgroundMovie(Settings::stringValue(Settings::kDefaultMovieFilename));
}

void Composition::awakeFromFetch() { commonSetup(); }

void Composition::commonSetup()
{
    editorTimepoint_ = 0;
    zoomMode_ = 0;
    setVideoResolution(VideoResolution(broadcastMode()));
    if (store() && !storeConnection_) {
        storeConnection_ = QObject::connect(store(), &ObjectStore::objectsDidChange, this,
                                            [this](const QList<ManagedObject*>& inserted, const QList<ManagedObject*>&,
                                                   const QList<ManagedObject*>& deleted) { objectsChanged(inserted, deleted); });
    }
}

void Composition::cleanUp()
{
    if (storeConnection_) QObject::disconnect(storeConnection_);
    storeConnection_ = {};
}

void Composition::objectsChanged(const QList<ManagedObject*>& inserted, const QList<ManagedObject*>& deleted)
{
    bool components = false, selection = false;
    for (const QList<ManagedObject*>* list : {&deleted, &inserted}) {
        for (ManagedObject* o : *list) {
            if (auto* c = qobject_cast<QuartzComponent*>(o)) {
                components = true;
                selection = selection || c->selected();
            }
        }
    }
    if (components) {
        willChangeValueForKey(QStringLiteral("componentsSortedByInverseZLevel"));
        didChangeValueForKey(QStringLiteral("componentsSortedByInverseZLevel"));
    }
    if (selection) selectionDidChange();
}

void Composition::setBackgroundColor(const QColor& color) { setStoredValue(QStringLiteral("backgroundColor"), color); }

void Composition::setVideoResolution(const VideoResolution& resolution)
{
    videoResolution_ = resolution;
    const int code = resolution.frameRate();
    if (code >= 0 && code < 8) {
        Timecode::setProjectRateCode(code);
        ticksPerSecond_ = quint64(VideoModeCatalogue::ticksPerSecond(code));
    }
    // An unknown mode resolves to no title, and the stored name follows it.
    if (resolution.title() != broadcastMode()) {
        UndoRegistrationPause pause(store()->undoManager());
        setBroadcastMode(resolution.title());
    }
}

// Time -------------------------------------------------------------------------

void Composition::setEditorTimepoint(double t)
{
    t = std::clamp(t, 0.0, std::max(0.0, duration()));
    if (t == editorTimepoint_) return;
    willChangeValueForKey(QStringLiteral("editorTimepoint"));
    editorTimepoint_ = t;
    didChangeValueForKey(QStringLiteral("editorTimepoint"));
}

void Composition::setEditorTimepointForNearestTick(double t)
{
    const double ticks = double(ticksPerSecond_);
    setEditorTimepoint(std::round(t * ticks) / ticks);
}

bool Composition::validateEditorTimepoint(double& t) const
{
    if (t < 0)
        t = 0;
    else if (t > duration())
        t = duration();
    else
        t = std::round(t * double(ticksPerSecond_)) / double(ticksPerSecond_);
    return t != editorTimepoint_;
}

int Composition::compareTimeInterval(double a, double b)
{
    const qint32 x = qint32(std::lround(a * 100.0)), y = qint32(std::lround(b * 100.0));
    return x < y ? -1 : x > y ? 1 : 0;
}

int Composition::compareTimeInterval(double a, float b)
{
    const qint32 x = qint32(std::lroundf(float(a) * 100.0f)), y = qint32(std::lroundf(b * 100.0f));
    return x < y ? -1 : x > y ? 1 : 0;
}

void Composition::setPlayMode(int mode)
{
    if (mode == playMode_) return;
    willChangeValueForKey(QStringLiteral("playMode"));
    playMode_ = mode;
    didChangeValueForKey(QStringLiteral("playMode"));
    if (mode != 0) {
        playStartTime_ = now() - editorTimepoint_;
        QTimer::singleShot(kPlayStepMs, this, [this] { updatePlayTimepoint(); });
    }
}

void Composition::updatePlayTimepoint()
{
    double elapsed = now() - playStartTime_;
    if (playMode_ == 1) {
        if (elapsed > duration()) {
            setPlayMode(0);
            elapsed = 0;
        } else {
            setEditorTimepoint(elapsed);
        }
    }
    if (playMode_ != 0) {
        QTimer::singleShot(kPlayStepMs, this, [this] { updatePlayTimepoint(); });
        return;
    }
    // Stopped: snap to the tick nearest the wall-clock position.
    setEditorTimepointForNearestTick(elapsed);
    sendChangeNotificationForValues(true);
}

void Composition::sendChangeNotificationForValues(bool onlyAnimated)
{
    for (QuartzComponent* c : componentArray()) c->sendChangeNotificationForValues(onlyAnimated);
}

int Composition::posterFrameMode() const { return posterFrameTimepoint() >= 0 ? 0 : 1; }

void Composition::setPosterFrameMode(int mode) { setPosterFrameTimepoint(mode != 0 ? -1.0 : editorTimepoint_); }

void Composition::setFileURL(const QUrl& url)
{
    fileURL_ = url;
    for (QuartzComponent* c : componentArray()) c->updateFileURL();
}

// Components -----------------------------------------------------------------------

std::vector<QuartzComponent*> Composition::componentArray() const
{
    std::vector<QuartzComponent*> result;
    for (ManagedObject* o : toMany(QStringLiteral("components"))) result.push_back(static_cast<QuartzComponent*>(o));
    return result;
}

std::vector<QuartzComponent*> Composition::componentsSortedByZLevel() const
{
    std::vector<QuartzComponent*> result = componentArray();
    std::stable_sort(result.begin(), result.end(),
                     [](const QuartzComponent* a, const QuartzComponent* b) { return a->zLevel() < b->zLevel(); });
    return result;
}

std::vector<QuartzComponent*> Composition::componentsSortedByInverseZLevel() const
{
    std::vector<QuartzComponent*> result = componentArray();
    std::stable_sort(result.begin(), result.end(),
                     [](const QuartzComponent* a, const QuartzComponent* b) { return a->zLevel() > b->zLevel(); });
    return result;
}

void Composition::addComponent(QuartzComponent* component)
{
    willChangeValueForKey(QStringLiteral("componentsSortedByInverseZLevel"));
    qint64 top = -1;
    for (const QuartzComponent* c : componentArray())
        if (c != component) top = std::max<qint64>(top, c->zLevel());
    component->setZLevel(quint32(top + 1));
    if (component->composition() != this) addToMany(QStringLiteral("components"), component);
    didChangeValueForKey(QStringLiteral("componentsSortedByInverseZLevel"));
    clearSelection();
    component->setSelected(true);
}

QuartzComponent* Composition::addComponenWithQuartzCompositionFile(const QString& path, const QVariantMap& inputValues)
{
    QuartzComponent* c = QuartzComponent::initWithQuartzCompositionFile(path, this, inputValues, nullptr);
    if (!c) {
        qCWarning(lcComposition).noquote() << QStringLiteral("Could not create a component from %1").arg(path);
        return nullptr;
    }
    addComponent(c);
    return c;
}

void Composition::removeComponents(const std::vector<QuartzComponent*>& components)
{
    willChangeValueForKey(QStringLiteral("componentsSortedByInverseZLevel"));
    {
        UndoGroup group(store()->undoManager());
        for (QuartzComponent* c : components) {
            c->setSelected(false);
            store()->deleteObject(c);
        }
        store()->processPendingChanges();
    }
    didChangeValueForKey(QStringLiteral("componentsSortedByInverseZLevel"));
}

// Stop frames, rulers and info are in CompositionTimeline.cpp; selection and
// stacking order in CompositionSelection.cpp.

}  // namespace model
