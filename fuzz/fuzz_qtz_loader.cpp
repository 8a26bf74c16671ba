// libFuzzer target for the composition loader and a first render: any input
// must load or fail with an error, and a loaded graph must render without a
// crash, a hang or an outsized allocation.
#include "runtime/Composition.h"
#include "runtime/Renderer.h"

#include <QGuiApplication>

#include <cstddef>
#include <cstdint>

// Qt keeps font engines (one per family the fuzzer invents) in caches that
// live until exit, which the leak checker would report as leaks of every
// input. Our own code is leak-checked by the unit tests under ASan.
extern "C" const char* __asan_default_options()
{
    return "detect_leaks=0";
}

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    // Text and images need a GUI application, never a display.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static QGuiApplication app(*argc, *argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char*>(data), qsizetype(size));
    QString error;
    auto composition = runtime::Composition::loadData(bytes, &error);
    if (!composition) return 0;
    runtime::Renderer renderer(composition, QSize(32, 24));
    renderer.render(0.0);
    renderer.render(1.0);
    return 0;
}
