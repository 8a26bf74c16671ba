#pragma once
// A document at 25 frames a second, 10 seconds long, and helpers that make
// components without a composition file: their standard number attributes,
// a time span, and keyframes on any of them. Enough for the timeline, which
// only reads times, titles and keyframes.

#include "document/CompositionDocument.h"
#include "model/Attribute.h"
#include "model/Composition.h"
#include "model/ObjectStore.h"
#include "model/QuartzComponent.h"
#include "model/VideoResolution.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

#include <initializer_list>
#include <memory>

class TimelineModelFixture : public ::testing::Test {
protected:
    TimelineModelFixture()
    {
        document = document::CompositionDocument::emptyDocumentWithResolution(
            model::VideoResolution(QStringLiteral("720p25 RGBA")));
        composition = document->composition();
        model::UndoRegistrationPause quiet(undoManager());
        composition->setDuration(10);
    }

    model::UndoManager& undoManager() { return document->store().undoManager(); }

    // Forgets the set-up's undo steps so a test sees only its own.
    void startCounting()
    {
        QCoreApplication::processEvents();
        document->store().processPendingChanges();
        undoManager().removeAllActions();
    }

    // A component on top of the others, spanning [start, end], with the
    // standard attributes (titled as their keys) and the extra number
    // attributes given.
    model::QuartzComponent* addComponent(const QString& title, double start = 0, double end = 10,
                                         std::initializer_list<const char*> extra = {})
    {
        model::ObjectStore& store = document->store();
        auto* c = store.insertNewObject<model::QuartzComponent>();
        c->setTitle(title);
        const std::pair<const char*, double> standard[] = {{"originX", 0},   {"originY", 0},   {"inputWidth", 100},
                                                           {"inputHeight", 50}, {"opacity", 1}, {"zRotation", 0}};
        for (const auto& [key, value] : standard) addAttribute(c, QString::fromLatin1(key), value);
        for (const char* key : extra) addAttribute(c, QString::fromLatin1(key), 0.0);
        c->initializeAttributeObservers();
        composition->addComponent(c);
        c->setStartTime(start);
        c->setEndTime(end);
        return c;
    }

    // A component whose only attributes are the given number inputs (and
    // the editor's own margins and visibility, which never animate).
    model::QuartzComponent* addBareComponent(const QString& title, std::initializer_list<const char*> keys)
    {
        auto* c = document->store().insertNewObject<model::QuartzComponent>();
        c->setTitle(title);
        for (const char* key : keys) addAttribute(c, QString::fromLatin1(key), 0.0);
        c->initializeAttributeObservers();
        composition->addComponent(c);
        c->setStartTime(0);
        c->setEndTime(composition->duration());
        return c;
    }

    model::Attribute* addAttribute(model::QuartzComponent* c, const QString& key, double value)
    {
        model::Attribute* a =
            model::Attribute::create(&document->store(), key, key, model::kTypeNumber, float(value));
        a->setToOne(QStringLiteral("component"), c);
        return a;
    }

    // Animates the attribute with one keyframe per time (values 0, 1, 2 …).
    model::Attribute* animate(model::QuartzComponent* c, const QString& key, std::initializer_list<double> times)
    {
        model::Attribute* a = c->attributeForKey(key);
        EXPECT_NE(a, nullptr) << key.toStdString();
        if (!a) return nullptr;
        int value = 0;
        for (double t : times) a->addTimepoint(t, float(value++));
        return a;
    }

    static QList<float> keys(const model::Attribute* a) { return a->keyframes().keys(); }

    std::unique_ptr<document::CompositionDocument> document;
    model::Composition* composition = nullptr;
};
