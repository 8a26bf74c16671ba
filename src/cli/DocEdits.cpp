#include "cli/DocEdits.h"

#include "cli/DocValues.h"
#include "document/ComponentDrop.h"
#include "document/CompositionDocument.h"
#include "document/DocumentCommands.h"
#include "model/Attribute.h"
#include "model/Composition.h"
#include "model/QuartzComponent.h"
#include "model/UndoManager.h"
#include "runtime/Composition.h"

#include <QFileInfo>
#include <QJsonObject>

namespace cli {

namespace {

// Thrown inside one edit; turned into "edit N: reason" by the loop.
struct EditError {
    QString reason;
};

class EditRunner {
public:
    explicit EditRunner(document::CompositionDocument& document)
        : document_(document), composition_(*document.composition()),
          commands_(composition_, [this](const QList<QVariantMap>& copies) {
              // Embedding copies the files on the save that ends the run.
              document_.pendingResources().append(copies);
              return true;
          })
    {
    }

    void run(const QJsonObject& edit)
    {
        const QString op = edit.value(QLatin1String("op")).toString();
        model::UndoGroup step(composition_.store()->undoManager());
        if (op == QLatin1String("composition")) editComposition(edit);
        else if (op == QLatin1String("add")) add(edit);
        else if (op == QLatin1String("time")) composition_.setEditorTimepointForNearestTick(number(edit, "t"));
        else if (op == QLatin1String("set")) set(edit);
        else if (op == QLatin1String("animate")) attribute(edit)->setAnimateable(boolean(edit, "on"));
        else if (op == QLatin1String("permission")) attribute(edit)->setPermissionToChange(boolean(edit, "allowed"));
        else if (op == QLatin1String("component")) editComponent(edit);
        else if (op == QLatin1String("keyframe")) keyframe(edit);
        else if (op == QLatin1String("select")) select(edit);
        else if (op == QLatin1String("command")) command(edit);
        else if (op == QLatin1String("stopFrame")) composition_.addStopFrame(number(edit, "time"), optionalString(edit, "name"));
        else if (op == QLatin1String("ruler")) composition_.addRulerAtPosition(number(edit, "position"), boolean(edit, "horizontal"));
        else throw EditError{QStringLiteral("unknown op \"%1\"").arg(op)};
    }

private:
    static double number(const QJsonObject& edit, const char* key)
    {
        const QJsonValue v = edit.value(QLatin1String(key));
        if (!v.isDouble()) throw EditError{QStringLiteral("\"%1\" must be a number").arg(QLatin1String(key))};
        return v.toDouble();
    }

    static bool boolean(const QJsonObject& edit, const char* key)
    {
        const QJsonValue v = edit.value(QLatin1String(key));
        if (!v.isBool()) throw EditError{QStringLiteral("\"%1\" must be true or false").arg(QLatin1String(key))};
        return v.toBool();
    }

    static QString optionalString(const QJsonObject& edit, const char* key)
    {
        const QJsonValue v = edit.value(QLatin1String(key));
        if (!v.isUndefined() && !v.isString())
            throw EditError{QStringLiteral("\"%1\" must be a string").arg(QLatin1String(key))};
        return v.toString();
    }

    // By index, bottom first, or by title.
    model::QuartzComponent* component(const QJsonValue& ref) const
    {
        const auto components = composition_.componentsSortedByZLevel();
        if (ref.isDouble()) {
            const double index = ref.toDouble();
            if (index >= 0 && index < double(components.size()) && index == std::floor(index))
                return components[size_t(index)];
            throw EditError{QStringLiteral("no component at index %1").arg(index)};
        }
        if (ref.isString()) {
            for (model::QuartzComponent* c : components)
                if (c->title() == ref.toString()) return c;
            throw EditError{QStringLiteral("no component titled \"%1\"").arg(ref.toString())};
        }
        throw EditError{QStringLiteral("\"component\" must be an index or a title")};
    }

    model::QuartzComponent* component(const QJsonObject& edit) const
    {
        return component(edit.value(QLatin1String("component")));
    }

    model::Attribute* attribute(const QJsonObject& edit) const
    {
        model::QuartzComponent* c = component(edit);
        const QString key = edit.value(QLatin1String("key")).toString();
        model::Attribute* a = c->attributeForKey(key);
        if (!a) throw EditError{QStringLiteral("component \"%1\" has no attribute \"%2\"").arg(c->title(), key)};
        return a;
    }

    static QVariant value(const model::Attribute& a, const QJsonValue& json)
    {
        QString why;
        const auto v = attributeValueFromJson(json, a.type(), &why, a.currentValue());
        if (!v) throw EditError{QStringLiteral("value of \"%1\": %2").arg(a.key(), why)};
        return *v;
    }

    void editComposition(const QJsonObject& edit)
    {
        if (edit.contains(QLatin1String("duration"))) {
            const double d = number(edit, "duration");
            if (d <= 0) throw EditError{QStringLiteral("\"duration\" must be positive")};
            composition_.setDuration(d);
        }
        if (edit.contains(QLatin1String("backgroundMode"))) composition_.setBackgroundMode(int(number(edit, "backgroundMode")));
        if (edit.contains(QLatin1String("backgroundColor"))) {
            QString why;
            const auto c = colourFromJson(edit.value(QLatin1String("backgroundColor")), &why);
            if (!c) throw EditError{QStringLiteral("\"backgroundColor\": %1").arg(why)};
            composition_.setBackgroundColor(*c);
        }
        if (edit.contains(QLatin1String("showsRulers"))) composition_.setShowsRulers(boolean(edit, "showsRulers"));
        if (edit.contains(QLatin1String("showsSafeZones"))) composition_.setShowsSafeZones(boolean(edit, "showsSafeZones"));
        if (edit.contains(QLatin1String("posterFrameTimepoint")))
            composition_.setPosterFrameTimepoint(number(edit, "posterFrameTimepoint"));
    }

