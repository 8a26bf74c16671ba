#pragma once
// "Render Movie…": a document's template played keyed, as playout plays
// it, into a QuickTime movie with alpha, with a progress dialog that can be
// cancelled. A cancelled or failed movie leaves no file behind.

#include "playout/MovieEncoder.h"
#include "playout/PlayoutRender.h"

#include <QString>

class QWidget;

namespace document {
class CompositionDocument;
}

namespace preview {

struct MovieChoice {
    QString path;  // empty when the user cancelled
    playout::MovieCodec codec = playout::MovieCodec::ProRes4444;
};

// Asks where to write the movie and in which codec, starting at
// `suggestedPath` (".mov" is added when the name has none).
MovieChoice chooseMovieFile(QWidget* parent, const QString& suggestedPath);

// Renders every frame of the template while a modal progress dialog over
// `parent` shows how far it got.
playout::RenderOutcome renderMovieWithProgress(QWidget* parent, const document::CompositionDocument& document,
                                               const MovieChoice& choice);

}  // namespace preview
