// Loading a component's composition and keeping its renderer fed with the
// attribute values.

#include "model/Composition.h"
#include "model/LoadedCompositions.h"
#include "model/QuartzComponent.h"
#include "plist/PropertyList.h"
#include "runtime/Renderer.h"

#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>

namespace model {

Q_DECLARE_LOGGING_CATEGORY(lcComponent)

void QuartzComponent::setRenderer(std::unique_ptr<runtime::Renderer> renderer)
{
    renderer_ = std::move(renderer);
    needsUpdate_ = true;
}

void QuartzComponent::setRendererInputValue(const QString& key, const QVariant& value)
{
    if (renderer_) renderer_->setInputValue(key, value);
}

bool QuartzComponent::initializeQuartzComposition()
{
    QString error;
    std::shared_ptr<const runtime::Composition> loaded;
    const QByteArray data = quartzCompositionData();
    const QString directory = QFileInfo(compositionFilename()).absolutePath();
    if (!data.isEmpty()) {
        loaded = loadSharedComposition(data, directory, &error);
    } else if (compositionFilename().isEmpty()) {
        return false;  // nothing to load
    } else {
        QFile file(compositionFilename());
        if (!file.open(QIODevice::ReadOnly)) {
            qCWarning(lcComponent) << "Cannot read" << compositionFilename() << file.errorString();
            return false;
        }
        const QByteArray bytes = file.readAll();
        loaded = loadSharedComposition(bytes, directory, &error);
        if (loaded) setPrimitiveValue(QStringLiteral("quartzCompositionData"), bytes);
    }
    if (!loaded) {
        qCWarning(lcComponent) << "Cannot load the composition of" << title() << error;
        return false;
    }
    loadedComposition_ = loaded;
    setRenderer(std::make_unique<runtime::Renderer>(loaded, QSize(32, 32)));
    renderContext_ = nullptr;
    return true;
}

plist::Value QuartzComponent::quartzCompositionDocument() const
{
    const QByteArray data = quartzCompositionData();
    if (data.isEmpty()) return {};
    if (parsedDocument_.isNull() || parsedData_ != data) {
        auto parsed = plist::read(std::string_view(data.constData(), size_t(data.size())));
        parsedDocument_ = parsed ? std::move(*parsed) : plist::Value();
        parsedData_ = data;
    }
    return parsedDocument_;
}

void QuartzComponent::setAttributeValuesOnQuartzComposition()
{
    for (Attribute* a : attributes()) a->pushValueToRenderer();
}

void QuartzComponent::updateWithFile(const QString& path)
{
    setQuartzCompositionData(QByteArray());
    setCompositionFilename(path);
    initializeQuartzComposition();
}

void QuartzComponent::awakeFromFetch()
{
    initializeAttributeObservers();
    initializeQuartzComposition();
    setAttributeValuesOnQuartzComposition();
}

}  // namespace model

namespace model {

void QuartzComponent::sizeToFit()
{
    // A component loaded from a document has not been drawn yet: find its
    // picture's port first.
    if (renderer_ && spriteKey_.isEmpty()) setupRenderer();
    if (rootIsRenderInImage_ || !renderer_ || portImageNode_.isEmpty()) return;
    renderer_->setInputValue(QStringLiteral("inputWidth"), 0.0);
    renderer_->setInputValue(QStringLiteral("inputHeight"), 0.0);
    renderer_->render(0.0);
    const QImage image = renderer_->nodeOutputValue(portImageNode_, QStringLiteral("outputImage")).value<QImage>();
    if (!image.isNull() && image.width() > 0 && image.height() > 0) {
        const bool constrain = constrainProportions();
        setConstrainProportions(false);
        setWidth(image.width());
        setHeight(image.height());
        setConstrainProportions(constrain);
    }
    renderer_->setInputValue(QStringLiteral("inputWidth"), float(width()));
    renderer_->setInputValue(QStringLiteral("inputHeight"), float(height()));
}

void QuartzComponent::updateFileURL()
{
    const Composition* owner = composition();
    if (renderer_ && owner && owner->fileURL().isValid())
        renderer_->userInfo().insert(documentURLKey(), owner->fileURL());
}

}  // namespace model
