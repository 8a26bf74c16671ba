// libFuzzer target for the RTF reader: any input must give a document or an
// error, never a crash or a hang; whatever is read must write as RTF that
// reads back to the same text.
#include "rtf/Rtf.h"

#include <QGuiApplication>
#include <QTextDocument>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    // QTextDocument wants a GUI application for its fonts.
    static QGuiApplication* application = [] {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        static int argc = 1;
        static char name[] = "fuzz_rtf";
        static char* argv[] = {name, nullptr};
        return new QGuiApplication(argc, argv);
    }();
    (void)application;

    const QByteArray input = QByteArray::fromRawData(reinterpret_cast<const char*>(data), qsizetype(size));
    QString error;
    const auto document = rtf::read(input, &error);
    if (!document) return 0;
    const QByteArray written = rtf::write(*document);
    const auto reread = rtf::read(written, &error);
    if (!reread || reread->toPlainText() != document->toPlainText()) std::abort();
    return 0;
}
