#pragma once
// Small component files written for tests, built the way a designer would
// wire them: published inputs on a macro whose image is the root's output.

#include "quartz/QuartzComposition.h"

#include <QDir>
#include <QString>

#include <initializer_list>
#include <utility>

namespace testfiles {

// A splitter of the given port class published as `key` on its parent.
inline QuartzPatch* addPublishedSplitter(QuartzPatch& macro, const char* portClass, const QString& key,
                                         const plist::Value& value = {})
{
    QuartzPatch* splitter =
        macro.addPatchWithClass(QStringLiteral("QCSplitter"), plist::Dictionary{{"portClass", portClass}},
                                value.isNull() ? plist::Dictionary{} : plist::Dictionary{{"input", value}});
    splitter->publishPort(QStringLiteral("input"), key);
    return splitter;
}

struct Port {
    const char* portClass;  // "QCStringPort", "QCNumberPort", "QCColorPort", ...
    QString key;
    QString label;
    plist::Value value;
};

// A render-in-image whose inner sprite fills it with "Color"; every port
// given is published on the root as a splitter input beside it. The root
// publishes "outputImage", "inputWidth" and "inputHeight".
inline QString writeBoxComposition(const QDir& dir, const QString& fileName, std::initializer_list<Port> ports,
                                   const QString& compositionName = {})
{
    QuartzComposition composition;
    QuartzPatch& root = composition.rootPatch();
    QuartzPatch* image = root.addPatchWithClass(QStringLiteral("QCRenderInImage"), plist::Value(),
                                                plist::Dictionary{{"inputWidth", 200}, {"inputHeight", 100}});
    QuartzPatch* sprite = image->addPatchWithClass(
        QStringLiteral("QCSprite"), plist::Value(),
        plist::Dictionary{{"inputWidth", 2.0}, {"inputHeight", 2.0}});
    sprite->publishPort(QStringLiteral("inputColor"), QStringLiteral("Color"));
    image->publishPort(QStringLiteral("inputWidth"), QStringLiteral("inputWidth"));
    image->publishPort(QStringLiteral("inputHeight"), QStringLiteral("inputHeight"));
    image->publishPort(QStringLiteral("Color"), QStringLiteral("Color"), QStringLiteral("Colour"));
    image->publishOutputPort(QStringLiteral("outputImage"), QStringLiteral("outputImage"));
    for (const Port& port : ports) {
        QuartzPatch* splitter = addPublishedSplitter(*image, port.portClass, port.key, port.value);
        (void)splitter;
        image->publishPort(port.key, port.key, port.label.isEmpty() ? port.key : port.label);
    }
    if (!compositionName.isEmpty())
        composition.dictionary().set("name", plist::Value(compositionName.toStdString()));
    const QString path = dir.filePath(fileName);
    composition.writeToFile(path, false);
    return path;
}

// A macro that passes its "Image" input straight to "outputImage": the
// component takes the image's own size.
inline QString writeImageComposition(const QDir& dir, const QString& fileName)
{
    QuartzComposition composition;
    QuartzPatch& root = composition.rootPatch();
    QuartzPatch* macro = root.addPatchWithClass(QStringLiteral("QCPatch"));
    QuartzPatch* splitter = addPublishedSplitter(*macro, "QCImagePort", QStringLiteral("Image"));
    splitter->publishOutputPort(QStringLiteral("output"), QStringLiteral("outputImage"));
    macro->publishPort(QStringLiteral("Image"), QStringLiteral("Image"), QStringLiteral("Image"));
    macro->publishOutputPort(QStringLiteral("outputImage"), QStringLiteral("outputImage"));
    const QString path = dir.filePath(fileName);
    composition.writeToFile(path, false);
    return path;
}

// A hand-made composition that draws straight to the screen: no image output.
inline QString writeScreenComposition(const QDir& dir, const QString& fileName)
{
    QuartzComposition composition;
    QuartzPatch* sprite = composition.rootPatch().addPatchWithClass(QStringLiteral("QCSprite"));
    sprite->publishPort(QStringLiteral("inputColor"), QStringLiteral("Color"), QStringLiteral("Color"));
    const QString path = dir.filePath(fileName);
    composition.writeToFile(path, false);
    return path;
}

}  // namespace testfiles
