// velloran [FILE.composition]: the editor. Opens the given document, or a
// new one at the preferred video mode.

#include "app/CompositionDocumentsController.h"
#include "app/EditorStyle.h"
#include "app/VLWindowController.h"
#include "document/CompositionDocument.h"
#include "model/Composition.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QImage>
#include <QTimer>

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Velloran"));
    QApplication::setApplicationName(QStringLiteral("Velloran"));
    QApplication::setApplicationDisplayName(QStringLiteral("Velloran"));
    QApplication::setApplicationVersion(QStringLiteral(VELLORAN_VERSION));
    app::applyEditorStyle(application);

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Velloran, the editor for broadcast graphics templates."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(QStringLiteral("file"), QStringLiteral("A .composition document to open."),
                                 QStringLiteral("[FILE.composition...]"));
    parser.process(application);

    app::CompositionDocumentsController controller;
    for (const QString& path : parser.positionalArguments()) controller.openDocument(path);
    if (controller.windows().empty()) controller.newDocument();
    if (controller.windows().empty()) return 1;

    // VELLORAN_SCREENSHOT=FILE.png: grab the first window once it has
    // settled and quit, for checking the look without a person at the screen;
    // VELLORAN_SCREENSHOT_TIME=SECONDS moves the playhead first.
    const QString screenshot = qEnvironmentVariable("VELLORAN_SCREENSHOT");
    if (!screenshot.isEmpty()) {
        bool hasTime = false;
        const double time = qEnvironmentVariable("VELLORAN_SCREENSHOT_TIME").toDouble(&hasTime);
        if (hasTime) controller.windows().front()->document()->composition()->setEditorTimepoint(time);
        QTimer::singleShot(1500, &application, [&controller, screenshot] {
            controller.windows().front()->grab().save(screenshot);
            for (app::VLWindowController* window : controller.windows())
                window->setCloseQuestion([](app::VLWindowController&) { return app::VLWindowController::CloseAnswer::DontSave; });
            QApplication::closeAllWindows();
        });
    }
    return application.exec();
}
