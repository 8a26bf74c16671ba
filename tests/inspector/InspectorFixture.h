#pragma once
// The inspector on the offscreen platform over a 10-second document at 25
// frames a second. Components are made without composition files: each has
// the standard geometry attributes and the extra attributes a test names,
// and a composition file name that says which "file" it came from. Edits go
// through the real controls; every check reads the model.

#include "inspector/AttributeEditor.h"
#include "inspector/VLInspectorAttributesController.h"
#include "inspector/VLInspectorController.h"

#include "document/CompositionDocument.h"
#include "model/Attribute.h"
#include "model/Composition.h"
#include "model/ObjectStore.h"
#include "model/QuartzComponent.h"
#include "model/VideoResolution.h"

#include <QCoreApplication>
#include <QLineEdit>
#include <QTest>

#include <gtest/gtest.h>

#include <initializer_list>
#include <memory>

// Replaces a field's text as a user does: select all, type, Return.
inline void retype(QLineEdit* field, const QString& text)
{
    field->setFocus();
    field->selectAll();
    QTest::keyClicks(field, text);
    QTest::keyClick(field, Qt::Key_Return);
}

struct TestAttribute {
    const char* key;
    int type;
    QVariant value;
    QString label = {};
    QStringList possibleValues = {};
};

class InspectorFixture : public ::testing::Test {
protected:
    explicit InspectorFixture(const QString& mode = QStringLiteral("720p25 RGBA"))
    {
        document = document::CompositionDocument::emptyDocumentWithResolution(model::VideoResolution(mode));
        composition = document->composition();
        {
            model::UndoRegistrationPause quiet(undoManager());
            composition->setDuration(10);
        }
        inspector.resize(360, 900);
        inspector.setDocument(document.get());
        inspector.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&inspector));
    }
    ~InspectorFixture() override { inspector.setDocument(nullptr); }

    model::UndoManager& undoManager() { return document->store().undoManager(); }

    // Forgets the set-up's undo steps so a test sees only its own.
    void startCounting()
    {
        QCoreApplication::processEvents();
        document->store().processPendingChanges();
        undoManager().removeAllActions();
    }

    // A component of `file` with the standard attributes and the given ones.
    model::QuartzComponent* addComponent(const QString& title, const QString& file,
                                         std::initializer_list<TestAttribute> extra = {})
    {
        model::UndoRegistrationPause quiet(undoManager());
        auto* c = document->store().insertNewObject<model::QuartzComponent>();
        c->setTitle(title);
        c->setCompositionFilename(file);
        const std::pair<const char*, double> standard[] = {{"originX", 10}, {"originY", 20}, {"inputWidth", 200},
                                                           {"inputHeight", 100}, {"opacity", 1}, {"zRotation", 0},
                                                           {"marginX", 0}, {"marginY", 0}};
        for (const auto& [key, value] : standard) addAttribute(c, {key, model::kTypeNumber, float(value)});
        addAttribute(c, {"visibleInCompositionEditor", model::kTypeBoolean, true});
        for (const TestAttribute& wanted : extra) addAttribute(c, wanted);
        c->initializeAttributeObservers();
        composition->addComponent(c);
        c->setStartTime(0);
        c->setEndTime(composition->duration());
        return c;
    }

    // A component with only the given attributes.
    model::QuartzComponent* addBareComponent(std::initializer_list<TestAttribute> attributes)
    {
        model::UndoRegistrationPause quiet(undoManager());
        auto* c = document->store().insertNewObject<model::QuartzComponent>();
        c->setTitle(QStringLiteral("Bare"));
        c->setCompositionFilename(QStringLiteral("bare.qtz"));
        for (const TestAttribute& wanted : attributes) addAttribute(c, wanted);
        c->initializeAttributeObservers();
        composition->addComponent(c);
        return c;
    }

    model::Attribute* addAttribute(model::QuartzComponent* c, const TestAttribute& wanted)
    {
        const QString key = QString::fromLatin1(wanted.key);
        model::Attribute* a = model::Attribute::create(&document->store(), key, wanted.label.isEmpty() ? key : wanted.label,
                                                       wanted.type, wanted.value);
        if (!wanted.possibleValues.isEmpty()) a->setPossibleValues(wanted.possibleValues);
        a->setToOne(QStringLiteral("component"), c);
        return a;
    }

    // Exactly these become selected, and the inspector follows.
    void select(const std::vector<model::QuartzComponent*>& components)
    {
        composition->clearSelection();
        for (model::QuartzComponent* c : components) c->setSelected(true);
        settle();
    }

    // Runs what waits for the event loop: the coalesced rebuild, table fills.
    void settle()
    {
        QCoreApplication::processEvents();
        inspector.updateIfNeeded();
    }

    inspector::VLInspectorAttributesController* attributes() const { return inspector.attributesController(); }

    template <class Editor> Editor* editor(const QString& key) const
    {
        auto* e = qobject_cast<Editor*>(attributes()->editorForKey(key));
        EXPECT_NE(e, nullptr) << "no editor of that kind for " << key.toStdString();
        return e;
    }

    // The editor of a pane row by its object name (the key it edits).
    template <class Editor> Editor* paneEditor(QWidget* pane, const QString& name) const
    {
        auto* e = pane->findChild<Editor*>(name);
        EXPECT_NE(e, nullptr) << "no editor " << name.toStdString();
        return e;
    }

    static QVariant value(model::QuartzComponent* c, const char* key) { return c->valueForKey(QLatin1String(key)); }

    std::unique_ptr<document::CompositionDocument> document;
    model::Composition* composition = nullptr;
    inspector::VLInspectorController inspector;
};
