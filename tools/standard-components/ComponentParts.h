#pragma once
// Pieces the component files share: the destination's dimensions, glyph
// sizes in pixels, and text images.

#include "GraphWriter.h"

namespace standardcomponents {

// A splitter inside the producer published as a component input (the
// label's menu also becomes the splitter's index labels).
QuartzPatch& addComponentInput(QuartzComposition& composition, GraphWriter& g, const QString& key, PortClass type,
                               const Value& value, const InputLabel& label, QPointF position,
                               SplitterLimits limits = {});

// "Rendering Destination Dimensions", keyed "Destination". Inside a Render
// In Image it measures that image, whose pixels are template pixels.
QuartzPatch& addDestination(GraphWriter& g, QPointF position);

// An expression turning the pixel size coming out of `fontSizeNode`'s
// "output" into units of the destination (which needs "Destination").
QuartzPatch& addGlyphSize(GraphWriter& g, const QString& key, const QString& fontSizeNode, QPointF position);

// "Image With String" in unit mode: white text, rendered at the
// destination's resolution. `alignment` is "Normal", "Centered" or
// "Opposite"; a width of 0 fits the image to the text.
QuartzPatch& addTextImage(GraphWriter& g, const QString& key, const QString& fontName, const QString& alignment,
                          QPointF position);

// Wires string, font name and glyph size into a text image.
void connectText(GraphWriter& g, const QString& textImage, const QString& stringNode, const QString& fontNode,
                 const QString& glyphSizeNode);

// Draws a text image at its own size: a billboard whose size follows the
// text image's "outputWidth"/"outputHeight".
QuartzPatch& addTextBillboard(GraphWriter& g, const QString& key, const QString& textImage, const QString& colorNode,
                              QPointF position);

}  // namespace standardcomponents
