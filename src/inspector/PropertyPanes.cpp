#include "inspector/PropertyPanes.h"

#include "inspector/CheckboxAttributeEditor.h"
#include "inspector/NumberAttributeEditor.h"
#include "inspector/OpacityEditor.h"
#include "inspector/TextAttributeEditor.h"
#include "inspector/TimecodeEditor.h"

#include "model/QuartzComponent.h"

#include <QLineEdit>

namespace inspector {

namespace {

NumberAttributeEditor* number(const QString& label, double minimum = -1e9)
{
    EditorOptions options{label};
    options.minimum = minimum;
    auto* editor = new NumberAttributeEditor(options, false);
    editor->setObjectName(label);
    return editor;
}

}  // namespace

VLInspectorTitleController::VLInspectorTitleController(VLInspectorController* inspectorController)
    : VLInspectorViewContoller(inspectorController)
{
    setObjectName(QStringLiteral("titlePane"));
}

void VLInspectorTitleController::rebuild()
{
    resetRows();
    if (selectedComponents().empty()) return;
    auto* editor = new TextAttributeEditor(EditorOptions{QStringLiteral("Title")});
    editor->setObjectName(QStringLiteral("title"));
    addComponentRow(
        QStringLiteral("Title"), editor, [](model::QuartzComponent* c) { return QVariant(c->title()); },
        [](model::QuartzComponent* c, const QVariant& v) { c->setTitle(v.toString()); }, {QStringLiteral("title")},
        QStringLiteral("Change Title"));
}

VLInspectorTransformController::VLInspectorTransformController(VLInspectorController* inspectorController)
    : VLInspectorViewContoller(inspectorController)
{
    setObjectName(QStringLiteral("transformPane"));
}

void VLInspectorTransformController::rebuild()
{
    resetRows();
    if (selectedComponents().empty()) return;
    addAttributeRow(QStringLiteral("X"), QStringLiteral("originX"), number(QStringLiteral("X")), QStringLiteral("Move"));
    addAttributeRow(QStringLiteral("Y"), QStringLiteral("originY"), number(QStringLiteral("Y")), QStringLiteral("Move"));
    addAttributeRow(QStringLiteral("Width"), QStringLiteral("inputWidth"), number(QStringLiteral("Width"), 0),
                    QStringLiteral("Resize"));
    addAttributeRow(QStringLiteral("Height"), QStringLiteral("inputHeight"), number(QStringLiteral("Height"), 0),
                    QStringLiteral("Resize"));
    auto* constrain = new CheckboxAttributeEditor(EditorOptions{QStringLiteral("Constrain")},
                                                  QStringLiteral("Constrain proportions"));
    constrain->setObjectName(QStringLiteral("constrainProportions"));
    addComponentRow(
        QString(), constrain, [](model::QuartzComponent* c) { return QVariant(c->constrainProportions()); },
        [](model::QuartzComponent* c, const QVariant& v) { c->setConstrainProportions(v.toBool()); },
        {QStringLiteral("constrainProportions")}, QStringLiteral("Constrain Proportions"));
    addAttributeRow(QStringLiteral("Rotation"), QStringLiteral("zRotation"), number(QStringLiteral("Rotation")),
                    QStringLiteral("Rotate"));
    addAttributeRow(QStringLiteral("Margin X"), QStringLiteral("marginX"), number(QStringLiteral("Margin X"), 0),
                    QStringLiteral("Change Margin"));
    addAttributeRow(QStringLiteral("Margin Y"), QStringLiteral("marginY"), number(QStringLiteral("Margin Y"), 0),
                    QStringLiteral("Change Margin"));
}

VLInspectorAppearanceController::VLInspectorAppearanceController(VLInspectorController* inspectorController)
    : VLInspectorViewContoller(inspectorController)
{
    setObjectName(QStringLiteral("appearancePane"));
}

void VLInspectorAppearanceController::rebuild()
{
    resetRows();
    if (selectedComponents().empty()) return;
    auto* opacity = new OpacityEditor(EditorOptions{QStringLiteral("Opacity")});
    opacity->setObjectName(QStringLiteral("opacity"));
    addAttributeRow(QStringLiteral("Opacity"), QStringLiteral("opacity"), opacity, QStringLiteral("Change Opacity"));
    auto* visible = new CheckboxAttributeEditor(EditorOptions{QStringLiteral("Visible")}, QStringLiteral("Visible in editor"));
    visible->setObjectName(QStringLiteral("visibleInCompositionEditor"));
    addAttributeRow(QString(), QStringLiteral("visibleInCompositionEditor"), visible, QStringLiteral("Change Visibility"));
}

VLInspectorTimingController::VLInspectorTimingController(VLInspectorController* inspectorController)
    : VLInspectorViewContoller(inspectorController)
{
    setObjectName(QStringLiteral("timingPane"));
}

void VLInspectorTimingController::rebuild()
{
    resetRows();
    if (selectedComponents().empty()) return;
    const QStringList times{QStringLiteral("startTime"), QStringLiteral("endTime")};
    TimecodeEditor* start = makeTimecodeEditor(QStringLiteral("Start"));
    start->setObjectName(QStringLiteral("startTime"));
    addComponentRow(
        QStringLiteral("Start"), start, [](model::QuartzComponent* c) { return QVariant(c->startTime()); },
        // Out of order times are clamped to the other end, as on the timeline.
        [](model::QuartzComponent* c, const QVariant& v) { c->setStartTime(c->validateStartTime(v.toDouble())); }, times,
        QStringLiteral("Change Start"));
    TimecodeEditor* end = makeTimecodeEditor(QStringLiteral("End"));
    end->setObjectName(QStringLiteral("endTime"));
    addComponentRow(
        QStringLiteral("End"), end, [](model::QuartzComponent* c) { return QVariant(c->endTime()); },
        [](model::QuartzComponent* c, const QVariant& v) { c->setEndTime(c->validateEndTime(v.toDouble())); }, times,
        QStringLiteral("Change End"));
    TimecodeEditor* duration = makeTimecodeEditor(QStringLiteral("Duration"));
    duration->setObjectName(QStringLiteral("duration"));
    addComponentRow(
        QStringLiteral("Duration"), duration, [](model::QuartzComponent* c) { return QVariant(c->duration()); },
        [](model::QuartzComponent* c, const QVariant& v) { c->setEndTime(c->validateEndTime(c->startTime() + v.toDouble())); },
        times, QStringLiteral("Change Duration"));
}

}  // namespace inspector
