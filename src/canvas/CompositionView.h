#pragma once
// The canvas of a document window: the composition's drawing area centred
// and zoomed inside a scroll view, every component drawn at the editor
// timepoint by its own renderer, the selection handles, safe areas, guide
// rulers and the marquee over them. Mouse and keyboard editing live in
// CompositionViewEditing.cpp, drops in CompositionViewDragAndDrop.cpp, the
// Photoshop import sheet in CompositionViewPSDImport.cpp, the readout and
// the placing of new components in CompositionViewPlacement.cpp.
//
// The view follows the model by observing keys; it changes the model only
// through the composition's and components' operations.

#include "canvas/CanvasGeometry.h"
#include "canvas/CanvasLayers.h"
#include "canvas/CanvasReadout.h"
#include "canvas/CanvasSnapping.h"
#include "model/UndoManager.h"

#include <QPointer>
#include <QStringList>
#include <QTimer>
#include <QVariantMap>
#include <QWidget>

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace document {
class CompositionDocument;
}
namespace runtime {
class RasterBackend;
}
namespace model {
class Composition;
class QuartzComponent;
class Ruler;
}  // namespace model
namespace psd {
class PSDLayerImporter;
}

namespace canvas {

class PSDImportSheet;
class PSDView;

class CompositionView : public QWidget {
    Q_OBJECT
public:
    explicit CompositionView(QWidget* parent = nullptr);
    ~CompositionView() override;

    // The document whose composition is shown; null detaches. The
    // composition is read through the document every time, so after a
    // revert (which replaces it) calling this again is all that is needed.
    void setDocument(document::CompositionDocument* document);
    document::CompositionDocument* document() const { return document_; }
    model::Composition* composition() const;
    // Removes every observation; safe to call again.
    void cleanUp();

    // Zoom. The mode is a percentage between 5 and 1600 (others are
    // held to that range), 0 fits the composition into the visible area,
    // which the enclosing scroll view reports.
    int zoomMode() const;
    void setZoomMode(int mode);
    double zoomFactor() const;
    QSizeF zoomedDocumentSize() const;
    void setVisibleArea(QSize area);
    CanvasGeometry geometry() const;
    QPointF compositionPointFromView(const QPointF& p) const { return geometry().compositionPointFromView(p); }
    QPointF viewPointFromComposition(const QPointF& p) const { return geometry().viewPointFromComposition(p); }

    // The event values every component's renderer receives: the canvas
    // plays as if inside a 5-second clip.
    static QVariantMap argumentsAtTime(double time, bool playing);

    // Editing actions for menus, keys and the toolbar.
    void moveSelectedComponentsBy(double dx, double dy);
    void moveSelectedComponentsBackward();
    void moveSelectedComponentsForward();
    void removeSelectedComponents();
    void togglePlay();
    // Adds components from files as a drop does and shows the import
    // warnings in a sheet; false when a composition file could not be used.
    // A Photoshop file goes to the import sheet once the event loop runs
    // again, unless `commandKeyPressed` makes it one flat image.
    // The components land centred on `at` (composition pixels), or on the
    // middle of the visible area, each further one cascading.
    bool addComponentsFromPaths(const QStringList& paths, bool commandKeyPressed,
                                std::optional<QPointF> at = std::nullopt);

    // Runs `add` and places what it added: each new component centred on
    // the middle of the visible area (or `at`), or with `asGroup` the new
    // components together, keeping their arrangement; then moved on by
    // cascade steps until it covers no origin already taken. One undo step
    // with the adding.
    void addPlacedComponents(const std::function<void()>& add, bool asGroup = false,
                             std::optional<QPointF> at = std::nullopt);
    // The middle of what the scroll view shows, in composition pixels.
    QPointF visibleCentre() const;

    // Photoshop import (CompositionViewPSDImport.cpp). A file's layers are
    // shown in a window-modal sheet first; the import runs when the sheet
    // ends with code 1 (`doPSDImport`) and nothing happens with code 0
    // (`cancelPSDImport`). Only one sheet runs at a time: a file handed over
    // while one is open waits for it to end.
    static bool isPSDFile(const QString& path);  // the extension is exactly "psd"
    // [Photoshop file, component file]: the deferred form a drop uses.
    void triggerPSDImport(const QStringList& paths);
    // Reads the file and opens the sheet; the component file (one with an
    // "Image" input) is what every imported picture is shown with.
    void importPSDFile(const QString& psdPath, const QString& qtzFile);
    void doPSDImport();
    void cancelPSDImport();
    // Any value given, even a false one, sets `importAllPSDLayer`; only an
    // absent (invalid) value switches every layer back on and clears it.
    void setImportAllPSDLayer(const QVariant& value = QVariant());
    void setImportPSDLayersAsSeperateComponents(bool on);
    // Imports for code 1 as one undo step, then closes the sheet.
    void psdImportSheetDidEnd(int returnCode, const QString& qtzFile);
    // Switches one layer on or off as the sheet's tick does; switching one
    // off means the user is choosing layers, so the flag is set.
    void switchPSDLayer(int layerIndex, bool on);

    // Set while the file has hidden layers or the user is choosing layers.
    bool importAllPSDLayer() const { return importAllPSDLayer_; }
    bool importPSDLayersAsSeperateComponents() const { return importPSDLayersAsSeperateComponents_; }
    // The importer of the running import; null between imports.
    psd::PSDLayerImporter* psdImporter() const { return psdImporter_.get(); }
    // The sheet and its preview once the first import has made them.
    PSDImportSheet* psdImportPanel() const;
    PSDView* psdView() const;

