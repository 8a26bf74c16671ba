// Upgrading components, making file paths relative and embedding resources:
// each rewrites components in place and reports what it did.

#include "document/DocumentCommands.h"

#include "model/Composition.h"
#include "model/ObjectStore.h"

#include <QUrl>

namespace document {

namespace {

QString listed(const QString& intro, const QStringList& lines) { return intro + QStringLiteral("\n\n") + lines.join(QLatin1Char('\n')); }

Alert saveFirst(const QString& what)
{
    return {QStringLiteral("Save Document"),
            QStringLiteral("To %1 you must first save this document. Please save first and then try again.").arg(what), {}};
}

}  // namespace

bool DocumentCommands::hasFileLocation() const
{
    // Relative paths and embedded copies are both measured from the package.
    const QUrl url = composition_.fileURL();
    return url.isValid() && url.isLocalFile() && !url.toLocalFile().isEmpty();
}

Alert DocumentCommands::upgradeComposition()
{
    QStringList upgraded;
    {
        model::UndoGroup group(undoManager(), QStringLiteral("Upgrade Components"));
        upgraded = composition_.upgradeComponents();
    }
    return {QStringLiteral("Upgrade Components Complete"),
            upgraded.isEmpty()
                ? QStringLiteral("No components were upgraded in this composition.")
                : listed(QStringLiteral("The following components in this composition were upgraded to newer versions:"), upgraded),
            QStringLiteral("upgradeComponents")};
}

Alert DocumentCommands::makePathsRelative()
{
    if (!hasFileLocation()) return saveFirst(QStringLiteral("make paths relative"));
    QStringList changed;
    {
        model::UndoGroup group(undoManager(), QStringLiteral("Make Paths Relative"));
        changed = composition_.makePathsRelative();
    }
    return {QStringLiteral("Make Paths Relative"),
            changed.isEmpty()
                ? QStringLiteral("No paths were found in this composition.")
                : listed(QStringLiteral("The following paths in this composition were changed to be relative to the composition's path:"), changed),
            QStringLiteral("relativePaths")};
}

Alert DocumentCommands::embedResources()
{
    if (!hasFileLocation()) return saveFirst(QStringLiteral("embed resources"));
    QList<QVariantMap> copies;
    {
        model::UndoGroup group(undoManager(), QStringLiteral("Embed Resources"));
        copies = composition_.embedResources();
    }
    // The components now name bare files; the save copies those files into
    // the package at once so that the document never points at nothing.
    if (!copies.isEmpty() && saveWithResources_) saveWithResources_(copies);
    QStringList sources;
    for (const QVariantMap& copy : copies) sources.append(copy.value(QStringLiteral("source")).toString());
    return {QStringLiteral("Embed Resources"),
            sources.isEmpty() ? QStringLiteral("No resources were embedded in this composition.")
                              : listed(QStringLiteral("The following resources were embedded in the composition document:"), sources),
            QStringLiteral("embedResources")};
}

}  // namespace document
