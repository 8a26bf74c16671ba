// Edits a document with its crash journal on, step after step, until it is
// killed: the other half of the crash-recovery test.
//   journal-crash-child PACKAGE JOURNAL_FOLDER
// Each step moves the first component to x = 10·n, titles it "edit n" and
// adds a stop frame at n/20 s, all in one undo step.

#include "document/CompositionDocument.h"
#include "document/DocumentJournal.h"
#include "model/Composition.h"
#include "model/QuartzComponent.h"
#include "model/UndoManager.h"

#include <QGuiApplication>

#include <cstdio>

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    if (argc != 3) return 2;
    document::DocumentJournal::setFolderForTesting(QString::fromLocal8Bit(argv[2]));
    QString error;
    auto doc = document::CompositionDocument::open(QString::fromLocal8Bit(argv[1]), &error);
    if (!doc) {
        std::fprintf(stderr, "%s\n", qPrintable(error));
        return 1;
    }
    doc->enableJournal();
    model::Composition* composition = doc->composition();
    model::QuartzComponent* component = composition->componentsSortedByZLevel().front();
    std::fputs("ready\n", stdout);
    std::fflush(stdout);
    for (int n = 1;; ++n) {
        {
            model::UndoGroup step(doc->store().undoManager());
            component->setOriginX(10.0 * n);
            component->setTitle(QStringLiteral("edit %1").arg(n));
            composition->addStopFrame(n / 20.0, QStringLiteral("s%1").arg(n));
        }
        QCoreApplication::processEvents();  // the journal takes the step
    }
}
