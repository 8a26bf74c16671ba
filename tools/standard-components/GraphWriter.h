#pragma once
// Small helpers for building Quartz Composer graphs with QuartzPatch, so the
// file builders read as a list of patches and wires.

#include "quartz/QuartzComposition.h"
#include "quartz/QuartzPatch.h"

#include <QPointF>
#include <QStringList>

#include <memory>
#include <optional>

namespace standardcomponents {

using plist::Value;

Value colour(double red, double green, double blue, double alpha = 1.0);
// Editor position of the node in column `column`, row `row`: only lays the
// graph out for a person who opens the file in an editor.
QPointF cell(int column, int row);

// The splitter port classes Quartz Composer writes in "portClass".
enum class PortClass { Number, Index, Boolean, String, Color, Image };

struct SplitterLimits {
    std::optional<double> minimum;
    std::optional<double> maximum;
    QStringList menu;  // Index splitters: one label per value
};

// Adds nodes and wires to one macro patch.
class GraphWriter {
public:
    explicit GraphWriter(QuartzPatch& macro) : macro_(macro) {}
    QuartzPatch& macro() const { return macro_; }

    QuartzPatch& add(const QString& patchClass, const QString& key, QPointF position,
                     const plist::Dictionary& inputs = {}, Value state = Value());
    // A plain macro (QCPatch) carrying the given name in its userInfo.
    QuartzPatch& addMacro(const QString& key, const QString& name, QPointF position);
    // An input splitter whose "input" holds `value`.
    QuartzPatch& addSplitter(const QString& key, PortClass type, const Value& value, QPointF position,
                             const SplitterLimits& limits = {});
    // A Mathematical Expression; every identifier becomes a Number input.
    QuartzPatch& addExpression(const QString& key, const QString& expression, QPointF position,
                               const plist::Dictionary& values = {});
    // A Billboard of "custom" size: its inputWidth and inputHeight are units.
    // It draws nothing without an image.
    QuartzPatch& addBillboard(const QString& key, QPointF position, bool pixelAligned = false);
    void connect(const QString& source, const QString& sourcePort, const QString& destination,
                 const QString& destinationPort);

private:
    QuartzPatch& macro_;
};

// A new composition with the metadata the editor shows (title, description).
std::unique_ptr<QuartzComposition> newComposition(const QString& name, const QString& description);

// Component inputs: `inner` (a child of the producer, the root's first
// child) publishes `port` on the producer as `key`, and the root publishes
// the producer's `key` under the same key, with the label in both published
// ports' userInfo and in the file's "portAttributes".
struct InputLabel {
    QString label;  // "[n]" sorts, "(Group)" groups in the inspector
    QString description;
    QStringList menu;
};
void publishComponentInput(QuartzComposition& composition, QuartzPatch& inner, const QString& port, const QString& key,
                           const InputLabel& label);
// A port of the producer itself (e.g. Render In Image's "inputWidth").
void publishProducerInput(QuartzComposition& composition, QuartzPatch& producer, const QString& port,
                          const InputLabel& label);
// The producer's image as the root's "outputImage".
void publishComponentImage(QuartzPatch& producer, const QString& port = QStringLiteral("outputImage"));

// A Render In Image of the given pixel size: the usual component producer.
QuartzPatch& addRenderInImage(GraphWriter& root, const QString& key, const QString& name, int width, int height,
                              bool timeBased);

// The XML bytes of the file.
QByteArray fileData(const QuartzComposition& composition, QString* error);

}  // namespace standardcomponents
