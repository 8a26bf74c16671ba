#pragma once
// The demo document that ships with the editor: the template most
// benchmarks measure, since it is what a new user first opens.

#include "document/CompositionDocument.h"

#include <benchmark/benchmark.h>

#include <QString>

#include <memory>

namespace bench {

QString demoPath();

// Opens the demo in an application made for it; null, with the benchmark
// skipped and the reason given, when it does not open.
std::unique_ptr<document::CompositionDocument> openDemo(benchmark::State& state);

}  // namespace bench
