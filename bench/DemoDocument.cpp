#include "DemoDocument.h"

#include "BenchTools.h"

namespace bench {

QString demoPath() { return QStringLiteral(VELLORAN_SOURCE_DIR "/resources/demo/Demo.composition"); }

std::unique_ptr<document::CompositionDocument> openDemo(benchmark::State& state)
{
    ensureApplication();
    QString error;
    auto document = document::CompositionDocument::open(demoPath(), &error);
    if (!document) state.SkipWithError(error.toStdString().c_str());
    return document;
}

}  // namespace bench
