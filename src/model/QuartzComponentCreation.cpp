// Making a component from a composition file: which published inputs become
// attributes, the editor's standard attributes, the initial size and place,
// and wrapping a file that draws to the screen into one that makes an image.

#include "model/Composition.h"
#include "model/ObjectStore.h"
#include "model/QuartzComponent.h"
#include "model/RichFontValue.h"
#include "quartz/QuartzComposition.h"
#include "quartz/QuartzPatch.h"
#include "runtime/FontResolver.h"
#include "runtime/Renderer.h"

#include <QDir>
#include <QFileInfo>
#include <QFontDatabase>
#include <QImage>
#include <QLoggingCategory>
#include <QStandardPaths>

namespace model {

Q_DECLARE_LOGGING_CATEGORY(lcComponent)

namespace {

QString couldNotLoad(const QString& path)
{
    return QStringLiteral("Could not load composition \"%1\"").arg(path);
}

// The value a new attribute starts with: the renderer's own, unless the
// caller preset one; font names become fonts of the size the file gives.
QVariant initialValue(const QString& key, runtime::Renderer& renderer, const QVariantMap& inputValues,
                      QStringList* warnings)
{
    QVariant value = inputValues.contains(key) ? inputValues.value(key) : renderer.inputValue(key);
    if (key.contains(QLatin1String("Rich_Font_Name"))) {
        return QVariant::fromValue(
            RichFontValue(key, [&renderer](const QString& k) { return renderer.inputValue(k); }));
    }
    if (key.contains(QLatin1String("Font_Name"))) {
        const QString sizeKey = QString(key).replace(QLatin1String("Font_Name"), QLatin1String("Font_Size"));
        const float size = renderer.inputValue(sizeKey).toFloat();
        const QString name = value.toString();
        const runtime::ResolvedFont resolved = runtime::resolveFont(name);
        QFont font = resolved.font;
        if (resolved.substituted || name.isEmpty()) {
            font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
            if (warnings)
                warnings->append(QStringLiteral("Could not find font \"%1\", substituted with font \"%2\".")
                                     .arg(name, font.family()));
        }
        if (size > 0) font.setPointSizeF(size);
        return QVariant::fromValue(font);
    }
    return value;
}

struct StandardAttribute {
    const char* key;
    const char* label;
};

}  // namespace

bool QuartzComponent::shallCreateAttributeForKey(const QString& key)
{
    if (key == QLatin1String("inputWidth") || key == QLatin1String("inputHeight")) return false;
    if (key.contains(QLatin1String("Font_Size"))) return false;
    if (!key.contains(QLatin1String("Rich_Font_"))) return true;
    return key.contains(QLatin1String("Rich_Font_Name"));
}

QString QuartzComponent::cacheFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) + QStringLiteral("/") +
           bundleIdentifier();
}

QString QuartzComponent::compositionWrappedWithRenderInImageForFile(const QString& path, const QSizeF& /*documentSize*/)
{
    // The size is not used: the wrapped picture starts at 200 × 200 and then
    // follows the component's Width and Height.
    QString error;
    auto source = QuartzComposition::compositionWithFile(path, &error);
    if (!source) {
        qCWarning(lcComponent) << "Cannot wrap" << path << error;
        return {};
    }
    QuartzComposition wrapped;
    plist::Value state = plist::Value::emptyDictionary();
    state.set("version", plist::Value(int64_t(1)));
    state.set("target", plist::Value("GL_TEXTURE_RECTANGLE_EXT"));
    state.set("pixelFormat", plist::Value("RGBAf"));
    state.set("noFeedback", plist::Value(true));
    state.set("noDepthBuffer", plist::Value(false));
    state.set("width", plist::Value(int64_t(200)));
    state.set("height", plist::Value(int64_t(200)));
    state.set("colorCorrection", plist::Value(int64_t(1)));
    const plist::Dictionary ports{
        {"inputWidth", plist::Value(int64_t(200))}, {"inputHeight", plist::Value(int64_t(200))},
        {"inputRender", plist::Value(true)},        {"inputMipmaps", plist::Value(false)},
        {"inputTarget", plist::Value(int64_t(0))},
    };
    QuartzPatch* renderInImage =
        wrapped.rootPatch().addPatchWithClass(QStringLiteral("QCRenderInImage"), state, ports);
    if (!renderInImage) return {};
    renderInImage->addNodesOfPatch(source->rootPatch());
    renderInImage->publishPort(QStringLiteral("inputWidth"), QStringLiteral("inputWidth"));
    renderInImage->publishPort(QStringLiteral("inputHeight"), QStringLiteral("inputHeight"));
    renderInImage->publishOutputPort(QStringLiteral("outputImage"), QStringLiteral("outputImage"));

    const QString folder = cacheFolder();
    if (!QDir().mkpath(folder)) {
        qCWarning(lcComponent) << "Cannot create the cache folder" << folder;
        return {};
    }
    const QString target =
        QStringLiteral("%1/%2-Wrapped.qtz").arg(folder, QFileInfo(path).completeBaseName());
    if (!wrapped.writeToFile(target, false)) return {};
    return target;
}

