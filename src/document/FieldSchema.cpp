#include "document/FieldSchema.h"

#include "document/CompositionExport.h"
#include "model/Attribute.h"
#include "model/AttributeJson.h"
#include "model/Composition.h"
#include "model/QuartzComponent.h"
#include "model/RichFontValue.h"
#include "model/Settings.h"
#include "model/VideoModeCatalogue.h"
#include "runtime/Composition.h"

#include <QFileInfo>
#include <QFont>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSaveFile>
#include <QSet>

#include <algorithm>

namespace document {

namespace {

const QString kSchemaUri = QStringLiteral("https://superflytv.github.io/GraphicsDataDefinition/gdd-meta-schema/v1/schema.json");

const QStringList& imageExtensions()
{
    static const QStringList extensions{QStringLiteral("png"), QStringLiteral("jpg"), QStringLiteral("jpeg"),
                                        QStringLiteral("tif"), QStringLiteral("tiff"), QStringLiteral("gif"),
                                        QStringLiteral("bmp"), QStringLiteral("psd")};
    return extensions;
}

// Keys as the export makes its published inputs' names: title, separator and
// port key, reduced to letters, digits and underscores, numbered when taken.
class FieldKeys {
public:
    QString make(const model::QuartzComponent& component, const QString& attributeKey)
    {
        const QString separator = model::Settings::value(model::Settings::kAvoidSpacesInPortLabels).toBool()
                                      ? QStringLiteral("_")
                                      : QStringLiteral(" ");
        const QString label = CompositionExport::documentKey(component, separator, attributeKey);
        QString key = CompositionExport::stringByTrimmingInvalidKeyCharacters(label);
        for (int n = 1; used_.contains(key); ++n)
            key = CompositionExport::stringByTrimmingInvalidKeyCharacters(label + separator + QString::number(n));
        used_.insert(key);
        return key;
    }

private:
    QSet<QString> used_;
};

const runtime::PortDescription* portOf(const model::QuartzComponent& component, const QString& key)
{
    const runtime::Composition* loaded = component.loadedComposition().get();
    return loaded ? loaded->input(key) : nullptr;
}

void setRange(QJsonObject& field, const runtime::PortDescription* port)
{
    if (!port) return;
    if (port->minimum) field.insert(QStringLiteral("minimum"), *port->minimum);
    if (port->maximum) field.insert(QStringLiteral("maximum"), *port->maximum);
}

bool looksLikeImagePath(const model::Attribute& attribute, const QVariant& value)
{
    const QString suffix = QFileInfo(value.toString()).suffix().toLower();
    return imageExtensions().contains(suffix) || attribute.key().contains(QLatin1String("Image"), Qt::CaseInsensitive);
}

// One property for an attribute the operator may change; empty for a type
// a form cannot edit (a live input).
QJsonObject fieldFor(const model::QuartzComponent& component, const model::Attribute& attribute, const QVariant& value)
{
    QJsonObject field{{QStringLiteral("label"), QStringLiteral("%1: %2").arg(component.title(), QString(attribute.label()).replace(QLatin1Char('_'), QLatin1Char(' ')).trimmed())}};
    auto set = [&](const char* type, const char* gddType, const char* spx) {
        field.insert(QStringLiteral("type"), QLatin1String(type));
        if (gddType) field.insert(QStringLiteral("gddType"), QLatin1String(gddType));
        field.insert(QStringLiteral("v_spx"), QLatin1String(spx));
    };
    switch (attribute.typeInfo().editor) {
    case model::EditorKind::Text:
        set("string", "single-line", "textfield");
        field.insert(QStringLiteral("default"), value.toString());
        break;
    case model::EditorKind::StyledText:
        set("string", "multi-line", "textarea");
        field.insert(QStringLiteral("default"), value.toString());
        break;
    case model::EditorKind::Number:
        set("number", "number", "number");
        field.insert(QStringLiteral("default"), value.toDouble());
        setRange(field, portOf(component, attribute.key()));
        break;
    case model::EditorKind::Integer:
        set("integer", nullptr, "number");
        field.insert(QStringLiteral("default"), qint64(std::llround(value.toDouble())));
        setRange(field, portOf(component, attribute.key()));
        break;
    case model::EditorKind::Checkbox:
        set("boolean", "boolean", "checkbox");
        field.insert(QStringLiteral("default"), value.toBool());
        break;
    case model::EditorKind::Menu: {
        set("integer", "select", "dropdown");
        QJsonArray values;
        QJsonObject labels;
        const QStringList items = attribute.possibleValues();
        for (int i = 0; i < items.size(); ++i) {
            values.append(i);
            labels.insert(QString::number(i), items[i]);
        }
        field.insert(QStringLiteral("enum"), values);
        field.insert(QStringLiteral("gddOptions"), QJsonObject{{QStringLiteral("labels"), labels}});
        field.insert(QStringLiteral("default"), qint64(std::clamp<long long>(std::llround(value.toDouble()), 0, std::max<qsizetype>(items.size() - 1, 0))));
        break;
    }
    case model::EditorKind::Colour: {
        set("string", "color-rrggbbaa", "color");
        const QColor c = value.value<QColor>().isValid() ? value.value<QColor>().toRgb() : QColor(Qt::black);
        field.insert(QStringLiteral("pattern"), QStringLiteral("^#[0-9a-f]{8}$"));
        field.insert(QStringLiteral("default"), (c.name(QColor::HexRgb) + QString::asprintf("%02x", c.alpha())).toLower());
        break;
    }
    case model::EditorKind::Image:
    case model::EditorKind::FilePath:
        if (attribute.typeInfo().editor == model::EditorKind::Image || looksLikeImagePath(attribute, value)) {
            set("string", "file-path/image-path", "filelist");
            field.insert(QStringLiteral("gddOptions"), QJsonObject{{QStringLiteral("extensions"), QJsonArray::fromStringList(imageExtensions())}});
        } else {
            set("string", "file-path", "filelist");
        }
        field.insert(QStringLiteral("default"), value.typeId() == QMetaType::QString ? value.toString() : QString());
        break;
    case model::EditorKind::Font:
    case model::EditorKind::RichFont:
    case model::EditorKind::VideoPoster: return {};
    }
    return field;
}

}  // namespace

QString fieldSchemaFileName() { return QStringLiteral("Fields.gdd.json"); }

namespace {

// Components bottom first, attributes by key: the order the ids are given in.
template <class Visit> void forEachField(const model::Composition& composition, Visit visit)
{
    for (const model::QuartzComponent* component : composition.componentsSortedByZLevel()) {
        std::vector<model::Attribute*> attributes = component->attributes();
        std::stable_sort(attributes.begin(), attributes.end(), [](auto a, auto b) { return a->key() < b->key(); });
        for (const model::Attribute* attribute : attributes)
            if (attribute->permissionToChange() && attribute->quartzAttribute()) visit(*component, *attribute);
    }
}

}  // namespace

QHash<const model::Attribute*, QString> fieldIds(const model::Composition& composition)
{
    FieldKeys keys;
    QHash<const model::Attribute*, QString> ids;
    forEachField(composition, [&](const model::QuartzComponent& c, const model::Attribute& a) { ids.insert(&a, keys.make(c, a.key())); });
    return ids;
}

QJsonObject fieldSchema(const model::Composition& composition, const QString& title)
{
    // The values a form starts from are those of the poster frame.
    const double poster = std::max(composition.posterFrameTimepoint(), 0.0);
    const QHash<const model::Attribute*, QString> ids = fieldIds(composition);
    QJsonObject properties, fonts;
    forEachField(composition, [&](const model::QuartzComponent& component, const model::Attribute& attribute) {
        const QVariant value = attribute.valueAtTime(poster);
        const model::EditorKind editor = attribute.typeInfo().editor;
        if (editor == model::EditorKind::Font || editor == model::EditorKind::RichFont) {
            // Not a form field: kept for controllers of our own.
            fonts.insert(ids.value(&attribute), QJsonObject{{QStringLiteral("label"), attribute.label()},
                                                            {QStringLiteral("type"), QLatin1String(attribute.typeInfo().name)},
                                                            {QStringLiteral("default"), attribute.typeInfo().toJson(value)}});
            return;
        }
        const QJsonObject field = fieldFor(component, attribute, value);
        if (!field.isEmpty()) properties.insert(ids.value(&attribute), field);
    });
    const double rate = model::VideoModeCatalogue::framesPerSecond(composition.videoResolution().frameRate());
    QJsonObject schema{
        {QStringLiteral("$schema"), kSchemaUri},
        {QStringLiteral("title"), title},
        {QStringLiteral("type"), QStringLiteral("object")},
        {QStringLiteral("properties"), properties},
        {QStringLiteral("gddPlayoutOptions"),
         QJsonObject{
             // A step is a hold the operator continues from: one per stop
             // frame, as the step pictures are; a template without any
             // plays through in one.
             {QStringLiteral("client"), QJsonObject{{QStringLiteral("steps"), std::max(int(composition.stopFrames().size()), 1)},
                                                    {QStringLiteral("dataformat"), QStringLiteral("json")}}},
             {QStringLiteral("render"), QJsonObject{{QStringLiteral("resolutions"),
                                                     QJsonArray{QJsonObject{{QStringLiteral("width"), composition.width()},
                                                                            {QStringLiteral("height"), composition.height()},
                                                                            {QStringLiteral("framerate"), rate}}}}}},
         }},
    };
    if (!fonts.isEmpty()) schema.insert(QStringLiteral("v_velloran"), QJsonObject{{QStringLiteral("fonts"), fonts}});
    return schema;
}

bool writeFieldSchema(const model::Composition& composition, const QString& title, const QString& path, QString* error)
{
    const QByteArray json = QJsonDocument(fieldSchema(composition, title)).toJson(QJsonDocument::Indented);
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(json) != json.size() || !file.commit()) {
        if (error) *error = file.errorString();
        return false;
    }
    return true;
}

}  // namespace document
