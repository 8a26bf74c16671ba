#include "inspector/ImageAttributeEditor.h"

#include "inspector/ColourWell.h"

#include <QFileDialog>
#include <QImage>
#include <QImageReader>

namespace inspector {

ImageAttributeEditor::ImageAttributeEditor(const EditorOptions& options) : AttributeEditor(options)
{
    well_ = new ImageWell;
    setParent(well_);
    connect(well_, &QToolButton::clicked, this, &ImageAttributeEditor::showFilePanel);
    connect(well_, &ImageWell::imageFileDropped, this, &ImageAttributeEditor::takeImageFile);
}

void ImageAttributeEditor::showValue(const QVariant& value, bool mixed)
{
    rememberShown(value, mixed);
    well_->setImage(value.value<QImage>(), mixed);
}

QWidget* ImageAttributeEditor::widget() const { return well_; }

void ImageAttributeEditor::showFilePanel()
{
    if (dialog_) return;
    QStringList patterns;
    for (const QByteArray& format : QImageReader::supportedImageFormats())
        patterns << QStringLiteral("*.") + QString::fromLatin1(format);
    dialog_ = new QFileDialog(well_->window(), options().label);
    dialog_->setAttribute(Qt::WA_DeleteOnClose);
    dialog_->setFileMode(QFileDialog::ExistingFile);
    dialog_->setNameFilter(QStringLiteral("Images (%1)").arg(patterns.join(QLatin1Char(' '))));
    dialog_->setWindowModality(Qt::WindowModal);
    connect(dialog_, &QFileDialog::fileSelected, this, &ImageAttributeEditor::takeImageFile);
    connect(dialog_, &QDialog::finished, this, [this] { dialog_.clear(); });
    dialog_->open();
}

bool ImageAttributeEditor::takeImageFile(const QString& path)
{
    QImageReader reader(path);
    reader.setAutoTransform(true);
    const QImage image = reader.read();
    if (image.isNull()) {
        well_->setToolTip(QStringLiteral("Not an image: %1").arg(reader.errorString()));
        return false;
    }
    editOnce(image);
    return true;
}

}  // namespace inspector
