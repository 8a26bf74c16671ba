#pragma once
// A 720p document on a canvas widget of 1400 × 800 on the offscreen
// platform, with red image components and a mouse that speaks composition
// pixels (origin lower-left, y up).

#include "../support/ComponentFiles.h"

#include "canvas/CompositionView.h"
#include "document/CompositionDocument.h"
#include "model/Composition.h"
#include "model/ObjectStore.h"
#include "model/QuartzComponent.h"
#include "model/VideoResolution.h"

#include <QCoreApplication>
#include <QImage>
#include <QMouseEvent>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

class CanvasFixture : public ::testing::Test {
protected:
    CanvasFixture()
    {
        document = document::CompositionDocument::emptyDocumentWithResolution(
            model::VideoResolution(QStringLiteral("720p25 RGBA")));
        composition = document->composition();
        {
            model::UndoRegistrationPause quiet(undoManager());
            composition->setBackgroundMode(model::kBackgroundColor);
            composition->setBackgroundColor(Qt::black);
        }
        view.resize(1400, 800);
        view.setDocument(document.get());
        view.setZoomMode(100);
        view.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&view));
    }

    model::UndoManager& undoManager() { return document->store().undoManager(); }

    // Forgets the set-up's undo steps so a test counts only its own.
    void startCounting()
    {
        QCoreApplication::processEvents();
        undoManager().removeAllActions();
    }

    // A red image component with its lower-left corner at (x, y).
    model::QuartzComponent* addImage(double x, double y, QSize size = QSize(100, 50))
    {
        const QString path = testfiles::writeImageComposition(QDir(dir.path()), QStringLiteral("Image.qtz"));
        QImage red(size, QImage::Format_ARGB32_Premultiplied);
        red.fill(Qt::red);
        model::QuartzComponent* c =
            composition->addComponenWithQuartzCompositionFile(path, {{QStringLiteral("Image"), red}});
        EXPECT_NE(c, nullptr);
        c->setConstrainProportions(false);
        c->setOriginX(x);
        c->setOriginY(y);
        return c;
    }

    QPoint at(double x, double y) const { return view.viewPointFromComposition(QPointF(x, y)).toPoint(); }

    void press(QPointF p, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::mousePress(&view, Qt::LeftButton, modifiers, at(p.x(), p.y()));
    }
    void dragTo(QPointF p, Qt::KeyboardModifiers modifiers = {})
    {
        // Sent directly: QTest's mouseMove carries no modifier keys.
        const QPoint point = at(p.x(), p.y());
        QMouseEvent move(QEvent::MouseMove, QPointF(point), view.mapToGlobal(QPointF(point)), Qt::NoButton,
                         Qt::LeftButton, modifiers);
        QCoreApplication::sendEvent(&view, &move);
    }
    void release(QPointF p, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::mouseRelease(&view, Qt::LeftButton, modifiers, at(p.x(), p.y()));
    }
    void click(QPointF p, Qt::KeyboardModifiers modifiers = {})
    {
        press(p, modifiers);
        release(p, modifiers);
    }
    void drag(QPointF from, QPointF to, Qt::KeyboardModifiers modifiers = {})
    {
        press(from, modifiers);
        dragTo((from + to) / 2, modifiers);
        dragTo(to, modifiers);
        release(to, modifiers);
    }

    QTemporaryDir dir;
    std::unique_ptr<document::CompositionDocument> document;
    model::Composition* composition = nullptr;
    canvas::CompositionView view;
};
