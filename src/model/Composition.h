#pragma once
// The root object of a document: a canvas of one video resolution holding
// the components, stop frames and guide rulers, the background, the duration
// and the editor's playhead, with the selection and stacking-order
// operations the canvas, timeline and inspectors call.

#include "model/ManagedObject.h"
#include "model/VideoResolution.h"

#include <QColor>
#include <QImage>
#include <QUrl>

#include <functional>

namespace model {

class QuartzComponent;
class StopFrame;
class Ruler;

enum BackgroundMode : int { kBackgroundNone = 0, kBackgroundColor = 1, kBackgroundImage = 2 };

class Composition : public ManagedObject {
    Q_OBJECT
public:
    static const EntityDescription& entityDescription();
    explicit Composition(ObjectStore* store);
    ~Composition() override;

    void awakeFromInsert() override;
    void awakeFromFetch() override;
    void cleanUp();

    // Stored properties.
    double duration() const { return storedValue(QStringLiteral("duration")).toDouble(); }
    void setDuration(double d) { setStoredValue(QStringLiteral("duration"), d); }
    QColor backgroundColor() const { return storedValue(QStringLiteral("backgroundColor")).value<QColor>(); }
    void setBackgroundColor(const QColor& color);
    QImage backgroundImage() const { return storedValue(QStringLiteral("backgroundImage")).value<QImage>(); }
    void setBackgroundImage(const QImage& image) { setStoredValue(QStringLiteral("backgroundImage"), image); }
    QImage posterFrameImage() const { return storedValue(QStringLiteral("posterFrameImage")).value<QImage>(); }
    void setPosterFrameImage(const QImage& image) { setStoredValue(QStringLiteral("posterFrameImage"), image); }
    QString backgroundMovie() const { return storedValue(QStringLiteral("backgroundMovie")).toString(); }
    void setBackgroundMovie(const QString& name) { setStoredValue(QStringLiteral("backgroundMovie"), name); }
    int backgroundMode() const { return storedValue(QStringLiteral("backgroundMode")).toInt(); }
    void setBackgroundMode(int mode) { setStoredValue(QStringLiteral("backgroundMode"), mode); }
    double posterFrameTimepoint() const { return storedValue(QStringLiteral("posterFrameTimepoint")).toDouble(); }
    void setPosterFrameTimepoint(double t) { setStoredValue(QStringLiteral("posterFrameTimepoint"), t); }
    QString broadcastMode() const { return storedValue(QStringLiteral("broadcastMode")).toString(); }
    void setBroadcastMode(const QString& mode) { setStoredValue(QStringLiteral("broadcastMode"), mode); }
    bool showsRulers() const { return storedValue(QStringLiteral("showsRulers")).toBool(); }
    void setShowsRulers(bool on) { setStoredValue(QStringLiteral("showsRulers"), on); }
    bool showsSafeZones() const { return storedValue(QStringLiteral("showsSafeZones")).toBool(); }
    void setShowsSafeZones(bool on) { setStoredValue(QStringLiteral("showsSafeZones"), on); }

    bool solidColorBackgroundMode() const { return backgroundMode() == kBackgroundColor; }
    bool imageBackgroundMode() const { return backgroundMode() == kBackgroundImage; }

    // Video resolution and time grid.
    const VideoResolution& videoResolution() const { return videoResolution_; }
    void setVideoResolution(const VideoResolution& resolution);
    quint64 ticksPerSecond() const { return ticksPerSecond_; }
    int width() const { return videoResolution_.compositionWidth(); }
    int height() const { return videoResolution_.compositionHeight(); }
    QSizeF size() const { return QSizeF(width(), height()); }

    // The playhead.
    double editorTimepoint() const { return editorTimepoint_; }
    void setEditorTimepoint(double t);
    void setEditorTimepointForNearestTick(double t);
    // Clamps and rounds in place; true when the result would move the playhead.
    bool validateEditorTimepoint(double& t) const;
    static int compareTimeInterval(double a, float b);
    static int compareTimeInterval(double a, double b);

