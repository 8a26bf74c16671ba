#include "app/VLPreferencesController.h"

#include "app/CompositionDocumentsController.h"
#include "app/VideoModeItems.h"
#include "model/Composition.h"
#include "model/Settings.h"
#include "model/VideoResolution.h"

#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFontDialog>
#include <QFormLayout>
#include <QGuiApplication>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHideEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPainter>
#include <QPixmap>
#include <QPushButton>
#include <QVBoxLayout>

namespace app {

using model::Settings;

namespace {

QIcon swatch(const QColor& colour)
{
    // At the screen's density, so the frame stays one pixel thin.
    const qreal ratio = qGuiApp->devicePixelRatio();
    QPixmap pixmap((QSizeF(28, 14) * ratio).toSize());
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setPen(QPen(Qt::gray, 1));
    painter.setBrush(colour);
    painter.drawRect(QRectF(0.5, 0.5, 27, 13));
    return QIcon(pixmap);
}

QCheckBox* settingCheckBox(const QString& key, const QString& title, QWidget* parent)
{
    auto* box = new QCheckBox(title, parent);
    box->setObjectName(key);
    QObject::connect(box, &QCheckBox::toggled, box, [key](bool on) { Settings::setValue(key, on); });
    return box;
}

}  // namespace

VLPreferencesController::VLPreferencesController(CompositionDocumentsController* documents, QWidget* parent)
    : QDialog(parent), documents_(documents)
{
    setObjectName(QStringLiteral("Preferences"));
    setWindowTitle(tr("Preferences"));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(makeDocumentsGroup());
    layout->addWidget(makeFontGroup());
    layout->addWidget(makeLibraryGroup());
    layout->addWidget(makeExportGroup());
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::close);
    layout->addWidget(buttons);
    connect(Settings::notifier(), &model::SettingsNotifier::valueChanged, this, &VLPreferencesController::settingChanged);
    refresh();
}

VLPreferencesController::~VLPreferencesController() = default;

QWidget* VLPreferencesController::makeDocumentsGroup()
{
    auto* group = new QGroupBox(tr("New Documents"), this);
    auto* form = new QFormLayout(group);
    formatPopup_ = new QComboBox(group);
    formatPopup_->setObjectName(QStringLiteral("formatPopup"));
    formatPopup_->setMaxVisibleItems(40);
    addVideoModeItems(formatPopup_);
    connect(formatPopup_, &QComboBox::currentTextChanged, this, [this](const QString& name) {
        if (!refreshing_ && !name.isEmpty()) Settings::setValue(Settings::kDefaultDocumentMode, name);
    });
    form->addRow(tr("Format:"), formatPopup_);

    backgroundMode_ = new QComboBox(group);
    backgroundMode_->setObjectName(QStringLiteral("backgroundMode"));
    backgroundMode_->addItem(tr("Transparent"), int(model::kBackgroundNone));
    backgroundMode_->addItem(tr("Colour"), int(model::kBackgroundColor));
    connect(backgroundMode_, &QComboBox::currentIndexChanged, this, [this](int index) {
        if (!refreshing_ && index >= 0) Settings::setValue(Settings::kDefaultBackgroundMode, backgroundMode_->itemData(index));
    });
    backgroundColor_ = new QPushButton(tr("Colour…"), group);
    backgroundColor_->setObjectName(QStringLiteral("backgroundColor"));
    connect(backgroundColor_, &QPushButton::clicked, this, &VLPreferencesController::chooseBackgroundColor);
    auto* background = new QHBoxLayout;
    background->addWidget(backgroundMode_, 1);
    background->addWidget(backgroundColor_);
    form->addRow(tr("Background:"), background);
    return group;
}

QWidget* VLPreferencesController::makeFontGroup()
{
    auto* group = new QGroupBox(tr("Text"), this);
    auto* form = new QFormLayout(group);
    fontLabel_ = new QLabel(group);
    fontLabel_->setObjectName(QStringLiteral("defaultFontLabel"));
    fontButton_ = new QPushButton(tr("Default Font…"), group);
    fontButton_->setObjectName(QStringLiteral("defaultFontButton"));
    connect(fontButton_, &QPushButton::clicked, this, &VLPreferencesController::setDefaultFontFromPanel);
    auto* row = new QHBoxLayout;
    row->addWidget(fontLabel_, 1);
    row->addWidget(fontButton_);
    form->addRow(tr("Default font:"), row);
    return group;
}

