#include "canvas/ToolbarComponents.h"

#include "document/ComponentDrop.h"
#include "model/Composition.h"
#include "model/ObjectStore.h"
#include "model/QuartzComponent.h"
#include "model/StandardComponents.h"
#include "plist/PropertyList.h"

#include <QImage>
#include <QLoggingCategory>

namespace canvas {

Q_LOGGING_CATEGORY(lcToolbar, "velloran.toolbar")

namespace {

QString text(const plist::Value& entry, const char* key) { return QString::fromStdString(entry.value(key).string()); }

ToolbarComponentEntry entryFromValue(const plist::Value& value)
{
    ToolbarComponentEntry entry;
    if (value.isString()) {
        entry.separator = value.string() == "SEPARATOR";
        return entry;
    }
    entry.identifier = text(value, "identifier");
    entry.title = text(value, "title");
    entry.component = text(value, "component");
    entry.type = text(value, "type");
    entry.key = text(value, "key");
    entry.icon = text(value, "icon");
    entry.width = int(value.value("width").toInt());
    const plist::Value subcomponents = value.value("subcomponents");
    if (subcomponents.isArray())
        for (const plist::Value& sub : subcomponents.array()) entry.subcomponents.push_back(entryFromValue(sub));
    return entry;
}

}  // namespace

QString ToolbarComponentEntry::inputKey() const
{
    if (!key.isEmpty()) return key;
    return type == QLatin1String("MOVIE_PATH") ? QStringLiteral("Movie_Path") : QStringLiteral("Image");
}

std::vector<ToolbarComponentEntry> ToolbarComponents::load(const QString& path)
{
    std::string error;
    const auto list = path.isEmpty() ? std::nullopt : plist::readFile(path.toStdString(), &error);
    if (!list || !list->isArray()) {
        qCWarning(lcToolbar).noquote() << QStringLiteral("Could not read the toolbar components from %1: %2")
                                              .arg(path, QString::fromStdString(error));
        return {};
    }
    std::vector<ToolbarComponentEntry> entries;
    for (const plist::Value& value : list->array())
        if (value.isDictionary()) entries.push_back(entryFromValue(value));
    return entries;
}

const std::vector<ToolbarComponentEntry>& ToolbarComponents::toolbarComponents()
{
    static const std::vector<ToolbarComponentEntry> entries = load(model::StandardComponents::toolbarComponentsPath());
    return entries;
}

QStringList ToolbarComponents::componentIdentifiers(const std::vector<ToolbarComponentEntry>& entries)
{
    QStringList identifiers;
    for (const ToolbarComponentEntry& entry : entries) identifiers << entry.identifier;
    return identifiers;
}

QStringList ToolbarComponents::standardIdentifiers()
{
    const QString flexible = flexibleSpaceIdentifier(), space = spaceIdentifier();
    return {flexible,       QStringLiteral("Align"),          flexible,
            QStringLiteral("Distribute"), flexible,           QStringLiteral("Backward"),
            QStringLiteral("Forward"),    space,              QStringLiteral("Workbench Size"),
            space,          QStringLiteral("Stop Frame"),     QStringLiteral("Poster Frame"),
            QStringLiteral("Preview")};
}

QStringList ToolbarComponents::allIdentifiers(const std::vector<ToolbarComponentEntry>& entries)
{
    return componentIdentifiers(entries) + standardIdentifiers();
}

int addToolbarComponent(model::Composition& composition, const ToolbarComponentEntry& entry, const QString& chosenPath)
{
    const QString qtz = model::StandardComponents::pathForComponent(entry.component);
    if (qtz.isEmpty()) {
        qCWarning(lcToolbar).noquote() << QStringLiteral("No standard component named %1").arg(entry.component);
        return 0;
    }
    model::UndoGroup group(composition.store()->undoManager(), QObject::tr("Add %1").arg(entry.title));
    if (!entry.asksForFile()) {
        model::QuartzComponent* component = composition.addComponenWithQuartzCompositionFile(qtz);
        if (!component) return 0;
        component->setTitle(entry.title);
        return 1;
    }
    if (chosenPath.isEmpty()) return 0;
    const QString key = entry.inputKey();
    if (key == QLatin1String("Image") && document::isPSDFile(chosenPath))
        return document::addComponentsFromPaths(composition, {chosenPath}, false).componentsAdded;
    QVariantMap inputs;
    if (key == QLatin1String("Image")) {
        const QImage image(chosenPath);
        if (image.isNull()) return 0;
        inputs.insert(key, image);
    } else {
        inputs.insert(key, chosenPath);
    }
    return composition.addComponenWithQuartzCompositionFile(qtz, inputs) ? 1 : 0;
}

}  // namespace canvas