    // Playback, stepped every 20 ms on the event loop.
    int playMode() const { return playMode_; }
    void setPlayMode(int mode);
    void sendChangeNotificationForValues(bool onlyAnimated);

    // Poster frame: mode 1 means none is fixed.
    int posterFrameMode() const;
    void setPosterFrameMode(int mode);

    int zoomMode() const { return zoomMode_; }
    void setZoomMode(int mode) { zoomMode_ = mode; }

    QUrl fileURL() const { return fileURL_; }
    void setFileURL(const QUrl& url);

    // Components.
    std::vector<QuartzComponent*> componentArray() const;
    std::vector<QuartzComponent*> componentsSortedByZLevel() const;
    std::vector<QuartzComponent*> componentsSortedByInverseZLevel() const;
    void addComponent(QuartzComponent* component);
    // Null (and a log line) when the file cannot be used.
    QuartzComponent* addComponenWithQuartzCompositionFile(const QString& path, const QVariantMap& inputValues = {});
    void removeComponents(const std::vector<QuartzComponent*>& components);

    // Selection.
    std::vector<QuartzComponent*> selectedComponents() const;
    QList<int> selectedComponentsIndexes() const;
    QList<int> selectedComponentsIndexesSortedByZLevel() const;
    QList<int> selectionIndexPaths() const;
    void setSelectionIndexPaths(const QList<int>& rows);
    bool validSelection() const { return !selectedComponentsIndexes().isEmpty(); }
    QuartzComponent* firstSelected() const { return nullptr; }
    void clearSelection();
    void selectAllComponents();
    void selectionDidChange();
    void sizeToFitSelection();
    void showAllComponents();
    void soloSelectedComponents();
    std::vector<class Attribute*> attributesWithSelectedKeyframes() const;
    void deselectAllKeyFrames();

    // Stacking order.
    void adjustZLevels(const std::vector<QuartzComponent*>& ordered);
    void moveComponentsByLevel(const std::vector<QuartzComponent*>& components, int delta);
    void moveSelectionByLevel(int delta) { moveComponentsByLevel(selectedComponents(), delta); }
    void sendSelectionTo(bool front);
    void bringSelectionToFront() { sendSelectionTo(true); }
    void sendSelectionToBack() { sendSelectionTo(false); }
    // False (and nothing changed) unless exactly two components are selected;
    // the caller shows swapSelectedAlert().
    bool swapSelected();
    static QString swapSelectedAlertTitle() { return QStringLiteral("Swap Selected:"); }
    static QString swapSelectedAlertText() { return QStringLiteral("Please select two components to swap."); }

    // Stop frames and rulers.
    std::vector<StopFrame*> stopFrames() const;
    std::vector<double> stopFrameTimepoints() const;
    QVariantList stopFrameDictionaries() const;
    StopFrame* addStopFrame(double timepoint, const QString& name = QString());
    void removeStopFrame(StopFrame* stopFrame);
    std::vector<Ruler*> rulers() const;
    Ruler* addRulerAtPosition(double position, bool horizontal);
    void removeRuler(Ruler* ruler);

    QVariantMap compositionInfo() const;

    // Maintenance. Both do nothing for a document never saved. The first
    // returns the old paths; the second the copy orders {"source", "dest"}
    // that the next save carries out, the attributes then naming bare files.
    QStringList makePathsRelative();
    QList<QVariantMap> embedResources();
    // Reloads components made from an older copy of a standard component
    // with the current one; returns their titles.
    QStringList upgradeComponents();

private:
    void commonSetup();
    void objectsChanged(const QList<ManagedObject*>& inserted, const QList<ManagedObject*>& deleted);
    void updatePlayTimepoint();
    void willReorder();
    void didReorder();

    VideoResolution videoResolution_;
    quint64 ticksPerSecond_ = 25;
    double editorTimepoint_ = 0.0;
    int playMode_ = 0;
    double playStartTime_ = 0.0;
    int zoomMode_ = 0;
    QUrl fileURL_;
    QMetaObject::Connection storeConnection_;
};

}  // namespace model
