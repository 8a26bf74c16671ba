#include "widgets/NamedImages.h"

#include "widgets/InspectorArtwork.h"
#include "widgets/TimelineArtwork.h"
#include "widgets/ToolbarArtwork.h"

#include <QHash>

namespace widgets {

namespace {

const QString kToolbarPrefix = QStringLiteral("Toolbar");
const QString kTimelinePrefix = QStringLiteral("Timeline");
const QString kInspectorPrefix = QStringLiteral("Inspector");

QStringList toolbarNames()
{
    QStringList names;
    for (const char* kind : {"Align", "Distribute"})
        for (const char* place : {"Left", "HCenter", "Right", "Top", "VCenter", "Bottom"})
            names << kToolbarPrefix + QLatin1String(kind) + QLatin1String(place);
    return names;
}

}  // namespace

QStringList NamedImages::names()
{
    QStringList result = toolbarNames();
    for (const QString& name : TimelineArtwork::names()) result << kTimelinePrefix + name;
    for (const QString& name : InspectorArtwork::names()) result << kInspectorPrefix + name;
    return result;
}

QIcon NamedImages::imageNamed(const QString& name)
{
    // Built once: the icons draw themselves at use, so keeping them is cheap,
    // and the registry only ever answers for its own names.
    static const QHash<QString, QIcon> registry = [] {
        QHash<QString, QIcon> icons;
        for (const QString& toolbar : toolbarNames())
            icons.insert(toolbar, ToolbarArtwork::toolbarImageWithName(toolbar.mid(kToolbarPrefix.size())));
        for (const QString& timeline : TimelineArtwork::names())
            icons.insert(kTimelinePrefix + timeline, TimelineArtwork::timelineImageWithName(timeline));
        for (const QString& inspector : InspectorArtwork::names())
            icons.insert(kInspectorPrefix + inspector, InspectorArtwork::inspectorImageWithName(inspector));
        return icons;
    }();
    return registry.value(name);
}

QPixmap NamedImages::pixmapNamed(const QString& name, int size, qreal devicePixelRatio)
{
    const QIcon icon = imageNamed(name);
    return icon.isNull() ? QPixmap() : icon.pixmap(QSize(size, size), devicePixelRatio);
}

}  // namespace widgets
