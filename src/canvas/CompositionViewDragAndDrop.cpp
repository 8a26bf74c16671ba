// Files dropped on the canvas become components: composition files as
// themselves, images as image components, Photoshop files through the import
// sheet (or one flat image with Control held).

#include "canvas/AlertSheet.h"
#include "canvas/CompositionView.h"

#include "document/Alert.h"
#include "document/ComponentDrop.h"
#include "document/CompositionDocument.h"
#include "model/Composition.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QUrl>

namespace canvas {

namespace {

QStringList localPaths(const QMimeData* data)
{
    QStringList paths;
    if (!data || !data->hasUrls()) return paths;
    for (const QUrl& url : data->urls())
        if (url.isLocalFile()) paths << url.toLocalFile();
    return paths;
}

}  // namespace

void CompositionView::dragEnterEvent(QDragEnterEvent* event)
{
    if (composition() && !localPaths(event->mimeData()).isEmpty()) event->acceptProposedAction();
}

void CompositionView::dragMoveEvent(QDragMoveEvent* event)
{
    if (composition() && !localPaths(event->mimeData()).isEmpty()) event->acceptProposedAction();
}

void CompositionView::dropEvent(QDropEvent* event)
{
    const QStringList paths = localPaths(event->mimeData());
    if (!composition() || paths.isEmpty()) return;
    event->acceptProposedAction();
    // Control plays the part of the Command key: a Photoshop file stays flat.
    addComponentsFromPaths(paths, event->modifiers() & Qt::ControlModifier, compositionPointFromView(event->position()));
}

bool CompositionView::addComponentsFromPaths(const QStringList& paths, bool commandKeyPressed, std::optional<QPointF> at)
{
    model::Composition* c = composition();
    if (!c) return false;
    document::DropResult result;
    {
        model::UndoGroup group(document_->store().undoManager(), tr("Add Components"));
        // A Photoshop file opens its sheet once the drop is over, so the
        // drag source is not kept waiting; the sheet's import is its own
        // undo step.
        addPlacedComponents(
            [&] {
                result = document::addComponentsFromPaths(
                    *c, paths, commandKeyPressed, [this](const QString& psdPath, const QString& componentFile) {
                        QTimer::singleShot(0, this, [this, psdPath, componentFile] {
                            triggerPSDImport({psdPath, componentFile});
                        });
                    });
            },
            false, at);
    }
    if (!result.warnings.isEmpty())
        showAlertSheet(window(), document::Alert{QStringLiteral("Import Composition"),
                                                 document::importWarningText(result.warnings), {}});
    return result.ok;
}

}  // namespace canvas
