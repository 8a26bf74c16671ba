#pragma once
// The worst-case text check: every text field the operator may fill in,
// rendered with sample texts (long, accented, with descenders, Chinese and
// Japanese, Arabic, one long word) at the moment its component is fully on
// screen, and measured: does the text stay inside its component and the
// title-safe area, how wide is it against the room it has, and did a glyph
// have to come from another font than the one chosen.

#include "document/WorkProgress.h"

#include <QImage>
#include <QList>
#include <QRectF>
#include <QString>
#include <QStringList>


namespace model {
class Composition;
}

namespace document {

struct TextCheckResult {
    QString field;      // the field's id, as in the field schema
    QString component;  // the component's title
    QString key;        // the attribute's key
    QString sample;
    double time = 0;             // when it was rendered
    double measuredWidth = 0;    // of the rendered text, composition pixels
    double room = 0;             // the component's width
    double measuredHeight = 0;
    double roomHeight = 0;
    QRectF textRect;             // the rendered text, composition pixels (y up)
    bool insideComponent = true;
    bool insideTitleSafe = true;
    bool fallbackGlyph = false;  // a glyph the chosen font does not have
    QImage picture;              // the component with the sample, for reports
    bool fits() const { return insideComponent && insideTitleSafe; }
};

// The samples tried when none are given: the current text twice, capitals
// with accents, descenders, Chinese and Japanese, Arabic, one long word.
QStringList defaultTextSamples(const QString& current);

// The title-safe area of a composition of this size (y up).
QRectF titleSafeArea(double width, double height);

// `samples` empty: the default ones for each field. `progress` is told
// (done, total) and may answer false to stop.
QList<TextCheckResult> checkTextFields(const model::Composition& composition, const QStringList& samples = {},
                                       const WorkProgress& progress = {});

}  // namespace document
