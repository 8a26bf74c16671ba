#pragma once
// A composition with components made from small test files, exported to a
// temporary folder and read back as a file model.

#include "../model/ModelFixture.h"
#include "../support/ComponentFiles.h"

#include "document/CompositionExport.h"
#include "model/Settings.h"
#include "model/StandardComponents.h"

#include <QFileInfo>

#include <QTemporaryDir>

class ExportFixture : public ModelFixture {
protected:
    ~ExportFixture() override { model::Settings::setValue(model::Settings::kAvoidSpacesInPortLabels, false); }

    // A red box component whose string port "Input" the operator may change.
    model::QuartzComponent* addBox(const QString& title, QRectF frame = QRectF(100, 100, 200, 100))
    {
        const QString path = testfiles::writeBoxComposition(
            QDir(dir.path()), QStringLiteral("Box.qtz"),
            {{"QCStringPort", QStringLiteral("Input"), QStringLiteral("Input"), plist::Value("text")}});
        model::QuartzComponent* c = composition->addComponenWithQuartzCompositionFile(path);
        c->setTitle(title);
        c->attributeForKey(QStringLiteral("Input"))->setPermissionToChange(true);
        c->attributeForKey(QStringLiteral("Color"))->setCurrentValue(QColor(Qt::red));
        c->setOriginX(frame.x());
        c->setOriginY(frame.y());
        c->setWidth(frame.width());
        c->setHeight(frame.height());
        return c;
    }

    std::unique_ptr<QuartzComposition> exportAndRead(bool background = false)
    {
        path = dir.filePath(QStringLiteral("Export.qtz"));
        EXPECT_TRUE(document::CompositionExport::exportToPath(*composition, path, background,
                                                              &document::CompositionExport::documentKey));
        return QuartzComposition::compositionWithFile(path);
    }

    static const QuartzPatch* node(const QuartzComposition& file, const QString& key)
    {
        for (const auto& child : file.rootPatch().nodes())
            if (child->key() == key) return child.get();
        return nullptr;
    }

    static QStringList nodeKeys(const QuartzComposition& file)
    {
        QStringList keys;
        for (const auto& child : file.rootPatch().nodes()) keys << child->key();
        return keys;
    }

    static QStringList publishedKeys(const QuartzComposition& file, const char* list)
    {
        QStringList keys;
        for (const plist::Value& port : file.rootPatch().state().value(list).array())
            keys << QString::fromStdString(port.value("key").string());
        return keys;
    }

    // The value set on a node's port: a macro keeps it on its published
    // input, any other patch in its port states.
    static double portValue(const QuartzPatch* patch, const char* port)
    {
        for (const plist::Value& published : patch->state().value("publishedInputPorts").array())
            if (published.value("key").string() == port) return published.value("state").value("value").toDouble();
        return patch->state().value("ivarInputPortStates").value(port).value("value").toDouble();
    }

    // "source.port -> destination.port" for every connection of the root.
    static QStringList connections(const QuartzComposition& file)
    {
        QStringList result;
        for (const auto& [name, c] : file.rootPatch().state().value("connections").dictionary())
            result << QStringLiteral("%1.%2 -> %3.%4")
                          .arg(QString::fromStdString(c.value("sourceNode").string()),
                               QString::fromStdString(c.value("sourcePort").string()),
                               QString::fromStdString(c.value("destinationNode").string()),
                               QString::fromStdString(c.value("destinationPort").string()));
        return result;
    }

    QTemporaryDir dir;
    QString path;
};
