#pragma once
// A button that shows a colour (over a checkerboard, so that transparency
// shows) or, for a selection whose colours disagree, an empty well with a
// dash. The image well does the same for pictures.

#include <QColor>
#include <QImage>
#include <QToolButton>

namespace inspector {

class ColourWell : public QToolButton {
    Q_OBJECT
public:
    explicit ColourWell(QWidget* parent = nullptr);

    void setColour(const QColor& colour);  // an invalid colour shows the dash
    QColor colour() const { return colour_; }
    bool showsMixed() const { return !colour_.isValid(); }

    QSize sizeHint() const override { return QSize(44, 22); }
    static QString mixedToolTip();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QColor colour_;
};

class ImageWell : public QToolButton {
    Q_OBJECT
public:
    explicit ImageWell(QWidget* parent = nullptr);

    void setImage(const QImage& image, bool mixed);
    bool showsMixed() const { return mixed_; }
    QSize sizeHint() const override { return QSize(64, 48); }

Q_SIGNALS:
    void imageFileDropped(const QString& path);

protected:
    void paintEvent(QPaintEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    QImage thumbnail_;
    bool mixed_ = false;
};

}  // namespace inspector
