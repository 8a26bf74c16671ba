// velloran [FILE.composition...]: the editor. Opens the given documents, or
// a new one at the preferred video mode.
// velloran --screenshot OUT.png [--time SECONDS] [--select TITLE]... [--part NAME] [FILE.composition]:
// renders the first window (or only its part of that object name) once into
// OUT.png and quits without saving; the components with the given titles
// are selected first, so that the inspector shows them.
// velloran --preview FILE.composition [--screenshot OUT.png [--time SECONDS]]:
// opens the document's preview; with --screenshot, plays it to SECONDS
// (released at every stop frame on the way), renders the preview window
// into OUT.png and quits.

#include "app/CompositionDocumentsController.h"
#include "app/EditorStyle.h"
#include "app/VLWindowController.h"
#include "app/WindowScreenshot.h"
#include "document/CompositionDocument.h"
#include "model/Composition.h"
#include "preview/VLPreviewController.h"
#include "widgets/ApplicationArtwork.h"

#include <QApplication>
#include <QCommandLineParser>

#include <cstdio>

namespace {

// Closes every window without saving and without changing the layout the
// user's next window starts with.
void closeWithoutSaving(app::CompositionDocumentsController& controller)
{
    for (app::VLWindowController* open : controller.windows()) {
        open->setRemembersWindowState(false);
        open->setCloseQuestion([](app::VLWindowController&) { return app::VLWindowController::CloseAnswer::DontSave; });
    }
    QApplication::closeAllWindows();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

int takeScreenshot(app::CompositionDocumentsController& controller, const QStringList& paths, const QString& output,
                   const QString& time, bool previewed, const QStringList& titles, const QString& part)
{
    bool validTime = true;
    const double seconds = time.isEmpty() ? 0.0 : time.toDouble(&validTime);
    if (!validTime) {
        std::fprintf(stderr, "velloran: --time needs a number of seconds, not \"%s\"\n", qPrintable(time));
        return 2;
    }
    // Nothing here may wait for a person: a document that cannot be opened
    // is reported on stderr, not in a dialog.
    for (const QString& path : paths) {
        QString error;
        if (!controller.openDocument(path, nullptr, &error)) {
            std::fprintf(stderr, "velloran: %s: %s\n", qPrintable(path), qPrintable(error));
            closeWithoutSaving(controller);
            return 1;
        }
    }
    if (controller.windows().empty()) controller.newDocument();
    if (controller.windows().empty()) return 1;
    app::VLWindowController* window = controller.windows().front();
    QString missing;
    if (!titles.isEmpty() && !app::selectComponentsWithTitles(*window->document()->composition(), titles, &missing)) {
        std::fprintf(stderr, "velloran: --select: no component is titled \"%s\"\n", qPrintable(missing));
        closeWithoutSaving(controller);
        return 1;
    }
    bool saved = false;
    if (previewed) {
        controller.preview().togglePreviewForCompositionDocument(window->document());
        preview::VLPreviewController* shown = controller.preview().controller();
        shown->showPlayedTo(seconds);
        saved = app::saveWindowScreenshot(shown, output);
        shown->close();
    } else {
        if (!time.isEmpty()) window->document()->composition()->setEditorTimepoint(seconds);
        saved = app::saveWindowScreenshot(window, output, 10000, part);
    }
    if (!saved && !part.isEmpty() && !window->findChild<QWidget*>(part))
        std::fprintf(stderr, "velloran: --part: the window has no part named \"%s\"\n", qPrintable(part));
    else if (!saved)
        std::fprintf(stderr, "velloran: could not write %s\n", qPrintable(output));
    closeWithoutSaving(controller);
    return saved ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Velloran"));
    QApplication::setApplicationName(QStringLiteral("Velloran"));
    QApplication::setApplicationDisplayName(QStringLiteral("Velloran"));
    QApplication::setApplicationVersion(QStringLiteral(VELLORAN_VERSION));
    // The desktop matches windows to the installed entry and its icon by this.
    QApplication::setDesktopFileName(widgets::ApplicationArtwork::iconName());
    QApplication::setWindowIcon(widgets::ApplicationArtwork::icon());
    app::applyEditorStyle(application);

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Velloran, the editor for broadcast graphics templates."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption screenshot(QStringLiteral("screenshot"),
                                        QStringLiteral("Render the first window into OUT.png and quit without saving."),
                                        QStringLiteral("OUT.png"));
    const QCommandLineOption time(QStringLiteral("time"),
                                  QStringLiteral("With --screenshot: move the playhead to SECONDS first."),
                                  QStringLiteral("SECONDS"));
    const QCommandLineOption previewOption(QStringLiteral("preview"),
                                           QStringLiteral("Show the first document's preview; with --screenshot, "
                                                          "render the preview window at SECONDS instead."));
    const QCommandLineOption select(QStringLiteral("select"),
                                    QStringLiteral("With --screenshot: select the components titled TITLE first (repeatable)."),
                                    QStringLiteral("TITLE"));
    const QCommandLineOption partOption(QStringLiteral("part"),
                                        QStringLiteral("With --screenshot: render only the window's part named NAME "
                                                       "(HorizontalRuler, TimeRuler, a toolbar item, ...)."),
                                        QStringLiteral("NAME"));
    parser.addOption(screenshot);
    parser.addOption(partOption);
    parser.addOption(time);
    parser.addOption(previewOption);
    parser.addOption(select);
    parser.addPositionalArgument(QStringLiteral("file"), QStringLiteral("A .composition document, or any file inside one, to open."),
                                 QStringLiteral("[FILE.composition...]"));
    parser.process(application);

    app::CompositionDocumentsController controller;
    if (parser.isSet(screenshot))
        return takeScreenshot(controller, parser.positionalArguments(), parser.value(screenshot), parser.value(time),
                              parser.isSet(previewOption), parser.values(select), parser.value(partOption));
    if (parser.isSet(time) || parser.isSet(select) || parser.isSet(partOption)) {
        std::fprintf(stderr, "velloran: --time, --select and --part only go with --screenshot\n");
        return 2;
    }

    controller.setCrashRecovery(true);
    controller.offerRecoveryAtStart();
    for (const QString& path : parser.positionalArguments()) controller.openDocument(path);
    if (controller.windows().empty()) controller.newDocument();
    if (controller.windows().empty()) return 1;
    if (parser.isSet(previewOption)) controller.preview().togglePreviewForCompositionDocument(controller.windows().front()->document());
    return application.exec();
}
