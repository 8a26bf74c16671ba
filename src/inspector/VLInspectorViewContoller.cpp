#include "inspector/VLInspectorViewContoller.h"

#include "inspector/KeyframeButtons.h"
#include "inspector/PropertyBinding.h"
#include "inspector/VLInspectorController.h"

#include "inspector/AttributeEditor.h"
#include "inspector/TimecodeEditor.h"

#include "document/CompositionDocument.h"
#include "model/Attribute.h"
#include "model/Composition.h"
#include "model/ObjectStore.h"
#include "model/QuartzComponent.h"
#include "model/Timecode.h"

#include <QVBoxLayout>

namespace inspector {

VLInspectorViewContoller::VLInspectorViewContoller(VLInspectorController* inspectorController)
    : inspectorController_(inspectorController)
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    form_ = new InspectorForm(this);
    layout->addWidget(form_);
}

document::CompositionDocument* VLInspectorViewContoller::document() const { return inspectorController_->document(); }

model::Composition* VLInspectorViewContoller::composition() const { return inspectorController_->composition(); }

model::UndoManager* VLInspectorViewContoller::undoManager() const
{
    return document() ? &document()->store().undoManager() : nullptr;
}

std::vector<model::QuartzComponent*> VLInspectorViewContoller::selectedComponents() const
{
    return composition() ? composition()->selectedComponents() : std::vector<model::QuartzComponent*>();
}

void VLInspectorViewContoller::resetRows()
{
    bindings_.clear();
    form_->reset();
}

void VLInspectorViewContoller::cleanUp() { resetRows(); }

void VLInspectorViewContoller::refreshBindings()
{
    for (const QPointer<PropertyBinding>& binding : bindings_)
        if (binding) binding->refresh();
}

PropertyBinding* VLInspectorViewContoller::adopt(PropertyBinding* binding)
{
    bindings_.emplace_back(binding);
    connect(binding, &PropertyBinding::editingChanged, inspectorController_, &VLInspectorController::editingChanged);
    return binding;
}

PropertyBinding* VLInspectorViewContoller::addAttributeRow(const QString& label, const QString& key,
                                                           AttributeEditor* editor, const QString& actionName)
{
    std::vector<model::QuartzComponent*> components;
    std::vector<model::Attribute*> attributes;
    for (model::QuartzComponent* c : selectedComponents())
        if (model::Attribute* a = c->attributeForKey(key)) {
            components.push_back(c);
            attributes.push_back(a);
        }
    if (components.empty() || !undoManager()) {
        delete editor->widget();
        return nullptr;
    }
    KeyframeButtons* keys = nullptr;
    if (attributes.front()->animationPossible()) keys = new KeyframeButtons(*composition(), *undoManager(), attributes);
    QLabel* rowLabel = form_->addRow(label, editor->widget(), keys);
    editor->attachLabel(rowLabel);
    if (QWidget* second = editor->secondRow()) form_->addUnlabelledRow(second);
    return adopt(PropertyBinding::forAttribute(*undoManager(), components, key, editor, actionName));
}

PropertyBinding* VLInspectorViewContoller::addComponentRow(const QString& label, AttributeEditor* editor,
                                                           std::function<QVariant(model::QuartzComponent*)> read,
                                                           std::function<void(model::QuartzComponent*, const QVariant&)> write,
                                                           const QStringList& keys, const QString& actionName)
{
    const std::vector<model::QuartzComponent*> components = selectedComponents();
    std::vector<model::ManagedObject*> objects(components.begin(), components.end());
    std::vector<PropertyBinding::Observed> observed;
    for (model::QuartzComponent* c : components)
        for (const QString& key : keys) observed.push_back({c, key});
    form()->addRow(label, editor->widget());
    return adopt(new PropertyBinding(
        *undoManager(), objects, [read](model::ManagedObject* o) { return read(static_cast<model::QuartzComponent*>(o)); },
        [write](model::ManagedObject* o, const QVariant& v) { write(static_cast<model::QuartzComponent*>(o), v); },
        observed, editor, actionName));
}

PropertyBinding* VLInspectorViewContoller::addCompositionRow(const QString& label, AttributeEditor* editor,
                                                             std::function<QVariant(model::Composition*)> read,
                                                             std::function<void(model::Composition*, const QVariant&)> write,
                                                             const QStringList& keys, const QString& actionName)
{
    model::Composition* c = composition();
    std::vector<PropertyBinding::Observed> observed;
    for (const QString& key : keys) observed.push_back({c, key});
    form()->addRow(label, editor->widget());
    return adopt(new PropertyBinding(
        *undoManager(), {c}, [read](model::ManagedObject* o) { return read(static_cast<model::Composition*>(o)); },
        [write](model::ManagedObject* o, const QVariant& v) { write(static_cast<model::Composition*>(o), v); },
        observed, editor, actionName));
}

TimecodeEditor* VLInspectorViewContoller::makeTimecodeEditor(const QString& label, std::optional<double> noneBelow,
                                                             const QString& noneText) const
{
    const int rate = composition() ? composition()->videoResolution().frameRate() : model::Timecode::projectRateCode();
    return new TimecodeEditor(
        EditorOptions{label},
        [rate](double seconds) { return model::Timecode::fromSeconds(std::max(0.0, seconds), rate).toString(); },
        [rate](const QString& text) -> std::optional<double> {
            const auto timecode = model::Timecode::fromString(text.trimmed(), rate);
            if (!timecode) return std::nullopt;
            return timecode->secondsSinceMidnight();
        },
        noneBelow, noneText);
}

}  // namespace inspector
