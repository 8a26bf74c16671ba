// velloran-bench: Google Benchmark's main, plus the tools the bench files
// register (see BenchTools.h).

#include "BenchTools.h"

#include <QApplication>
#include <QLoggingCategory>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>

namespace bench {
namespace {

struct Tool {
    const char* usage;
    ToolFunction function;
};

std::map<std::string, Tool>& tools()
{
    static std::map<std::string, Tool> registry;
    return registry;
}

}  // namespace

bool registerTool(const char* name, const char* usage, ToolFunction function)
{
    tools()[name] = Tool{usage, function};
    return true;
}

void ensureApplication()
{
    if (QCoreApplication::instance()) return;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static int argc = 1;
    static char name[] = "velloran-bench";
    static char* argv[] = {name, nullptr};
    static QApplication app(argc, argv);  // widgets for the canvas benchmarks
    QLoggingCategory::setFilterRules(QStringLiteral("velloran.*.debug=false\nvelloran.*.info=false"));
}

}  // namespace bench

int main(int argc, char** argv)
{
    if (argc >= 2) {
        const std::string first = argv[1];
        auto tool = bench::tools().find(first);
        if (tool != bench::tools().end()) return tool->second.function(argc - 2, argv + 2);
        if (first == "--tools") {
            for (const auto& [name, entry] : bench::tools()) std::printf("%s %s\n", name.c_str(), entry.usage);
            return 0;
        }
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
