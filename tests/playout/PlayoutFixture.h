#pragma once
// Documents to play: red boxes on a template of a chosen video mode, with
// stop frames and keyframes where a test needs them, exported the way the
// player exports them.

#include "../support/ComponentFiles.h"

#include "document/CompositionDocument.h"
#include "model/Attribute.h"
#include "model/Composition.h"
#include "model/QuartzComponent.h"
#include "model/VideoResolution.h"
#include "playout/Player.h"
#include "playout/PlayoutTemplate.h"

#include <QColor>
#include <QDir>
#include <QImage>
#include <QTemporaryDir>

#include <gtest/gtest.h>

class PlayoutFixture : public ::testing::Test {
protected:
    explicit PlayoutFixture(const QString& mode = QStringLiteral("720p25 RGBA"))
    {
        useMode(mode);
    }

    void useMode(const QString& mode)
    {
        document = document::CompositionDocument::emptyDocumentWithResolution(model::VideoResolution(mode));
        composition().setDuration(3.0);
    }

    model::Composition& composition() { return *document->composition(); }

    // A red box, frame in template pixels (origin lower left).
    model::QuartzComponent* addBox(QRectF frame, const QString& title = QStringLiteral("Box"))
    {
        const QString path = testfiles::writeBoxComposition(QDir(dir.path()), QStringLiteral("Box.qtz"), {});
        model::QuartzComponent* c = composition().addComponenWithQuartzCompositionFile(path);
        c->setTitle(title);
        c->attributeForKey(QStringLiteral("Color"))->setCurrentValue(QColor(Qt::red));
        c->setOriginX(frame.x());
        c->setOriginY(frame.y());
        c->setWidth(frame.width());
        c->setHeight(frame.height());
        return c;
    }

    // A box sliding from x = 0 to x = `distance` between 0 s and `until`.
    model::QuartzComponent* addMovingBox(double distance, double until, double y = 100)
    {
        model::QuartzComponent* c = addBox(QRectF(0, y, 100, 100), QStringLiteral("Mover"));
        model::Attribute* x = c->attributeForKey(QStringLiteral("originX"));
        x->setAnimateable(true);
        x->addTimepoint(0.0, 0.0f);
        x->addTimepoint(until, float(distance));
        return c;
    }

    playout::PlayoutTemplate exportTemplate(bool background = true)
    {
        QString error;
        auto played = playout::exportForPlayout(*document, playout::ExportRequest{background, {}}, &error);
        EXPECT_TRUE(played) << error.toStdString();
        return played ? *played : playout::PlayoutTemplate{};
    }

    // Loads the document into `player`, keyed unless `background`.
    void load(playout::Player& player, playout::PlayerOptions options = {}, bool background = true)
    {
        player.load(exportTemplate(background), options);
        ASSERT_TRUE(player.isLoaded());
    }

    // The x of the first red pixel on a row given from the top, or -1.
    static int redFrom(const QImage& image, int row)
    {
        for (int x = 0; x < image.width(); ++x) {
            const QColor c = image.pixelColor(x, row);
            if (c.red() > 200 && c.green() < 60 && c.alpha() > 200) return x;
        }
        return -1;
    }

    QTemporaryDir dir;
    std::unique_ptr<document::CompositionDocument> document;
};
