#pragma once
// One layer of a composition: a composition file whose published inputs are
// Attribute objects, placed on the canvas, stacked by zLevel and shown
// between startTime and endTime. Its geometry lives in ordinary attributes
// ("originX", "inputWidth", ...) so that it animates, undoes and reaches the
// renderer like any other value.

#include "model/Attribute.h"
#include "model/ManagedObject.h"

#include <QByteArray>
#include <QColor>
#include <QPointer>
#include <QRectF>
#include <QStringList>
#include <QTransform>

#include <array>
#include <memory>

namespace runtime {
class Composition;
class Renderer;
class RenderTarget;
}

namespace model {

class Composition;

// Handle indices: 0 body, 1 bottom-left, 2 left, 3 top-left, 4 top,
// 5 bottom, 6 bottom-right, 7 right, 8 top-right, 9 none.
enum Handle : int { kHandleBody = 0, kHandleNone = 9 };

// A tri-state summary of a group of flags: all, some or none.
enum GroupState : int { kGroupNone = 0, kGroupAll = 1, kGroupSome = -1 };

class QuartzComponent : public ManagedObject {
    Q_OBJECT
public:
    static const EntityDescription& entityDescription();
    explicit QuartzComponent(ObjectStore* store);
    ~QuartzComponent() override;

    // Stored properties.
    QString title() const { return storedValue(QStringLiteral("title")).toString(); }
    void setTitle(const QString& title) { setStoredValue(QStringLiteral("title"), title); }
    QString compositionFilename() const { return storedValue(QStringLiteral("compositionFilename")).toString(); }
    void setCompositionFilename(const QString& path) { setStoredValue(QStringLiteral("compositionFilename"), path); }
    QByteArray quartzCompositionData() const { return storedValue(QStringLiteral("quartzCompositionData")).toByteArray(); }
    void setQuartzCompositionData(const QByteArray& data) { setStoredValue(QStringLiteral("quartzCompositionData"), data); }
    // The stored data as a property list (null when it is none), parsed
    // once for as long as the data stays the same.
    plist::Value quartzCompositionDocument() const;
    double startTime() const { return storedValue(QStringLiteral("startTime")).toDouble(); }
    void setStartTime(double t);
    double endTime() const { return storedValue(QStringLiteral("endTime")).toDouble(); }
    void setEndTime(double t);
    bool constrainProportions() const { return storedValue(QStringLiteral("constrainProportions")).toBool(); }
    void setConstrainProportions(bool on) { setStoredValue(QStringLiteral("constrainProportions"), on); }
    quint32 zLevel() const { return storedValue(QStringLiteral("zLevel")).toUInt(); }
    void setZLevel(quint32 level);
    Composition* composition() const;
    std::vector<Attribute*> attributes() const;

    // Timing.
    double duration() const { return endTime() - startTime(); }
    void setDuration(double d);
    double renderTimepoint() const;
    bool visible() const;
    // Out-of-order times are clamped to the other end, never refused.
    double validateStartTime(double proposed) const;
    double validateEndTime(double proposed) const;
    double previousTimePoint(double t) const;
    double nextTimePoint(double t) const;

    // Attributes.
    Attribute* attributeForKey(const QString& key) const;
    QVariant valueForKey(const QString& key) const;        // an attribute's current value
    bool setValueForKey(const QString& key, const QVariant& value);  // false: no such attribute
    void attributeValueChanged(Attribute* attribute);
    void sendChangeNotificationForValues(bool onlyAnimated);
    std::vector<Attribute*> nonStandardAttributes() const;
    std::vector<Attribute*> attributesSortedByTitle() const;
    std::vector<Attribute*> children() const;  // the attributes the timeline shows
    std::vector<Attribute*> attributesWithSelectedKeyframes() const;
    void deselectAllKeyFrames();
    int animateable() const;
    void setAnimateable(int state);

    // Geometry, through the standard attributes.
    double originX() const { return standardValue(originX_); }
    void setOriginX(double v) { setStandardValue(originX_, v); }
    double originY() const { return standardValue(originY_); }
    void setOriginY(double v) { setStandardValue(originY_, v); }
    double width() const { return standardValue(width_); }
    void setWidth(double w);
    double height() const { return standardValue(height_); }
    void setHeight(double h);
    double opacity() const { return standardValue(opacity_); }
    void setOpacity(double v) { setStandardValue(opacity_, v); }
    double opacityHumanReadable() const { return opacity() * 100.0; }
    void setOpacityHumanReadable(double v) { setOpacity(v / 100.0); }
    double zRotation() const { return standardValue(zRotation_); }
    void setZRotation(double v) { setStandardValue(zRotation_, v); }
    double marginX() const { return standardValue(marginX_); }
    void setMarginX(double v) { setStandardValue(marginX_, v); }
    double marginY() const { return standardValue(marginY_); }
    void setMarginY(double v) { setStandardValue(marginY_, v); }
    bool visibleInCompositionEditor() const;
    void setVisibleInCompositionEditor(bool visible);
    float extentH() const { return float(originX() + width()); }
    float extentV() const { return float(originY() + height()); }
    float centerH() const { return float(originX() + width() * 0.5); }
    float centerV() const { return float(originY() + height() * 0.5); }
    QRectF drawingFrame() const { return QRectF(originX(), originY(), width(), height()); }
    void moveBy(double dx, double dy);

