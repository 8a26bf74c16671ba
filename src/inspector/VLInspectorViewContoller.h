#pragma once
// The base of the inspector's panes (the name keeps the framework's
// spelling). A pane is the content of one group: it builds its rows for the
// document and the selection when asked, and its bindings keep them current.

#include "inspector/InspectorForm.h"

#include <QPointer>
#include <QWidget>

#include <functional>
#include <optional>
#include <vector>

namespace document {
class CompositionDocument;
}
namespace model {
class Composition;
class QuartzComponent;
class UndoManager;
}  // namespace model

namespace inspector {

class AttributeEditor;
class PropertyBinding;
class TimecodeEditor;
class VLInspectorController;

class VLInspectorViewContoller : public QWidget {
    Q_OBJECT
public:
    explicit VLInspectorViewContoller(VLInspectorController* inspectorController);

    VLInspectorController* inspectorController() const { return inspectorController_; }
    InspectorForm* form() const { return form_; }

    // Builds the rows anew for the inspector's document and selection.
    virtual void rebuild() = 0;
    // Re-reads every row (after an undo or redo).
    void refreshBindings();
    // Lets go of the model: rows thrown away, nothing observed.
    virtual void cleanUp();

protected:
    document::CompositionDocument* document() const;
    model::Composition* composition() const;
    model::UndoManager* undoManager() const;
    std::vector<model::QuartzComponent*> selectedComponents() const;
    // Resets the form and forgets the bindings.
    void resetRows();
    // Takes a new binding into the pane: the inspector hears of its gestures.
    PropertyBinding* adopt(PropertyBinding* binding);
    // A row for the attribute `key` of the selected components, with the
    // keyframe buttons when it can animate; null (and no row) when no
    // selected component has it.
    PropertyBinding* addAttributeRow(const QString& label, const QString& key, AttributeEditor* editor,
                                     const QString& actionName);
    // A row for a property of the selected components themselves (title,
    // times), refreshed when one of `keys` changes on any of them.
    PropertyBinding* addComponentRow(const QString& label, AttributeEditor* editor,
                                     std::function<QVariant(model::QuartzComponent*)> read,
                                     std::function<void(model::QuartzComponent*, const QVariant&)> write,
                                     const QStringList& keys, const QString& actionName);
    // A row for a property of the composition.
    PropertyBinding* addCompositionRow(const QString& label, AttributeEditor* editor,
                                       std::function<QVariant(model::Composition*)> read,
                                       std::function<void(model::Composition*, const QVariant&)> write,
                                       const QStringList& keys, const QString& actionName);
    // A timecode field in the document's own frame rate (not the rate of
    // whichever document was opened last).
    TimecodeEditor* makeTimecodeEditor(const QString& label, std::optional<double> noneBelow = std::nullopt,
                                       const QString& noneText = QString()) const;

private:
    VLInspectorController* inspectorController_;
    InspectorForm* form_;
    std::vector<QPointer<PropertyBinding>> bindings_;
};

}  // namespace inspector
