// Inspector speed on the offscreen platform:
//  - BM_InspectorSelectThreeOf40: the selection changes to three components
//    made from one composition file with 40 attributes each, and the
//    inspector rebuilds its rows and lays them out; the target is 30 ms.
//    Each iteration switches between two such files, so every one rebuilds.
//  - BM_InspectorKeystrokeLowerThird: one key typed into the demo lower
//    third's name field: the model write, the inspector's echo to the other
//    rows, and the 1920×1080 canvas repaint it causes; the target is 16 ms.
#include "BenchTools.h"
#include "DemoDocument.h"

#include "canvas/CompositionView.h"
#include "document/CompositionDocument.h"
#include "inspector/TextAttributeEditor.h"
#include "inspector/VLInspectorAttributesController.h"
#include "inspector/VLInspectorController.h"
#include "model/Attribute.h"
#include "model/Composition.h"
#include "model/ObjectStore.h"
#include "model/QuartzComponent.h"
#include "model/VideoResolution.h"

#include <QColor>
#include <QCoreApplication>
#include <QImage>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPainter>

#include <benchmark/benchmark.h>

namespace {

// A component of `file` with the standard geometry and 40 inputs of the
// kinds templates publish most: text, numbers, colours, switches, menus.
model::QuartzComponent* addComponentWith40Attributes(document::CompositionDocument& document, const QString& file, int n)
{
    model::ObjectStore& store = document.store();
    auto* c = store.insertNewObject<model::QuartzComponent>();
    c->setTitle(QStringLiteral("%1 %2").arg(file).arg(n));
    c->setCompositionFilename(file);
    const auto add = [&](const QString& key, int type, const QVariant& value, const QStringList& menu = {}) {
        model::Attribute* a = model::Attribute::create(&store, key, key, type, value);
        if (!menu.isEmpty()) a->setPossibleValues(menu);
        a->setToOne(QStringLiteral("component"), c);
    };
    for (const char* key : {"originX", "originY", "inputWidth", "inputHeight", "opacity", "zRotation"})
        add(QString::fromLatin1(key), model::kTypeNumber, 100.0f);
    for (int i = 0; i < 40; ++i) {
        const QString key = QStringLiteral("Input_%1").arg(i, 2, 10, QLatin1Char('0'));
        switch (i % 5) {
        case 0: add(key, model::kTypeString, QStringLiteral("Text %1").arg(i + n)); break;
        case 1: add(key, model::kTypeNumber, float(i * n)); break;
        case 2: add(key, model::kTypeColor, QColor::fromHsv(i * 9, 200, 200)); break;
        case 3: add(key, model::kTypeBoolean, (i + n) % 2 == 0); break;
        default: add(key, model::kTypeIndexMenu, 1.0f, {"Left", "Center", "Right", "Justified", "Natural"}); break;
        }
    }
    c->initializeAttributeObservers();
    document.composition()->addComponent(c);
    return c;
}

void select(model::Composition& composition, const std::vector<model::QuartzComponent*>& components)
{
    composition.clearSelection();
    for (model::QuartzComponent* c : components) c->setSelected(true);
}

void BM_InspectorSelectThreeOf40(benchmark::State& state)
{
    bench::ensureApplication();
    auto document = document::CompositionDocument::emptyDocumentWithResolution(model::VideoResolution::defaultVideoResolution());
    model::Composition& composition = *document->composition();
    std::vector<model::QuartzComponent*> files[2];
    {
        model::UndoRegistrationPause quiet(document->store().undoManager());
        for (int file = 0; file < 2; ++file)
            for (int n = 0; n < 3; ++n)
                files[file].push_back(addComponentWith40Attributes(*document, QStringLiteral("File%1.qtz").arg(file), n));
        document->store().processPendingChanges();
    }
    inspector::VLInspectorController inspector;
    inspector.resize(340, 1000);
    inspector.setDocument(document.get());
    inspector.show();
    QCoreApplication::processEvents();
    int which = 0;
    for (auto _ : state) {
        select(composition, files[which]);
        which = 1 - which;
        inspector.updateIfNeeded();
        // The layout the new rows ask for, as the event loop would run it.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
        benchmark::DoNotOptimize(inspector.attributesController()->editors().size());
    }
    if (inspector.attributesController()->editors().size() != 40) state.SkipWithError("the rows were not all built");
    state.counters["rows"] = double(inspector.attributesController()->editors().size());
    inspector.setDocument(nullptr);
}
BENCHMARK(BM_InspectorSelectThreeOf40)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_InspectorKeystrokeLowerThird(benchmark::State& state)
{
    auto document = bench::openDemo(state);
    if (!document) return;
    model::Composition& composition = *document->composition();
    composition.setEditorTimepoint(3.0);  // the lower third on screen
    canvas::CompositionView view;
    const QSize canvasSize(1920, 1080);
    view.resize(canvasSize);
    view.setDocument(document.get());
    view.setZoomMode(0);
    inspector::VLInspectorController inspector;
    inspector.resize(340, 1000);
    inspector.setDocument(document.get());
    inspector.show();
    model::QuartzComponent* lowerThird = nullptr;
    for (model::QuartzComponent* c : composition.componentArray())
        if (c->title() == QLatin1String("Lower Third")) lowerThird = c;
    if (!lowerThird) {
        state.SkipWithError("the demo has no lower third");
        return;
    }
    lowerThird->setSelected(true);
    QCoreApplication::processEvents();
    inspector.updateIfNeeded();
    auto* name = qobject_cast<inspector::TextAttributeEditor*>(
        inspector.attributesController()->editorForKey(QStringLiteral("CIName")));
    if (!name) {
        state.SkipWithError("no name field for the lower third");
        return;
    }
    QLineEdit* field = name->field();
    field->setFocus();
    field->end(false);
    QImage image(canvasSize, QImage::Format_ARGB32_Premultiplied);
    const auto type = [field](int key, const QString& text) {
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, text);
        QCoreApplication::sendEvent(field, &press);
        QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier, text);
        QCoreApplication::sendEvent(field, &release);
    };
    int step = 0;
    for (auto _ : state) {
        // A letter, then Backspace: the name stays as long as a real one.
        if (step++ % 2 == 0) type(Qt::Key_A, QStringLiteral("a"));
        else type(Qt::Key_Backspace, QString());
        QCoreApplication::processEvents();
        QPainter painter(&image);
        view.render(&painter);
        benchmark::DoNotOptimize(image.constBits());
    }
    // The model took every key: it holds what the field shows.
    type(Qt::Key_A, QStringLiteral("a"));
    if (lowerThird->valueForKey(QStringLiteral("CIName")).toString() != field->text() || !field->text().endsWith(QLatin1Char('a')))
        state.SkipWithError("the model did not follow the typing");
    type(Qt::Key_Return, QStringLiteral("\r"));
    inspector.setDocument(nullptr);
}
BENCHMARK(BM_InspectorKeystrokeLowerThird)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
