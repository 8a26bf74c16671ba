#pragma once
// An image: a well showing it, which takes an image file dropped on it or
// chosen from the window-modal file dialog its click opens.

#include "inspector/AttributeEditor.h"

#include <QPointer>

#include <QFileDialog>

namespace inspector {

class ImageWell;

class ImageAttributeEditor : public AttributeEditor {
    Q_OBJECT
public:
    explicit ImageAttributeEditor(const EditorOptions& options);

    void showValue(const QVariant& value, bool mixed) override;
    QWidget* widget() const override;

    ImageWell* well() const { return well_; }
    QFileDialog* fileDialog() const { return dialog_; }
    void showFilePanel();
    // Reads the file and writes its image; false (and nothing written) for
    // a file that is not a readable image.
    bool takeImageFile(const QString& path);

private:
    ImageWell* well_;
    QPointer<QFileDialog> dialog_;
};

}  // namespace inspector