    // Canvas editing.
    std::array<QRectF, 9> handleRects() const;
    int handleIndexForLocation(const QPointF& point) const;
    int resizeByMovingHandle(int handle, const QPointF& point, bool proportional, bool fromCenter, const QRectF& startFrame);

    // Selection and permissions.
    bool selected() const { return selected_; }
    void setSelected(bool selected);
    bool needsUpdate() const { return needsUpdate_; }
    void setNeedsUpdate(bool on) { needsUpdate_ = on; }
    // Whether the timeline shows the attribute rows; editor state, not stored.
    bool expanded() const { return expanded_; }
    void setExpanded(bool on);
    int permissionToMove() const;
    void setPermissionToMove(int state);
    int permissionToResize() const;
    void setPermissionToResize(int state);
    int permissionToChangeAttributes() const;
    void setPermissionToChangeAttributes(int state);

    static int zLevelComparison(const QuartzComponent* a, const QuartzComponent* b);

    // Creation from a composition file. Returns the new component inserted
    // in the composition's store (not yet stacked: the caller adds it), or
    // null with a warning. A file without an "outputImage" output is first
    // wrapped into one that renders it into an image, in the cache folder.
    static QuartzComponent* initWithQuartzCompositionFile(const QString& path, Composition* composition,
                                                          const QVariantMap& inputValues, QStringList* warnings);
    static bool shallCreateAttributeForKey(const QString& key);
    static QString compositionWrappedWithRenderInImageForFile(const QString& path, const QSizeF& documentSize);
    static QString bundleIdentifier() { return QStringLiteral("org.velloran.Velloran"); }
    static QString cacheFolder();
    // Writes the component and its attribute values to the log.
    void bugInfo() const;

    // Dictionary forms. A component made from one (paste, duplicate) gets
    // fresh attributes, keeps the stored composition data and has no zLevel
    // of its own until the composition adds it.
    static QuartzComponent* createFromDictionary(Composition* composition, const QVariantMap& dictionary);
    QVariantMap dictionaryWithData() const;
    QVariantMap componentInfo() const;

    // The standard attributes, bound once all attributes exist.
    void initializeAttributeObservers();
    void removeAttributeObservers();
    void cleanUp() { removeAttributeObservers(); }

    // Rendering. Without a loaded composition these do nothing.
    void setRendererInputValue(const QString& key, const QVariant& value);
    runtime::Renderer* renderer() const { return renderer_.get(); }
    // The composition file as loaded (its ports' ranges, menus); null when none.
    const std::shared_ptr<const runtime::Composition>& loadedComposition() const { return loadedComposition_; }
    void setRenderer(std::unique_ptr<runtime::Renderer> renderer);
    // Loads the composition from the stored data (or, the first time, from
    // the file, keeping its bytes) and makes a new renderer for it.
    bool initializeQuartzComposition();
    void setAttributeValuesOnQuartzComposition();
    void updateWithFile(const QString& path);
    // A component whose content has a natural size (an image, a movie) takes it.
    void sizeToFit();
    // Tells the composition's plug-ins where the document lives.
    void updateFileURL();
    bool rootIsRenderInImage() const { return rootIsRenderInImage_; }
    void setRootIsRenderInImage(bool on) { rootIsRenderInImage_ = on; }
    static QString documentURLKey() { return bundleIdentifier() + QStringLiteral(".file"); }

    // Drawing on a canvas. `context` identifies the drawing surface: a new
    // one gets a new renderer. The target maps composition pixels to its
    // units (see viewTransformForCompositionSize).
    void setupRenderer();
    void renderForView(const void* context, runtime::RenderTarget& target, double time,
                       const QVariantMap& arguments = {});
    // The selection frame and handles in `colour` (the view picks it to
    // stand out); `lineWidth` in composition pixels.
    void renderOverlaysForView(runtime::RenderTarget& target, double lineWidth = 1.0,
                               const QColor& colour = QColor(0, 0, 0, 178)) const;
    static QTransform viewTransformForCompositionSize(const QSizeF& size);
    static QString previewOutputPort() { return QStringLiteral("outputImage"); }
    QString spriteNodeKey() const { return spriteKey_; }

    void awakeFromFetch() override;

private:
    double standardValue(const QPointer<Attribute>& attribute) const;
    void setStandardValue(const QPointer<Attribute>& attribute, double value);
    static int groupState(const std::vector<Attribute*>& group);
    static void setGroup(const std::vector<Attribute*>& group, int state);
    void bindStandardAttributes();
    void storedValueDidChange(const QString& key) override;
    bool initWithQuartzCompositionFileGeneric(const QString& path, const QVariantMap& inputValues,
                                              QStringList* warnings);
    void setSpriteInput(const QString& port, const QVariant& value);

    QPointer<Attribute> originX_, originY_, width_, height_, opacity_, zRotation_, marginX_, marginY_, visible_;
    std::vector<std::pair<QPointer<Attribute>, ObservationToken>> geometryObservations_;
    mutable QByteArray parsedData_;
    mutable plist::Value parsedDocument_;
    std::shared_ptr<const runtime::Composition> loadedComposition_;
    std::unique_ptr<runtime::Renderer> renderer_;
    const void* renderContext_ = nullptr;
    QString spriteKey_;      // the injected sprite
    QString portImageNode_;  // the root child whose "outputImage" feeds it
    bool selected_ = false;
    bool needsUpdate_ = true;
    bool expanded_ = false;
    bool rootIsRenderInImage_ = false;
};

}  // namespace model
