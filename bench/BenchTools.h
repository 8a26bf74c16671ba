#pragma once
// Extra command-line modes of velloran-bench, for bench/run.sh: a bench file
// registers "--NAME" and `velloran-bench --NAME ARGS...` runs it instead of
// the benchmarks.

namespace bench {

using ToolFunction = int (*)(int argc, char** argv);  // the arguments after --NAME

// Call at static initialisation: `static const bool registered = registerTool(...)`.
bool registerTool(const char* name, const char* usage, ToolFunction function);

// A GUI application on the offscreen platform, for fonts and images; made once.
void ensureApplication();

}  // namespace bench
