#pragma once
// A documents controller with one new document window that closes without
// asking, and helpers for the windows' menus.

#include "app/CompositionDocumentsController.h"
#include "app/VLPreferencesController.h"
#include "app/VLWindowController.h"
#include "model/Settings.h"

#include <QAction>
#include <QCoreApplication>
#include <QMenu>
#include <QPointer>
#include <QTemporaryDir>

#include <gtest/gtest.h>

class AppFixture : public ::testing::Test {
protected:
    AppFixture() { window = newWindow(); }
    ~AppFixture() override
    {
        closeAll();
        for (const QString& key : {model::Settings::kDefaultDocumentMode, model::Settings::kImagesLibraryPath,
                                   model::Settings::kWindowState})
            model::Settings::remove(key);
    }

    app::VLWindowController* newWindow()
    {
        app::VLWindowController* made = controller.newDocument();
        EXPECT_NE(made, nullptr);
        if (made) made->setCloseQuestion(dontSave);
        return made;
    }

    void closeAll()
    {
        for (app::VLWindowController* open : controller.windows()) {
            open->setCloseQuestion(dontSave);
            open->close();
        }
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    static app::VLWindowController::CloseAnswer dontSave(app::VLWindowController&)
    {
        return app::VLWindowController::CloseAnswer::DontSave;
    }

    static QMenu* newDocumentMenu(app::VLWindowController* w)
    {
        return w->findChild<QMenu*>(QStringLiteral("newDocumentMenu"));
    }

    // The submenu's titles, "-" for a separator.
    static QStringList menuTitles(QMenu* menu)
    {
        QStringList titles;
        for (QAction* action : menu->actions()) titles << (action->isSeparator() ? QStringLiteral("-") : action->text());
        return titles;
    }

    // The titles of the items that answer Ctrl+N.
    static QStringList ctrlNItems(QMenu* menu)
    {
        QStringList titles;
        for (QAction* action : menu->actions())
            if (action->shortcuts().contains(QKeySequence(QKeySequence::New))) titles << action->text();
        return titles;
    }

    static QAction* menuItem(QMenu* menu, const QString& title)
    {
        for (QAction* action : menu->actions())
            if (action->text() == title) return action;
        return nullptr;
    }

    app::CompositionDocumentsController controller;
    QPointer<app::VLWindowController> window;
    QTemporaryDir dir;
};