    // A guide at a composition coordinate: y for a horizontal one, x else.
    void addGuide(double position, bool horizontal);
    model::Ruler* rulerAt(const QPointF& compositionPoint) const;

    // The rubber band while a marquee is dragged (widget coordinates).
    QRectF rubberBandRect() const { return rubberBand_.currentRect(); }
    bool isDragging() const { return gesture_.kind != GestureKind::None; }

    // What the status line shows: pointer, selection, the running drag.
    CanvasReadout readout() const;
    // The handle of a component under a point, as a press would find it:
    // a selected component's handles reach a fixed distance on screen.
    int handleAt(const model::QuartzComponent& component, const QPointF& compositionPoint) const;

Q_SIGNALS:
    // Zoom or layout changed: the scroll view resizes the document, the
    // rulers repaint.
    void zoomChanged();
    void layoutChanged();
    void selectionChanged();
    void editorTimepointChanged();
    // The pointer, the selection or a drag changed what readout() says.
    void readoutChanged();
    // A drag is held against the edge: the scroll view scrolls by this.
    void autoscrollRequested(QPoint step);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    enum class GestureKind { None, Move, Resize, Marquee, Guide };
    // One mouse gesture from press to release. Changes go to the model on
    // every step so inspectors follow live; the undo group makes the whole
    // gesture one step.
    struct Gesture {
        GestureKind kind = GestureKind::None;
        QPointF start;                 // composition pixels
        QPointF startInView;           // widget coordinates (marquee)
        QPointF startOnScreen;         // global, for the drag distance
        QPointF lastGlobal;            // where the mouse was last seen
        Qt::KeyboardModifiers lastModifiers;
        QPointF delta;                 // for the readout
        Qt::KeyboardModifiers startModifiers;
        std::vector<QPointer<model::QuartzComponent>> components;
        std::vector<QRectF> frames;    // at the start, never accumulated
        QRectF unionFrame;
        bool started = false;
        AxisLock lock = AxisLock::None;
        int handle = 0;
        QPointer<model::Ruler> ruler;
        bool removeRuler = false;
        std::unique_ptr<model::UndoGroup> undoGroup;
    };

    void observeComposition();
    void observeComponents();
    void componentsChanged();
    void renderComponents(QPainter& painter, const QRect& area);
    std::size_t componentsStillDuringGesture(const std::vector<model::QuartzComponent*>& bottomFirst) const;
    std::vector<Guide> guides() const;
    std::vector<model::Ruler*> rulers() const;

    // Editing (CompositionViewEditing.cpp).
    void beginGestureAt(const QPointF& p, const QPointF& viewPoint, Qt::KeyboardModifiers modifiers);
    void moveSelectionStep(const QPointF& p, Qt::KeyboardModifiers modifiers);
    void resizeStep(const QPointF& p, Qt::KeyboardModifiers modifiers);
    void marqueeStep(const QPointF& viewPoint);
    void guideStep(const QPointF& p);
    void finishMarquee();
    // Ends the gesture; with `commit` a marquee selects and a guide dragged
    // off the drawing area is removed.
    void endGesture(bool commit);
    // One step of the running gesture at a widget point.
    void gestureStep(const QPointF& viewPoint, const QPointF& globalPoint, Qt::KeyboardModifiers modifiers);
    bool pressBecameDrag(const QPointF& globalPoint) const;
    void updateAutoscroll(const QPointF& viewPoint);
    void autoscrollTick();
    void cancelGestureIfStale();
    void openUndoGroup(const QString& name);
    PSDImportSheet* makePSDImportPanel();
    void syncPSDImportPanel();
    void updateCursor(const QPointF& p);
    void setPointer(std::optional<QPointF> p);
    void paintGuideLabel(QPainter& painter);
    model::UndoManager* undoManager() const;

    document::CompositionDocument* document_ = nullptr;
    QMetaObject::Connection storeConnection_;
    std::unique_ptr<runtime::RasterBackend> backend_;  // keeps tinted images between redraws
    QTimer idleTimer_;
    QSize visibleArea_;
    unsigned updateIndex_ = 0;
    DrawingAreaLayer drawingArea_;
    SafeAreasLayer safeAreas_;
    RubberBandLayer rubberBand_;
    SelectionLayer selectionLayer_;
    Gesture gesture_;
    QTimer autoscrollTimer_;
    std::optional<QPointF> pointer_;  // composition pixels

    // While components are dragged, everything under the lowest of them
    // stands still: it is drawn once into `image` and each step of the drag
    // starts from a copy of it instead of drawing it all again.
    struct StillLayer {
        QImage image;
        QRect area;
        QTransform transform;
        double time = 0;
        std::vector<model::QuartzComponent*> components;
    } stillBelow_;

    // The running Photoshop import.
    std::shared_ptr<psd::PSDLayerImporter> psdImporter_;  // the sheet's views hold it weakly
    bool importPSDLayersAsSeperateComponents_ = true;
    bool importAllPSDLayer_ = false;
    QString psdImportComponentFile_;  // the sheet's context
    QPointer<PSDImportSheet> psdImportPanel_;
    std::deque<QStringList> waitingPSDImports_;
};

}  // namespace canvas
