#include "timeline/TimelinePanel.h"

#include "document/CompositionDocument.h"
#include "model/Attribute.h"
#include "model/Composition.h"
#include "model/QuartzComponent.h"
#include "model/Timecode.h"
#include "timeline/VLTimelineScrollView.h"
#include "widgets/TimelineArtwork.h"
#include "widgets/VLSegmentedControl.h"

#include <QHBoxLayout>
#include <QLineEdit>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QSlider>
#include <QToolButton>
#include <QVBoxLayout>

#include <cmath>

namespace timeline {

namespace {

constexpr int kSliderSteps = 1000;
constexpr int kZoomButtonStep = 100;

// The transport's segments in order, with their drawings.
const std::pair<const char*, const char*> kTransport[] = {
    {"Start", "Jump to Beginning (Home)"},  {"FrameBack", "Previous Frame (Left)"}, {"Play", "Play / Stop (Space)"},
    {"FrameForwards", "Next Frame (Right)"}, {"End", "Jump to End (End)"},
};

QToolButton* zoomButton(const QString& image, const QString& tip, QWidget* parent)
{
    auto* button = new QToolButton(parent);
    button->setIcon(widgets::TimelineArtwork::timelineImageWithName(image));
    button->setToolTip(tip);
    button->setAutoRaise(true);
    button->setIconSize(QSize(18, 18));
    return button;
}

}  // namespace

model::QuartzComponent* expandFirstAnimatedComponent(model::Composition& composition)
{
    for (model::QuartzComponent* component : composition.componentsSortedByInverseZLevel()) {
        const std::vector<model::Attribute*> attributes = component->attributes();
        const bool animated = std::any_of(attributes.begin(), attributes.end(), [](const model::Attribute* a) {
            return a->animateable() && !a->keyframes().isEmpty();
        });
        if (!animated) continue;
        component->setExpanded(true);
        return component;
    }
    return nullptr;
}

TimelinePanel::TimelinePanel(QWidget* parent)
    : QWidget(parent), view_(new VLTimelineView), scrollView_(new VLTimelineScrollView(this))
{
    setObjectName(QStringLiteral("timelinePanel"));
    scrollView_->setTimelineView(view_);

    std::vector<widgets::VLSegmentedControl::Segment> segments;
    for (int i = 0; i < int(std::size(kTransport)); ++i)
        segments.push_back({i, widgets::TimelineArtwork::timelineImageWithName(QString::fromLatin1(kTransport[i].first)),
                            tr(kTransport[i].second)});
    controls_ = new widgets::VLSegmentedControl(segments, this);
    controls_->setObjectName(QStringLiteral("controlsControl"));
    connect(controls_, &widgets::VLSegmentedControl::segmentTriggered, view_, &VLTimelineView::controlAction);

    timecode_ = new QLineEdit(this);
    timecode_->setObjectName(QStringLiteral("timecodeField"));
    QFont mono = timecode_->font();
    mono.setFamily(QStringLiteral("DejaVu Sans Mono"));
    mono.setStyleHint(QFont::Monospace);
    timecode_->setFont(mono);
    timecode_->setAlignment(Qt::AlignCenter);
    timecode_->setFixedWidth(QFontMetrics(mono).horizontalAdvance(QStringLiteral("00:00:00:00")) + 16);
    timecode_->setToolTip(tr("The playhead's time; type a timecode and press Return to go there"));
    connect(timecode_, &QLineEdit::returnPressed, this, &TimelinePanel::timecodeEdited);

    zoom_ = new QSlider(Qt::Horizontal, this);
    zoom_->setObjectName(QStringLiteral("zoomSlider"));
    zoom_->setRange(0, kSliderSteps);
    zoom_->setFixedWidth(140);
    zoom_->setToolTip(tr("Zoom the time axis (Control and the mouse wheel)"));
    zoom_->setValue(int(std::lround(view_->zoomValue() * kSliderSteps)));
    connect(zoom_, &QSlider::valueChanged, this, &TimelinePanel::zoomFromSlider);
    QToolButton* zoomOut = zoomButton(QStringLiteral("ZoomOut"), tr("Zoom Out"), this);
    QToolButton* zoomIn = zoomButton(QStringLiteral("ZoomIn"), tr("Zoom In"), this);
    connect(zoomOut, &QToolButton::clicked, this, [this] { zoom_->setValue(zoom_->value() - kZoomButtonStep); });
    connect(zoomIn, &QToolButton::clicked, this, [this] { zoom_->setValue(zoom_->value() + kZoomButtonStep); });

    connect(view_, &VLTimelineView::zoomChanged, this, [this](double value) {
        const QSignalBlocker quiet(zoom_);
        zoom_->setValue(int(std::lround(value * kSliderSteps)));
    });
    connect(view_, &VLTimelineView::editorTimepointChanged, this, &TimelinePanel::updateTimecode);
    connect(view_, &VLTimelineView::playModeChanged, this, &TimelinePanel::updatePlayButton);

    auto* bar = new QHBoxLayout;
    bar->setContentsMargins(6, 2, 6, 2);
    bar->setSpacing(6);
    bar->addWidget(controls_);
    bar->addWidget(timecode_);
    bar->addStretch(1);
    bar->addWidget(zoomOut);
    bar->addWidget(zoom_);
    bar->addWidget(zoomIn);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(scrollView_, 1);
    layout->addLayout(bar);
    setDocument(nullptr);
}

void TimelinePanel::setDocument(document::CompositionDocument* document, VLTimelineView::CommandsSource commands)
{
    if (document) expandFirstAnimatedComponent(*document->composition());
    view_->setDocument(document, std::move(commands));
    timecode_->setEnabled(document != nullptr);
    controls_->setEnabled(document != nullptr);
    if (!document) timecode_->clear();
    scrollView_->horizontalScrollBar()->setValue(0);
    scrollView_->verticalScrollBar()->setValue(0);
}

void TimelinePanel::updateTimecode(double time)
{
    const model::Composition* c = view_->composition();
    if (!c || timecode_->hasFocus()) return;
    timecode_->setText(model::Timecode::fromSeconds(time, c->videoResolution().frameRate()).toString());
}

void TimelinePanel::timecodeEdited()
{
    model::Composition* c = view_->composition();
    if (!c) return;
    const std::optional<model::Timecode> typed = model::Timecode::fromString(timecode_->text(), c->videoResolution().frameRate());
    if (typed) {
        double t = typed->secondsSinceMidnight();
        if (c->validateEditorTimepoint(t)) view_->setTime(t, true);
    }
    // Whatever was typed, the field shows where the playhead is.
    timecode_->clearFocus();
    updateTimecode(c->editorTimepoint());
}

void TimelinePanel::zoomFromSlider(int value)
{
    // Around the playhead when it is in view, else around the middle.
    const QWidget* viewport = scrollView_->viewport();
    double anchor = viewport->width() / 2.0;
    if (const model::Composition* c = view_->composition()) {
        const double x = view_->timelineGeometry().xPositionAtTime(c->editorTimepoint(), false) - scrollView_->scrollOffset().x();
        if (x >= 0 && x <= viewport->width()) anchor = x;
    }
    scrollView_->zoomAround(double(value) / kSliderSteps, anchor);
}

void TimelinePanel::updatePlayButton(bool playing)
{
    if (QToolButton* play = controls_->buttonForTag(2))
        play->setIcon(widgets::TimelineArtwork::timelineImageWithName(playing ? QStringLiteral("Stop") : QStringLiteral("Play")));
}

}  // namespace timeline
