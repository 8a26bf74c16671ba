// Image sources and measures: Image Importer, Image Dimensions, Rendering
// Destination Dimensions (QCScreenInfo), Video Input.

#include "runtime/CompositionResources.h"
#include "runtime/ExecutionContext.h"
#include "runtime/RendererServices.h"
#include "runtime/patches/ImageOps.h"
#include "runtime/patches/PatchFamilies.h"

#include <QDir>

#include <cmath>

namespace runtime {

namespace {

// The image embedded in the file ("imageData"), decoded on first use and
// shared by every renderer of the composition; or, without data, the file
// at "imagePath" (relative to the composition's folder).
class ImageLoaderPatch : public Patch {
public:
    explicit ImageLoaderPatch(const PatchSetup& setup)
        : Patch(setup), data_(setup.state.value("imageData")), path_(stateString(setup, "imagePath")), resources_(setup.resources)
    {
        image_ = &addOutput(QStringLiteral("outputImage"), PortType::Image);
    }
    void execute(ExecutionContext& context, double) override
    {
        if (data_.isData() && resources_) {
            const Image image = resources_->embeddedImage(data_);
            if (image.isNull()) context.services().logOnce(QStringLiteral("%1: the embedded image cannot be decoded").arg(path()));
            setOutput(*image_, image);
            return;
        }
        if (path_.isEmpty()) return;
        const QString file = QDir(context.services().compositionDirectory).absoluteFilePath(path_);
        QImage pixels(file);
        if (pixels.isNull()) context.services().logOnce(QStringLiteral("%1: cannot read image %2").arg(path(), file));
        setOutput(*image_, Image::fromRaster(pixels));
    }

private:
    plist::Value data_;
    QString path_;
    const CompositionResources* resources_;
    OutputPort* image_;
};

double destinationWidth(ExecutionContext& context)
{
    return context.target() ? context.target()->pixelSize().width() : 640;
}

class ImageDimensionsPatch : public Patch {
public:
    explicit ImageDimensionsPatch(const PatchSetup& setup) : Patch(setup)
    {
        image_ = &addInput(QStringLiteral("inputImage"), PortType::Image);
        width_ = &addOutput(QStringLiteral("outputWidth"), PortType::Number);
        height_ = &addOutput(QStringLiteral("outputHeight"), PortType::Number);
        ratio_ = &addOutput(QStringLiteral("outputRatio"), PortType::Number);
        pixelsWide_ = &addOutput(QStringLiteral("outputPixelsWide"), PortType::Index);
        pixelsHigh_ = &addOutput(QStringLiteral("outputPixelsHigh"), PortType::Index);
    }
    // Unit sizes follow the destination's width, which is not a port.
    TimeMode timeMode() const override { return TimeMode::Idle; }
    bool readsOnlyTheDestinationSize() const override { return true; }
    void execute(ExecutionContext& context, double) override
    {
        const QSize size = image_->value.toImage().pixelSize();
        const double unitsPerPixel = 2.0 / destinationWidth(context);
        setOutput(*width_, size.width() * unitsPerPixel);
        setOutput(*height_, size.height() * unitsPerPixel);
        setOutput(*ratio_, size.height() > 0 ? double(size.width()) / size.height() : 0.0);
        setOutput(*pixelsWide_, size.width());
        setOutput(*pixelsHigh_, size.height());
    }

private:
    InputPort* image_;
    OutputPort* width_;
    OutputPort* height_;
    OutputPort* ratio_;
    OutputPort* pixelsWide_;
    OutputPort* pixelsHigh_;
};

// "Rendering Destination Dimensions": the current destination (the
// renderer's image, or a Render In Image's).
// Image Matrix: the image scaled, turned (degrees, counter-clockwise) about
// its centre, then moved (pixels). A scale of 0 (what the files store when
// the port was never set) leaves that axis unscaled.
class ImageMatrixPatch : public Patch {
public:
    explicit ImageMatrixPatch(const PatchSetup& setup) : Patch(setup)
    {
        image_ = &addInput(QStringLiteral("inputImage"), PortType::Image);
        for (const char* key : {"inputTranslateX", "inputTranslateY", "inputRotate"})
            ports_.push_back(&addInput(QString::fromLatin1(key), PortType::Number, 0.0));
        for (const char* key : {"inputScaleX", "inputScaleY"}) ports_.push_back(&addInput(QString::fromLatin1(key), PortType::Number, 1.0));
        output_ = &addOutput(QStringLiteral("outputImage"), PortType::Image);
    }
    void execute(ExecutionContext&, double) override
    {
        const Image image = image_->value.toImage();
        if (image.isNull()) return setOutput(*output_, Value());
        const auto scale = [](double s) { return s == 0 || !std::isfinite(s) ? 1.0 : s; };
        const QPointF centre = image.isInfinite() ? QPointF() : QRectF(image.extent()).center();
        QTransform t;
        t.translate(number(ports_[0]), number(ports_[1]));
        t.translate(centre.x(), centre.y());
        t.rotate(number(ports_[2]));
        t.scale(scale(number(ports_[3])), scale(number(ports_[4])));
        t.translate(-centre.x(), -centre.y());
        setOutput(*output_, transformImage(image, t));
    }

private:
    InputPort* image_;
    std::vector<InputPort*> ports_;  // translate x, y, rotate, scale x, y
    OutputPort* output_;
};

// Image Resize: the image scaled smoothly to inputWidth × inputHeight
// pixels; a size of 0 or less on an axis keeps that axis. Infinite images
// pass unchanged.
class ImageResizePatch : public Patch {
public:
    explicit ImageResizePatch(const PatchSetup& setup) : Patch(setup)
    {
        image_ = &addInput(QStringLiteral("inputImage"), PortType::Image);
        width_ = &addInput(QStringLiteral("inputWidth"), PortType::Number, 0.0);
        height_ = &addInput(QStringLiteral("inputHeight"), PortType::Number, 0.0);
        addInput(QStringLiteral("inputMode"), PortType::Index, 0);
        addInput(QStringLiteral("inputCondition"), PortType::Index, 0);
        output_ = &addOutput(QStringLiteral("outputImage"), PortType::Image);
    }
    void execute(ExecutionContext&, double) override
    {
        const Image image = image_->value.toImage();
        if (image.isNull() || image.isInfinite()) return setOutput(*output_, image.isNull() ? Value() : Value(image));
        const auto side = [](double wanted, int current) {
            return wanted >= 1 && std::isfinite(wanted) ? int(std::lround(std::min(wanted, double(kMaxSide)))) : current;
        };
        const QSize size(side(number(width_), image.pixelSize().width()), side(number(height_), image.pixelSize().height()));
        if (size == image.pixelSize()) return setOutput(*output_, image);
        setOutput(*output_, Image::fromRaster(image.raster().scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)));
    }

private:
    static constexpr int kMaxSide = 8192;
    InputPort* image_;
    InputPort* width_;
    InputPort* height_;
    OutputPort* output_;
};

class ScreenInfoPatch : public Patch {
public:
    explicit ScreenInfoPatch(const PatchSetup& setup) : Patch(setup)
    {
        width_ = &addOutput(QStringLiteral("outputWidth"), PortType::Number);
        height_ = &addOutput(QStringLiteral("outputHeight"), PortType::Number);
        pixelsWide_ = &addOutput(QStringLiteral("outputPixelsWide"), PortType::Index);
        pixelsHigh_ = &addOutput(QStringLiteral("outputPixelsHigh"), PortType::Index);
        ratio_ = &addOutput(QStringLiteral("outputRatio"), PortType::Number);
        resolution_ = &addOutput(QStringLiteral("outputResolution"), PortType::Number);
    }
    TimeMode timeMode() const override { return TimeMode::Idle; }
    bool readsOnlyTheDestinationSize() const override { return true; }
    void execute(ExecutionContext& context, double) override
    {
        const QSize size = context.target() ? context.target()->pixelSize() : QSize(640, 480);
        setOutput(*width_, 2.0);
        setOutput(*height_, size.width() > 0 ? 2.0 * size.height() / size.width() : 0.0);
        setOutput(*pixelsWide_, size.width());
        setOutput(*pixelsHigh_, size.height());
        setOutput(*ratio_, size.height() > 0 ? double(size.width()) / size.height() : 0.0);
        setOutput(*resolution_, 72.0);
    }

private:
    OutputPort* width_;
    OutputPort* height_;
    OutputPort* pixelsWide_;
    OutputPort* pixelsHigh_;
    OutputPort* ratio_;
    OutputPort* resolution_;
};

// There is no camera here: Video Input shows a poster image instead, taken
// from the renderer's user information "videoInputPosterImage" (an image
// or a file path), or nothing.
class VideoInputPatch : public Patch {
public:
    explicit VideoInputPatch(const PatchSetup& setup) : Patch(setup)
    {
        addInput(QStringLiteral("inputCapture"), PortType::Boolean, true);
        image_ = &addOutput(QStringLiteral("outputImage"), PortType::Image);
    }
    TimeMode timeMode() const override { return TimeMode::Idle; }
    void execute(ExecutionContext& context, double) override
    {
        const QVariant poster = context.services().userInfo.value(QStringLiteral("videoInputPosterImage"));
        if (poster == lastPoster_) return;
        lastPoster_ = poster;
        if (poster.typeId() == QMetaType::QImage) setOutput(*image_, Image::fromRaster(poster.value<QImage>()));
        else if (poster.typeId() == QMetaType::QString) setOutput(*image_, Image::fromRaster(QImage(poster.toString())));
        else setOutput(*image_, Value());
    }

private:
    OutputPort* image_;
    QVariant lastPoster_;
};

}  // namespace

void registerImagePatches(PatchRegistry& registry)
{
    registry.add(QStringLiteral("QCImageMatrix"), factoryOf<ImageMatrixPatch>());
    registry.add(QStringLiteral("QCImageResize"), factoryOf<ImageResizePatch>());
    registry.add(QStringLiteral("QCImageLoader"), factoryOf<ImageLoaderPatch>());
    registry.add(QStringLiteral("QCImageDimensions"), factoryOf<ImageDimensionsPatch>());
    registry.add(QStringLiteral("QCScreenInfo"), factoryOf<ScreenInfoPatch>());
    registry.add(QStringLiteral("QCVideoInput"), factoryOf<VideoInputPatch>());
}

}  // namespace runtime