QuartzComponent* QuartzComponent::initWithQuartzCompositionFile(const QString& givenPath, Composition* composition,
                                                                const QVariantMap& inputValues, QStringList* warnings)
{
    auto warn = [warnings](const QString& text) {
        if (warnings) warnings->append(text);
    };
    QString error;
    auto loaded = runtime::Composition::loadFile(givenPath, &error);
    if (!loaded) {
        warn(couldNotLoad(givenPath));
        return nullptr;
    }
    QString path = givenPath;
    if (!loaded->outputKeys().contains(QStringLiteral("outputImage"))) {
        path = compositionWrappedWithRenderInImageForFile(path, composition->size());
        if (path.isEmpty()) {
            warn(couldNotLoad(QStringLiteral("(null)")));
            return nullptr;
        }
    }

    QuartzComponent* c = composition->store()->insertNewObject<QuartzComponent>();
    if (!c->initWithQuartzCompositionFileGeneric(path, inputValues, warnings)) {
        composition->store()->deleteObject(c);
        warn(couldNotLoad(path));
        return nullptr;
    }
    c->setCompositionFilename(path);
    c->setStartTime(0);
    c->setEndTime(composition->duration());

    float w = 200, h = 200;
    const QImage preset = inputValues.value(QStringLiteral("Image")).value<QImage>();
    if (!preset.isNull()) {
        w = preset.width();
        h = preset.height();
    } else {
        const QVariant rw = c->renderer_->inputValue(QStringLiteral("inputWidth"));
        const QVariant rh = c->renderer_->inputValue(QStringLiteral("inputHeight"));
        if (rw.toInt() != 0) w = rw.toFloat();
        if (rh.toInt() != 0) h = rh.toFloat();
    }
    static const StandardAttribute geometry[] = {
        {"originX", "X"}, {"originY", "Y"}, {"opacity", "Opacity"}, {"zRotation", "Z-Rotation"},
        {"marginX", "Margin X"}, {"marginY", "Margin Y"},
    };
    ObjectStore* store = composition->store();
    auto add = [&](const QString& key, const QString& label, int type, const QVariant& value) {
        Attribute* a = Attribute::create(store, key, label, type, value);
        a->setToOne(QStringLiteral("component"), c);
        return a;
    };
    // Width and height reach the renderer; the rest is the editor's own.
    add(QStringLiteral("inputWidth"), QStringLiteral("Width"), kTypeNumber, w);
    add(QStringLiteral("inputHeight"), QStringLiteral("Height"), kTypeNumber, h);
    for (const StandardAttribute& s : geometry) {
        const double value = QLatin1String(s.key) == QLatin1String("opacity") ? 1.0 : 0.0;
        add(QLatin1String(s.key), QLatin1String(s.label), kTypeNumber, value)->setQuartzAttribute(false);
    }
    Attribute* visible = add(QStringLiteral("visibleInCompositionEditor"),
                             QStringLiteral("visibleInCompositionEditor"), kTypeBoolean, 0.0);
    visible->setQuartzAttribute(false);
    visible->setCurrentValue(true);
    c->bindStandardAttributes();

    c->setupRenderer();
    c->sizeToFit();
    if (c->width() == 0) c->setWidth(composition->width());
    // A zero height becomes the canvas width, not its height; documents
    // made so far depend on it.
    if (c->height() == 0) c->setHeight(composition->width());
    c->setOriginX(float(composition->width()) / 2.0f - c->width() * 0.5);
    c->setOriginY(float(composition->height()) / 2.0f - c->height() * 0.5);
    c->setToOne(QStringLiteral("composition"), composition);
    c->initializeAttributeObservers();
    return c;
}

bool QuartzComponent::initWithQuartzCompositionFileGeneric(const QString& path, const QVariantMap& inputValues,
                                                           QStringList* warnings)
{
    setCompositionFilename(path);
    if (!initializeQuartzComposition()) return false;
    const runtime::Composition& loaded = renderer_->composition();
    const QString name = loaded.name();
    setTitle(name.isEmpty() ? QFileInfo(path).completeBaseName() : name);

    quint64 unmarkedPosition = 0;
    for (const runtime::PortDescription& port : loaded.inputs()) {
        if (!shallCreateAttributeForKey(port.key)) continue;
        QVariantMap info{{PortInfoKeys::key, port.key}, {PortInfoKeys::name, port.name},
                         {PortInfoKeys::type, port.typeName()}};
        if (!port.menuItems.isEmpty()) info.insert(PortInfoKeys::menuItems, port.menuItems);
        const QVariant value = initialValue(port.key, *renderer_, inputValues, warnings);
        Attribute* a = Attribute::createFromPort(store(), info, value);
        a->setQuartzAttribute(true);
        if (a->position() == kNoPosition) a->setPosition(unmarkedPosition++);
        a->setToOne(QStringLiteral("component"), this);
        // Ports named "CI..." are the ones the operator may change from the
        // start; everything else begins locked.
        if (port.key.startsWith(QLatin1String("CI"))) a->setPermissionToChange(true);
    }
    setAttributeValuesOnQuartzComposition();
    return true;
}

void QuartzComponent::bugInfo() const
{
    qCInfo(lcComponent).noquote() << QStringLiteral("Bug info for component %1").arg(title());
    for (const Attribute* a : attributes())
        qCInfo(lcComponent).noquote()
            << QStringLiteral("Attribute %1 has value %2").arg(a->title(), a->currentValue().toString());
}

}  // namespace model
