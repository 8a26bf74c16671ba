#pragma once
// A document's model without a file: a store, one composition and helpers
// that make components with their standard attributes.

#include "model/Attribute.h"
#include "model/Composition.h"
#include "model/ObjectStore.h"
#include "model/QuartzComponent.h"

#include <QColor>

#include <gtest/gtest.h>

class ModelFixture : public ::testing::Test {
protected:
    ModelFixture()
    {
        store.undoManager().setGroupsByEvent(false);
        composition = store.insertNewObject<model::Composition>();
        store.undoManager().removeAllActions();
    }

    // A component with a frame and no content, as if made from a file whose
    // only inputs are the geometry.
    model::QuartzComponent* addComponent(const QString& title, QRectF frame = QRectF(0, 0, 100, 50))
    {
        using model::Attribute;
        auto* c = store.insertNewObject<model::QuartzComponent>();
        c->setTitle(title);
        const std::pair<const char*, double> geometry[] = {{"originX", frame.x()},      {"originY", frame.y()},
                                                           {"inputWidth", frame.width()}, {"inputHeight", frame.height()},
                                                           {"opacity", 1.0},            {"zRotation", 0.0}};
        for (const auto& [key, value] : geometry) {
            Attribute* a = Attribute::create(&store, QString::fromLatin1(key), QString::fromLatin1(key), model::kTypeNumber, float(value));
            a->setToOne(QStringLiteral("component"), c);
        }
        c->initializeAttributeObservers();
        composition->addComponent(c);
        return c;
    }

    model::Attribute* addAttribute(model::QuartzComponent* c, const QString& key, int type, const QVariant& value)
    {
        model::Attribute* a = model::Attribute::create(&store, key, key, type, value);
        a->setToOne(QStringLiteral("component"), c);
        return a;
    }

    model::ObjectStore store;
    model::Composition* composition = nullptr;
};
