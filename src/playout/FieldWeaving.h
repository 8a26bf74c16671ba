#pragma once
// Weaving: an interlaced frame takes its even lines from one field's
// picture and its odd lines from the other's, each rendered at its own time.

#include <QImage>

namespace playout {

// Copies the lines of `parity` (0: lines 0, 2, 4, ...; 1: lines 1, 3, ...)
// from `field` into `frame`. Both must have the same size and format; a
// null or mismatched frame is made anew (transparent) first.
void weaveField(const QImage& field, QImage& frame, int parity);

}  // namespace playout
