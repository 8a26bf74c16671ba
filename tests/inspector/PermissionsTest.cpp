// The operator's permissions: one switch per attribute of the selection,
// stored (undoable, saved) and obeyed by the export, which publishes exactly
// what the operator may change.

#include "InspectorFixture.h"

#include "../support/ComponentFiles.h"

#include "inspector/CheckboxAttributeEditor.h"
#include "inspector/VLInspectorPermissionsController.h"

#include "document/CompositionExport.h"
#include "quartz/QuartzComposition.h"

#include <QCheckBox>
#include <QPushButton>
#include <QTemporaryDir>

class Permissions : public InspectorFixture {
protected:
    Permissions()
    {
        const QString path = testfiles::writeBoxComposition(
            QDir(dir.path()), QStringLiteral("Box.qtz"),
            {{"QCStringPort", QStringLiteral("Headline"), QStringLiteral("Headline"), plist::Value("text")}});
        {
            model::UndoRegistrationPause quiet(undoManager());
            box = composition->addComponenWithQuartzCompositionFile(path);
            box->setTitle(QStringLiteral("Box"));
        }
        inspector.setupForTab(inspector::InspectorTab::Permissions);
        select({box});
        startCounting();
    }

    inspector::VLInspectorPermissionsController* pane() const { return inspector.permissionsController(); }

    QStringList publishedInputs()
    {
        auto file = document::CompositionExport::exportedComposition(*composition, false,
                                                                     &document::CompositionExport::documentKey);
        QStringList keys;
        if (!file) return keys;
        for (const plist::Value& port : file->rootPatch().state().value("publishedInputPorts").array())
            keys << QString::fromStdString(port.value("key").string());
        return keys;
    }

    QTemporaryDir dir;
    model::QuartzComponent* box = nullptr;
};

TEST_F(Permissions, EveryAttributeHasItsSwitch)
{
    for (model::Attribute* a : box->attributes()) {
        inspector::CheckboxAttributeEditor* s = pane()->switchForKey(a->key());
        if (inspector::VLInspectorPermissionsController::editorOnlyKeys().contains(a->key())) {
            EXPECT_EQ(s, nullptr) << a->key().toStdString();
            continue;
        }
        ASSERT_NE(s, nullptr) << a->key().toStdString();
        EXPECT_EQ(s->checkBox()->isChecked(), a->permissionToChange()) << a->key().toStdString();
    }
}

TEST_F(Permissions, ASwitchIsStoredUndoableAndPublishedByTheExport)
{
    model::Attribute* headline = box->attributeForKey(QStringLiteral("Headline"));
    ASSERT_NE(headline, nullptr);
    ASSERT_FALSE(headline->permissionToChange());
    EXPECT_FALSE(publishedInputs().contains(QStringLiteral("Box_Headline")));

    pane()->switchForKey(QStringLiteral("Headline"))->checkBox()->click();
    EXPECT_TRUE(headline->permissionToChange());
    EXPECT_TRUE(publishedInputs().contains(QStringLiteral("Box_Headline")));
    EXPECT_EQ(undoManager().undoCount(), 1u);

    // Kept by the saved document.
    const QString package = dir.filePath(QStringLiteral("Saved.composition"));
    QString error;
    ASSERT_TRUE(document->saveAs(package, &error)) << error.toStdString();
    auto reopened = document::CompositionDocument::open(package, &error);
    ASSERT_TRUE(reopened) << error.toStdString();
    const auto components = reopened->composition()->componentArray();
    ASSERT_EQ(components.size(), 1u);
    EXPECT_TRUE(components.front()->attributeForKey(QStringLiteral("Headline"))->permissionToChange());

    undoManager().undo();
    EXPECT_FALSE(headline->permissionToChange());
    EXPECT_FALSE(pane()->switchForKey(QStringLiteral("Headline"))->checkBox()->isChecked());
    EXPECT_FALSE(publishedInputs().contains(QStringLiteral("Box_Headline")));
}

TEST_F(Permissions, AllAndNoneSetEveryAttributeInOneStep)
{
    pane()->allButton()->click();
    for (model::Attribute* a : box->attributes())
        EXPECT_EQ(a->permissionToChange(),
                  !inspector::VLInspectorPermissionsController::editorOnlyKeys().contains(a->key()))
            << a->key().toStdString();
    EXPECT_EQ(undoManager().undoCount(), 1u);
    pane()->noneButton()->click();
    for (model::Attribute* a : box->attributes()) EXPECT_FALSE(a->permissionToChange()) << a->key().toStdString();
    undoManager().undo();
    EXPECT_TRUE(box->attributeForKey(QStringLiteral("Headline"))->permissionToChange());
}

TEST_F(Permissions, ComponentsThatDisagreeShowMixedAndAreSetTogether)
{
    model::QuartzComponent* other = addComponent(QStringLiteral("Other"), QStringLiteral("other.qtz"),
                                                 {{"Headline", model::kTypeString, QStringLiteral("x")}});
    {
        model::UndoRegistrationPause quiet(undoManager());
        other->attributeForKey(QStringLiteral("Headline"))->setPermissionToChange(true);
    }
    select({box, other});
    inspector::CheckboxAttributeEditor* s = pane()->switchForKey(QStringLiteral("Headline"));
    ASSERT_NE(s, nullptr);
    EXPECT_EQ(s->checkBox()->checkState(), Qt::PartiallyChecked);
    s->checkBox()->click();
    EXPECT_TRUE(box->attributeForKey(QStringLiteral("Headline"))->permissionToChange());
    EXPECT_TRUE(other->attributeForKey(QStringLiteral("Headline"))->permissionToChange());
}

TEST_F(Permissions, TheTabShowsItsGroupWithNothingSelected)
{
    select({});
    EXPECT_TRUE(inspector.isGroupVisible(inspector::InspectorGroup::Permissions));
    EXPECT_EQ(pane()->switchForKey(QStringLiteral("Headline")), nullptr);
}