    void add(const QJsonObject& edit)
    {
        const QString path = edit.value(QLatin1String("path")).toString();
        if (!QFileInfo(path).isFile()) throw EditError{QStringLiteral("no file \"%1\"").arg(path)};
        const QJsonObject inputs = edit.value(QLatin1String("inputs")).toObject();
        const size_t before = composition_.componentArray().size();
        if (inputs.isEmpty() || QFileInfo(path).suffix() != QLatin1String("qtz")) {
            const document::DropResult dropped = document::addComponentsFromPaths(composition_, {path});
            if (!dropped.ok || dropped.componentsAdded == 0)
                throw EditError{QStringLiteral("cannot make a component of \"%1\"").arg(path)};
        } else {
            auto loaded = runtime::Composition::loadFile(path);
            if (!loaded) throw EditError{QStringLiteral("cannot load \"%1\"").arg(path)};
            QVariantMap values;
            for (auto it = inputs.begin(); it != inputs.end(); ++it) {
                const runtime::PortDescription* port = loaded->input(it.key());
                if (!port) throw EditError{QStringLiteral("\"%1\" has no input \"%2\"").arg(path, it.key())};
                QString why;
                const auto v = inputValueFromJson(it.value(), port->typeName(), &why);
                if (!v) throw EditError{QStringLiteral("input \"%1\": %2").arg(it.key(), why)};
                values.insert(it.key(), *v);
            }
            if (!composition_.addComponenWithQuartzCompositionFile(path, values))
                throw EditError{QStringLiteral("cannot make a component of \"%1\"").arg(path)};
        }
        if (edit.contains(QLatin1String("title"))) {
            const QString title = optionalString(edit, "title");
            const auto all = composition_.componentsSortedByZLevel();
            for (size_t i = before; i < all.size(); ++i) all[i]->setTitle(title);
        }
    }

    void set(const QJsonObject& edit)
    {
        // Through the component, as the inspector writes: width and height
        // keep their proportions there, and the picture is told.
        model::Attribute* a = attribute(edit);
        component(edit)->setValueForKey(a->key(), value(*a, edit.value(QLatin1String("value"))));
    }

    void editComponent(const QJsonObject& edit)
    {
        model::QuartzComponent* c = component(edit);
        if (edit.contains(QLatin1String("title"))) c->setTitle(optionalString(edit, "title"));
        const bool start = edit.contains(QLatin1String("start")), end = edit.contains(QLatin1String("end"));
        // Both ends given: each is clamped against the other new end, not an old one.
        if (start && end && number(edit, "start") > c->endTime()) {
            c->setEndTime(c->validateEndTime(number(edit, "end")));
            c->setStartTime(c->validateStartTime(number(edit, "start")));
        } else {
            if (start) c->setStartTime(c->validateStartTime(number(edit, "start")));
            if (end) c->setEndTime(c->validateEndTime(number(edit, "end")));
        }
        if (edit.contains(QLatin1String("constrainProportions")))
            c->setConstrainProportions(boolean(edit, "constrainProportions"));
    }

    void keyframe(const QJsonObject& edit)
    {
        model::Attribute* a = attribute(edit);
        const double t = number(edit, "time");
        if (edit.value(QLatin1String("delete")).toBool()) {
            if (!a->hasKeyframeAtTimePoint(t)) throw EditError{QStringLiteral("no keyframe at %1").arg(t)};
            a->deleteTimepoint(t);
            return;
        }
        if (!a->animationPossible()) throw EditError{QStringLiteral("\"%1\" cannot be animated").arg(a->key())};
        // Without a value the keyframe keeps what the attribute shows there now.
        const QVariant v = edit.contains(QLatin1String("value")) ? value(*a, edit.value(QLatin1String("value")))
                                                                : a->valueAtTime(t);
        a->addTimepoint(t, v);
    }

    void select(const QJsonObject& edit)
    {
        std::vector<model::QuartzComponent*> chosen;
        for (const QJsonValue& ref : edit.value(QLatin1String("components")).toArray()) chosen.push_back(component(ref));
        composition_.clearSelection();
        for (model::QuartzComponent* c : chosen) c->setSelected(true);
    }

    void command(const QJsonObject& edit)
    {
        const QString name = edit.value(QLatin1String("name")).toString();
        std::optional<document::Alert> alert;
        const int mode = edit.contains(QLatin1String("mode")) ? int(number(edit, "mode")) : 0;
        const bool anchor = edit.value(QLatin1String("anchor")).toBool();
        if (!commands_.performCommand(name, mode, anchor, &alert))
            throw EditError{QStringLiteral("unknown command \"%1\"").arg(name)};
        if (alert) messages_.append(alert->title + QStringLiteral(": ") + alert->text);
    }

    document::CompositionDocument& document_;
    model::Composition& composition_;
    document::DocumentCommands commands_;

public:
    QStringList messages_;  // what the editor would show in alerts
};

}  // namespace

bool applyEdits(document::CompositionDocument& document, const QJsonArray& edits, QString* error,
                QStringList* messages)
{
    EditRunner runner(document);
    for (qsizetype i = 0; i < edits.size(); ++i) {
        if (!edits[i].isObject()) {
            if (error) *error = QStringLiteral("edit %1: not an object").arg(i);
            return false;
        }
        try {
            runner.run(edits[i].toObject());
        } catch (const EditError& e) {
            if (error) *error = QStringLiteral("edit %1: %2").arg(i).arg(e.reason);
            return false;
        }
    }
    if (messages) *messages = runner.messages_;
    return true;
}

}  // namespace cli
