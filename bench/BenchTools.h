#pragma once
// Extra command-line modes of velloran-bench, for bench/run.sh: a bench file
// registers "--NAME" and `velloran-bench --NAME ARGS...` runs it instead of
// the benchmarks.

namespace bench {

using ToolFunction = int (*)(int argc, char** argv);  // the arguments after --NAME

// Call at static initialisation: `static const bool registered = registerTool(...)`.
bool registerTool(const char* name, const char* usage, ToolFunction function);

// A widget application on the offscreen platform, for fonts, images and the
// canvas; made once.
void ensureApplication();

}  // namespace bench
