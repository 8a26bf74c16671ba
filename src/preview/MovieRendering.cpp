#include "preview/MovieRendering.h"

#include "document/CompositionDocument.h"
#include "playout/MovieWriter.h"
#include "playout/Player.h"
#include "widgets/WorkProgressDialog.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QTemporaryDir>

namespace preview {

namespace {
const char* const kProResFilter = QT_TRANSLATE_NOOP("preview", "ProRes 4444 movie (*.mov)");
const char* const kAnimationFilter = QT_TRANSLATE_NOOP("preview", "Animation movie, lossless (*.mov)");
}  // namespace

MovieChoice chooseMovieFile(QWidget* parent, const QString& suggestedPath)
{
    const QString prores = QCoreApplication::translate("preview", kProResFilter);
    const QString animation = QCoreApplication::translate("preview", kAnimationFilter);
    QString filter = prores;
    MovieChoice choice;
    choice.path = QFileDialog::getSaveFileName(parent, QCoreApplication::translate("preview", "Render Movie"),
                                               suggestedPath,
                                               prores + QStringLiteral(";;") + animation, &filter);
    if (!choice.path.isEmpty() && !choice.path.endsWith(QLatin1String(".mov"), Qt::CaseInsensitive))
        choice.path += QStringLiteral(".mov");
    choice.codec = filter == animation ? playout::MovieCodec::Animation : playout::MovieCodec::ProRes4444;
    return choice;
}

playout::RenderOutcome renderMovieWithProgress(QWidget* parent, const document::CompositionDocument& document,
                                               const MovieChoice& choice)
{
    playout::RenderOutcome outcome;
    QTemporaryDir scratch;
    auto played = playout::exportForPlayout(document, {false, scratch.filePath(QStringLiteral("Movie.qtz"))}, &outcome.error);
    if (!played) return outcome;
    playout::Player player;
    player.load(std::move(*played), playout::PlayerOptions{false, {}, true});
    const qint64 total = playout::PlayoutRender::frameCount(player, {});

    widgets::WorkProgressDialog progress(parent, QCoreApplication::translate("preview", "Rendering “%1”…")
                                                     .arg(QFileInfo(choice.path).fileName()),
                                         true);
    progress.setObjectName(QStringLiteral("RenderMovieProgress"));

    // Rendering stays on this thread, with the document's fonts and images;
    // the dialog's events run between frames, the encoder on its own thread.
    playout::MovieWriter movie(choice.path, choice.codec);
    outcome = playout::PlayoutRender::run(player, {}, movie,
                                          [&](qint64 done, qint64) { return progress.update(done, total); });
    if (!outcome.ok) QFile::remove(choice.path);
    return outcome;
}

}  // namespace preview