QWidget* VLPreferencesController::makeLibraryGroup()
{
    auto* group = new QGroupBox(tr("Library"), this);
    auto* form = new QFormLayout(group);
    libraryPath_ = new QLineEdit(group);
    libraryPath_->setObjectName(Settings::kImagesLibraryPath);
    libraryPath_->setReadOnly(true);
    libraryPath_->setMinimumWidth(260);
    auto* choose = new QPushButton(tr("Choose…"), group);
    choose->setObjectName(QStringLiteral("chooseImagesLibraryPath"));
    connect(choose, &QPushButton::clicked, this, &VLPreferencesController::chooseGraphicPath);
    auto* row = new QHBoxLayout;
    row->addWidget(libraryPath_, 1);
    row->addWidget(choose);
    form->addRow(tr("Images folder:"), row);
    return group;
}

QWidget* VLPreferencesController::makeExportGroup()
{
    auto* group = new QGroupBox(tr("Export and Preview"), this);
    auto* layout = new QVBoxLayout(group);
    previewFPS_ = settingCheckBox(Settings::kPreviewFPS, tr("Show frames per second in the preview"), group);
    avoidSpaces_ = settingCheckBox(Settings::kAvoidSpacesInPortLabels, tr("Avoid spaces in exported port labels"), group);
    layout->addWidget(previewFPS_);
    layout->addWidget(avoidSpaces_);
    return group;
}

void VLPreferencesController::refresh()
{
    // The controls show the settings; showing them must not write them back.
    refreshing_ = true;
    formatPopup_->setCurrentIndex(formatPopup_->findText(Settings::stringValue(Settings::kDefaultDocumentMode)));
    const int mode = Settings::intValue(Settings::kDefaultBackgroundMode);
    backgroundMode_->setCurrentIndex(backgroundMode_->findData(mode));
    backgroundColor_->setEnabled(mode == model::kBackgroundColor);
    backgroundColor_->setIcon(swatch(Settings::value(Settings::kDefaultBackgroundColor).value<QColor>()));
    const QFont font = Settings::defaultFontForElements();
    fontLabel_->setText(tr("%1, %2 pt").arg(font.family()).arg(font.pointSize()));
    libraryPath_->setText(QDir::toNativeSeparators(Settings::stringValue(Settings::kImagesLibraryPath)));
    for (QCheckBox* box : {previewFPS_, avoidSpaces_}) {
        const QSignalBlocker quiet(box);
        box->setChecked(Settings::boolValue(box->objectName()));
    }
    refreshing_ = false;
}

void VLPreferencesController::settingChanged(const QString&)
{
    if (!refreshing_) refresh();
}

void VLPreferencesController::registerNewDocumentMenu()
{
    for (QMenu* menu : documents_ ? documents_->newDocumentMenus() : std::vector<QMenu*>())
        registerNewDocumentMenu(menu);
}

void VLPreferencesController::registerNewDocumentMenu(QMenu* menu)
{
    if (!menu) return;
    const QString preferred = model::VideoResolution::defaultVideoResolution().title();
    QAction* chosen = nullptr;
    for (QAction* action : menu->actions()) {
        action->setShortcuts({});
        if (!chosen && !preferred.isEmpty() && !action->isSeparator() && action->text() == preferred) chosen = action;
    }
    if (chosen) chosen->setShortcut(QKeySequence::New);
}

void VLPreferencesController::setDefaultFontFromPanel()
{
    bool ok = false;
    const QFont font = QFontDialog::getFont(&ok, Settings::defaultFontForElements(), this, tr("Default Font"));
    if (ok) setDefaultFont(font);
}

void VLPreferencesController::setDefaultFont(const QFont& font) { Settings::setAsDefaultFontForElements(font); }

void VLPreferencesController::chooseGraphicPath()
{
    const QString path = QFileDialog::getExistingDirectory(this, tr("Images Folder"),
                                                           Settings::stringValue(Settings::kImagesLibraryPath));
    if (!path.isEmpty()) selectGraphicPath(path);
}

void VLPreferencesController::selectGraphicPath(const QString& path)
{
    Settings::setValue(Settings::kImagesLibraryPath, QDir::cleanPath(QDir::fromNativeSeparators(path)));
}

void VLPreferencesController::chooseBackgroundColor()
{
    const QColor current = Settings::value(Settings::kDefaultBackgroundColor).value<QColor>();
    const QColor colour = QColorDialog::getColor(current, this, tr("Background Colour"), QColorDialog::ShowAlphaChannel);
    if (colour.isValid()) Settings::setValue(Settings::kDefaultBackgroundColor, colour);
}

void VLPreferencesController::windowWillClose() { registerNewDocumentMenu(); }

void VLPreferencesController::showEvent(QShowEvent* event)
{
    refresh();
    QDialog::showEvent(event);
}

void VLPreferencesController::hideEvent(QHideEvent* event)
{
    // Minimising hides the window too, but does not close it.
    if (!event->spontaneous()) windowWillClose();
    QDialog::hideEvent(event);
}

}  // namespace app
