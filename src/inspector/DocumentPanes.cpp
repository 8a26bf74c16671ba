#include "inspector/DocumentPanes.h"

#include "inspector/CheckboxAttributeEditor.h"
#include "inspector/ColourAttributeEditor.h"
#include "inspector/ImageAttributeEditor.h"
#include "inspector/MenuAttributeEditor.h"
#include "inspector/PropertyBinding.h"
#include "inspector/TimecodeEditor.h"
#include "inspector/VLInspectorController.h"

#include "document/DocumentCommands.h"
#include "model/Composition.h"
#include "model/NotificationHelper.h"
#include "model/Ruler.h"
#include "model/StopFrame.h"
#include "model/Timecode.h"
#include "model/UndoManager.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QTableWidget>

#include <algorithm>

namespace inspector {

namespace {

QTableWidgetItem* fixedItem(const QString& text)
{
    auto* item = new QTableWidgetItem(text);
    item->setFlags(item->flags() & ~Qt::ItemIsEditable);
    return item;
}

QList<int> selectedRows(const QTableWidget& table)
{
    QList<int> rows;
    for (const QModelIndex& index : table.selectionModel()->selectedRows()) rows.append(index.row());
    std::sort(rows.begin(), rows.end());
    return rows;
}

std::vector<model::StopFrame*> stopFramesInTimeOrder(const model::Composition& c)
{
    std::vector<model::StopFrame*> frames = c.stopFrames();
    std::stable_sort(frames.begin(), frames.end(),
                     [](const model::StopFrame* a, const model::StopFrame* b) { return a->timepoint() < b->timepoint(); });
    return frames;
}

}  // namespace

// Document timing ------------------------------------------------------------------

VLInspectorDocumentTimingController::VLInspectorDocumentTimingController(VLInspectorController* inspectorController)
    : DocumentListPane(inspectorController)
{
    setObjectName(QStringLiteral("documentTimingPane"));
}

void VLInspectorDocumentTimingController::rebuild()
{
    DocumentListPane::cleanUp();
    if (!composition()) return;
    TimecodeEditor* duration = makeTimecodeEditor(QStringLiteral("Duration"));
    duration->setObjectName(QStringLiteral("duration"));
    addCompositionRow(
        QStringLiteral("Duration"), duration, [](model::Composition* c) { return QVariant(c->duration()); },
        [](model::Composition* c, const QVariant& v) { c->setDuration(std::max(0.0, v.toDouble())); },
        {QStringLiteral("duration")}, QStringLiteral("Change Duration"));
    buildList({QStringLiteral("Time"), QStringLiteral("Name")}, QStringLiteral("Add Stop Frame"), QStringLiteral("Remove"));
    refill();
}

void VLInspectorDocumentTimingController::refill()
{
    model::Composition* c = composition();
    const std::vector<model::StopFrame*> frames = stopFramesInTimeOrder(*c);
    model::NotificationHelper::removeObserver(this);
    observeList(QStringLiteral("stopFrames"), {frames.begin(), frames.end()},
                {QStringLiteral("timepoint"), QStringLiteral("triggerInformation")});
    const int rate = c->videoResolution().frameRate();
    setFilling(true);
    table()->setRowCount(int(frames.size()));
    for (int row = 0; row < int(frames.size()); ++row) {
        table()->setItem(row, 0, fixedItem(model::Timecode::fromSeconds(frames[std::size_t(row)]->timepoint(), rate).toString()));
        table()->setItem(row, 1, new QTableWidgetItem(frames[std::size_t(row)]->triggerInformation()));
    }
    setFilling(false);
}

void VLInspectorDocumentTimingController::addStopFrame()
{
    if (document::DocumentCommands* commands = inspectorController()->commands()) {
        commands->addStopFrame();
        return;
    }
    // Without a window's commands (tests), the same step by hand.
    model::UndoGroup group(*undoManager(), QStringLiteral("Add Stop Frame"));
    composition()->addStopFrame(composition()->editorTimepoint());
}

void VLInspectorDocumentTimingController::removeSelectedItems()
{
    const std::vector<model::StopFrame*> frames = stopFramesInTimeOrder(*composition());
    const QList<int> rows = selectedRows(*table());
    if (rows.isEmpty()) return;
    model::UndoGroup group(*undoManager(), QStringLiteral("Remove Stop Frame"));
    for (int row : rows)
        if (row < int(frames.size())) composition()->removeStopFrame(frames[std::size_t(row)]);
}

void VLInspectorDocumentTimingController::cellEdited(int row, int column, const QString& text)
{
    const std::vector<model::StopFrame*> frames = stopFramesInTimeOrder(*composition());
    if (column != 1 || row >= int(frames.size())) return;
    model::UndoGroup group(*undoManager(), QStringLiteral("Rename Stop Frame"));
    frames[std::size_t(row)]->setTriggerInformation(text);
}

// Background ------------------------------------------------------------------------

VLInspectorBackgroundController::VLInspectorBackgroundController(VLInspectorController* inspectorController)
    : VLInspectorViewContoller(inspectorController)
{
    setObjectName(QStringLiteral("backgroundPane"));
}

void VLInspectorBackgroundController::rebuild()
{
    resetRows();
    posterFrame_ = nullptr;
    if (!composition()) return;
    EditorOptions modes{QStringLiteral("Mode")};
    modes.possibleValues = {QStringLiteral("None"), QStringLiteral("Colour"), QStringLiteral("Image")};
    auto* mode = new MenuAttributeEditor(modes);
    mode->setObjectName(QStringLiteral("backgroundMode"));
    addCompositionRow(
        QStringLiteral("Mode"), mode, [](model::Composition* c) { return QVariant(c->backgroundMode()); },
        [](model::Composition* c, const QVariant& v) { c->setBackgroundMode(v.toInt()); },
        {QStringLiteral("backgroundMode")}, QStringLiteral("Change Background"));
    auto* colour = new ColourAttributeEditor(EditorOptions{QStringLiteral("Background Colour")});
    colour->setObjectName(QStringLiteral("backgroundColor"));
    addCompositionRow(
        QStringLiteral("Colour"), colour, [](model::Composition* c) { return QVariant(c->backgroundColor()); },
        [](model::Composition* c, const QVariant& v) { c->setBackgroundColor(v.value<QColor>()); },
        {QStringLiteral("backgroundColor")}, QStringLiteral("Change Background Colour"));
    auto* image = new ImageAttributeEditor(EditorOptions{QStringLiteral("Background Image")});
    image->setObjectName(QStringLiteral("backgroundImage"));
    addCompositionRow(
        QStringLiteral("Image"), image, [](model::Composition* c) { return QVariant(c->backgroundImage()); },
        [](model::Composition* c, const QVariant& v) { c->setBackgroundImage(v.value<QImage>()); },
        {QStringLiteral("backgroundImage")}, QStringLiteral("Change Background Image"));

    // A poster frame below 0 means none is fixed.
    posterFrame_ = makeTimecodeEditor(QStringLiteral("Poster Frame"), 0.0, QStringLiteral("None"));
    posterFrame_->setObjectName(QStringLiteral("posterFrameTimepoint"));
    addCompositionRow(
        QStringLiteral("Poster Frame"), posterFrame_,
        [](model::Composition* c) { return QVariant(c->posterFrameTimepoint()); },
        [](model::Composition* c, const QVariant& v) { c->setPosterFrameTimepoint(v.toDouble()); },
        {QStringLiteral("posterFrameTimepoint")}, QStringLiteral("Set Poster Frame"));
    auto* buttons = new QWidget;
    auto* layout = new QHBoxLayout(buttons);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* playhead = new QPushButton(QStringLiteral("Set to playhead"), buttons);
    playhead->setObjectName(QStringLiteral("setPosterFrame"));
    auto* none = new QPushButton(QStringLiteral("None"), buttons);
    none->setObjectName(QStringLiteral("clearPosterFrame"));
    layout->addWidget(playhead);
    layout->addWidget(none);
    layout->addStretch(1);
    connect(playhead, &QPushButton::clicked, this, &VLInspectorBackgroundController::setPosterFrame);
    connect(none, &QPushButton::clicked, this, [this] {
        model::UndoGroup group(*undoManager(), QStringLiteral("Clear Poster Frame"));
        composition()->setPosterFrameMode(1);
    });
    form()->addUnlabelledRow(buttons);
}

void VLInspectorBackgroundController::setPosterFrame()
{
    if (document::DocumentCommands* commands = inspectorController()->commands()) {
        commands->togglePosterframe();
        return;
    }
    model::UndoGroup group(*undoManager(), QStringLiteral("Set Poster Frame"));
    composition()->setPosterFrameTimepoint(composition()->editorTimepoint());
}

bool VLInspectorBackgroundController::setPosterFrameTime(const QString& text)
{
    if (!composition()) return false;
    const auto timecode = model::Timecode::fromString(text.trimmed(), composition()->videoResolution().frameRate());
    if (!timecode) return false;
    model::UndoGroup group(*undoManager(), QStringLiteral("Set Poster Frame"));
    composition()->setPosterFrameTimepoint(timecode->secondsSinceMidnight());
    return true;
}

// Overlays --------------------------------------------------------------------------

VLInspectorOverlaysController::VLInspectorOverlaysController(VLInspectorController* inspectorController)
    : DocumentListPane(inspectorController)
{
    setObjectName(QStringLiteral("overlaysPane"));
}

void VLInspectorOverlaysController::rebuild()
{
    DocumentListPane::cleanUp();
    if (!composition()) return;
    auto* rulers = new CheckboxAttributeEditor(EditorOptions{QStringLiteral("Rulers")}, QStringLiteral("Show rulers"));
    rulers->setObjectName(QStringLiteral("showsRulers"));
    addCompositionRow(
        QString(), rulers, [](model::Composition* c) { return QVariant(c->showsRulers()); },
        [](model::Composition* c, const QVariant& v) { c->setShowsRulers(v.toBool()); }, {QStringLiteral("showsRulers")},
        QStringLiteral("Show Rulers"));
    auto* safe = new CheckboxAttributeEditor(EditorOptions{QStringLiteral("Safe Zones")}, QStringLiteral("Show safe zones"));
    safe->setObjectName(QStringLiteral("showsSafeZones"));
    addCompositionRow(
        QString(), safe, [](model::Composition* c) { return QVariant(c->showsSafeZones()); },
        [](model::Composition* c, const QVariant& v) { c->setShowsSafeZones(v.toBool()); },
        {QStringLiteral("showsSafeZones")}, QStringLiteral("Show Safe Zones"));
    buildList({QStringLiteral("Guide"), QStringLiteral("Position")}, QStringLiteral("Add Guide"), QStringLiteral("Remove"));
    refill();
}

void VLInspectorOverlaysController::refill()
{
    const std::vector<model::Ruler*> rulers = composition()->rulers();
    model::NotificationHelper::removeObserver(this);
    observeList(QStringLiteral("rulers"), {rulers.begin(), rulers.end()},
                {QStringLiteral("position"), QStringLiteral("horizontal")});
    setFilling(true);
    table()->setRowCount(int(rulers.size()));
    for (int row = 0; row < int(rulers.size()); ++row) {
        const model::Ruler* r = rulers[std::size_t(row)];
        table()->setItem(row, 0, fixedItem(r->horizontal() ? QStringLiteral("Horizontal") : QStringLiteral("Vertical")));
        table()->setItem(row, 1, new QTableWidgetItem(QString::number(r->position())));
    }
    setFilling(false);
}

void VLInspectorOverlaysController::addRuler()
{
    model::UndoGroup group(*undoManager(), QStringLiteral("Add Guide"));
    composition()->addRulerAtPosition(0, false);
}

void VLInspectorOverlaysController::removeSelectedItems()
{
    const std::vector<model::Ruler*> rulers = composition()->rulers();
    const QList<int> rows = selectedRows(*table());
    if (rows.isEmpty()) return;
    model::UndoGroup group(*undoManager(), QStringLiteral("Remove Guide"));
    for (int row : rows)
        if (row < int(rulers.size())) composition()->removeRuler(rulers[std::size_t(row)]);
}

void VLInspectorOverlaysController::cellEdited(int row, int column, const QString& text)
{
    const std::vector<model::Ruler*> rulers = composition()->rulers();
    bool ok = false;
    const double position = text.toDouble(&ok);
    if (column != 1 || row >= int(rulers.size()) || !ok) {
        scheduleRefill();  // shows the stored position again
        return;
    }
    model::UndoGroup group(*undoManager(), QStringLiteral("Move Guide"));
    rulers[std::size_t(row)]->setPosition(position);
}

}  // namespace inspector
