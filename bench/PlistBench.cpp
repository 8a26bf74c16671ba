// Property-list speed on a ~10 MB composition-like document: XML and binary,
// read and write, in bytes of the file per second. Tools for bench/run.sh:
//   --write-plist-files DIR        writes DIR/composition.bplist and .xml
//   --plist-read-memory FILE       peak memory of reading FILE
//   --plist-convert IN OUT FORMAT  IN to OUT as "xml" or "binary" (to time
//                                  against other converters)

#include "BenchTools.h"
#include "plist/PropertyList.h"

#include <benchmark/benchmark.h>
#include <malloc.h>
#include <sys/resource.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <unistd.h>

namespace {

using plist::Array;
using plist::Dictionary;
using plist::Value;

constexpr std::size_t kTargetBytes = 10u << 20;

// Fixed generator so every run measures the same document.
class Random {
public:
    std::uint32_t next()
    {
        state_ = state_ * 6364136223846793005ull + 1442695040888963407ull;
        return static_cast<std::uint32_t>(state_ >> 33);
    }
    int below(int n) { return static_cast<int>(next() % static_cast<std::uint32_t>(n)); }
    double unit() { return next() / 4294967296.0; }

private:
    std::uint64_t state_ = 0x5EED;
};

const char* const kClasses[] = {"QCSprite", "QCBillboard", "QCImageLoader", "QCTextImage", "QCLFO", "QCInterpolation",
                                "QCClear",  "QCSplitter",  "QCMath",        "QCImageFilter"};
const char* const kPorts[] = {"inputX", "inputY", "inputWidth", "inputHeight", "inputRotation", "inputOpacity",
                              "inputScale", "inputBlending", "inputString", "inputFontSize"};

// Appends the decimal form of n; "literal" + std::string trips a false
// -Wrestrict in GCC 12 at -O2.
std::string withNumber(std::string text, long long n)
{
    text += std::to_string(n);
    return text;
}

std::string bytesOf(Random& random, int size)
{
    std::string bytes(static_cast<std::size_t>(size), '\0');
    for (char& c : bytes) c = static_cast<char>(random.next());
    return bytes;
}

Value color(Random& random)
{
    return Value(Dictionary{{"alpha", Value::singleReal(1.0f)},
                            {"blue", Value::singleReal(static_cast<float>(random.unit()))},
                            {"green", Value::singleReal(static_cast<float>(random.unit()))},
                            {"red", Value::singleReal(static_cast<float>(random.unit()))}});
}

// One patch: ports with mixed scalar states, a colour, strings, a small
// user-info blob, and now and then an embedded image.
Value node(Random& random, int index)
{
    const char* className = kClasses[random.below(10)];
    Dictionary ports;
    for (int p = 0; p < 6; ++p) {
        Value state;
        switch (random.below(4)) {
        case 0: state = Value(random.unit() * 2 - 1); break;
        case 1: state = Value(random.below(1000)); break;
        case 2: state = Value(random.below(2) == 0); break;
        default: state = Value(withNumber("Text \xC3\xA9l\xC3\xA8ve ", random.below(100000))); break;
        }
        ports[kPorts[random.below(10)]] = Value(Dictionary{{"value", state}});
    }
    ports["inputColor"] = Value(Dictionary{{"value", color(random)}});
    Dictionary state{
        {"ivarInputPortStates", Value(ports)},
        {"systemInputPortStates", Value(Dictionary{{"_enable", Value(Dictionary{{"value", Value(true)}})}})},
        {"version", Value(2)},
        {"customInputPortStates", Value::emptyDictionary()},
    };
    if (random.below(30) == 0) state["imageData"] = Value::data(bytesOf(random, 8192 + random.below(16384)));
    const std::string key = withNumber(std::string(className + 2) + "_", index);
    return Value(Dictionary{
        {"class", Value(className)},
        {"key", Value(key)},
        {"identifier", Value(withNumber(key + "_", random.next()))},
        {"state", Value(state)},
        {"userInfo", Value::data(bytesOf(random, 64 + random.below(192)))},
        {"position", Value(withNumber(withNumber("{", random.below(2000)) + ", ", random.below(2000)) + "}")},
    });
}

// A macro patch of `count` nodes wired in a chain.
Value macro(Random& random, int first, int count)
{
    Array nodes;
    Dictionary connections;
    nodes.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) nodes.push_back(node(random, first + i));
    for (int i = 1; i < count; ++i) {
        connections[withNumber("connection_", first + i)] = Value(Dictionary{
            {"sourceNode", nodes[i - 1].value("key")},
            {"sourcePort", Value("outputImage")},
            {"destinationNode", nodes[i].value("key")},
            {"destinationPort", Value("inputImage")},
        });
    }
    return Value(Dictionary{
        {"class", Value("QCPatch")},
        {"key", Value(withNumber("Macro_", first))},
        {"state", Value(Dictionary{{"nodes", Value(std::move(nodes))},
                                   {"connections", Value(std::move(connections))},
                                   {"timebase", Value("parent")}})},
    });
}

Value composition(const Array& macros)
{
    return Value(Dictionary{
        {"frameworkVersion", Value("154")},
        {"editorViewerWindow", Value("932 448 512 430 0 0 1440 878 ")},
        {"rootPatch", Value(Dictionary{{"class", Value("QCPatch")}, {"state", Value(Dictionary{{"nodes", Value(macros)}})}})},
    });
}

// Adds macro patches until the binary form reaches the target size.
Value composition(std::size_t targetBytes)
{
    constexpr int kNodesPerMacro = 100;
    Random random;
    Array macros;
    std::size_t size = 0;
    while (size < targetBytes) {
        const std::size_t macroBytes = plist::writeBinary(macro(random, 0, kNodesPerMacro))->size();
        const std::size_t more = (targetBytes - size) / macroBytes + 1;
        for (std::size_t m = 0; m < more; ++m) {
            const int first = static_cast<int>(macros.size()) * kNodesPerMacro;
            macros.push_back(macro(random, first, kNodesPerMacro));
        }
        size = plist::writeBinary(composition(macros))->size();
    }
    return composition(macros);
}

struct Files {
    Value document;
    std::string binary;
    std::string xml;
};

const Files& files()
{
    static const Files f = [] {
        Files made{composition(kTargetBytes), {}, {}};
        made.binary = *plist::writeBinary(made.document);
        made.xml = *plist::writeXml(made.document);
        return made;
    }();
    return f;
}

// Two ways to read: in a process that has read files before, whose
// allocator keeps the memory of the last tree (the editor, reading file
// after file), and as the first read of a fresh process, whose every new
// page the kernel must supply (the command line). The tree is freed outside
// the timing either way.
enum class Heap { Warm, Fresh };

using Reader = std::optional<Value> (*)(std::string_view, std::string*);

void readFile(benchmark::State& state, Reader reader, const std::string& bytes, Heap heap)
{
    for (auto _ : state) {
        auto value = reader(bytes, nullptr);
        benchmark::DoNotOptimize(value);
        state.PauseTiming();
        value.reset();
        if (heap == Heap::Fresh) malloc_trim(0);
        state.ResumeTiming();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes.size()));
}

void BM_PlistReadBinary(benchmark::State& state) { readFile(state, plist::readBinary, files().binary, Heap::Warm); }
void BM_PlistReadBinaryFreshHeap(benchmark::State& state) { readFile(state, plist::readBinary, files().binary, Heap::Fresh); }
void BM_PlistReadXml(benchmark::State& state) { readFile(state, plist::readXml, files().xml, Heap::Warm); }
void BM_PlistReadXmlFreshHeap(benchmark::State& state) { readFile(state, plist::readXml, files().xml, Heap::Fresh); }

void BM_PlistWriteBinary(benchmark::State& state)
{
    const Files& f = files();
    for (auto _ : state) benchmark::DoNotOptimize(plist::writeBinary(f.document));
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * f.binary.size()));
}

void BM_PlistWriteXml(benchmark::State& state)
{
    const Files& f = files();
    for (auto _ : state) benchmark::DoNotOptimize(plist::writeXml(f.document));
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * f.xml.size()));
}

BENCHMARK(BM_PlistReadBinary)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PlistReadBinaryFreshHeap)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PlistWriteBinary)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PlistReadXml)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PlistReadXmlFreshHeap)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PlistWriteXml)->Unit(benchmark::kMillisecond);

bool writeFile(const std::string& path, const std::string& bytes)
{
    std::ofstream out(path, std::ios::binary);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return static_cast<bool>(out);
}

int writePlistFiles(int argc, char** argv)
{
    if (argc != 1) return std::fprintf(stderr, "usage: velloran-bench --write-plist-files DIR\n"), 2;
    const std::string dir = argv[0];
    const Files& f = files();
    if (!writeFile(dir + "/composition.bplist", f.binary) || !writeFile(dir + "/composition.xml", f.xml))
        return std::fprintf(stderr, "cannot write to %s\n", dir.c_str()), 1;
    std::printf("wrote %s/composition.bplist (%.1f MB) and composition.xml (%.1f MB)\n", dir.c_str(), f.binary.size() / 1e6,
                f.xml.size() / 1e6);
    return 0;
}

long residentKilobytes()
{
    long pages = 0, resident = 0;
    if (FILE* statm = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(statm, "%ld %ld", &pages, &resident) != 2) resident = 0;
        std::fclose(statm);
    }
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

int readMemory(int argc, char** argv)
{
    if (argc != 1) return std::fprintf(stderr, "usage: velloran-bench --plist-read-memory FILE\n"), 2;
    const long before = residentKilobytes();
    std::ifstream in(argv[0], std::ios::binary | std::ios::ate);
    std::string bytes(static_cast<std::size_t>(in.tellg()), '\0');
    in.seekg(0);
    in.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    std::string error;
    plist::Format format;
    const auto value = plist::read(bytes, &error, &format);
    if (!value) return std::fprintf(stderr, "%s: %s\n", argv[0], error.c_str()), 1;
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const double fileMb = bytes.size() / 1048576.0;
    const double peakMb = (usage.ru_maxrss - before) / 1024.0;
    const double heldMb = (residentKilobytes() - before) / 1024.0;  // file bytes and the value
    std::printf("%-6s %6.1f MB file: peak %6.1f MB above the process start = %.2fx the file "
                "(file bytes and value still held: %.1f MB)\n",
                format == plist::Format::Binary ? "binary" : "xml", fileMb, peakMb, peakMb / fileMb, heldMb);
    return 0;
}

int convert(int argc, char** argv)
{
    if (argc != 3) return std::fprintf(stderr, "usage: velloran-bench --plist-convert IN OUT xml|binary\n"), 2;
    std::string error;
    const auto value = plist::readFile(argv[0], &error);
    if (!value) return std::fprintf(stderr, "%s: %s\n", argv[0], error.c_str()), 1;
    const auto bytes = plist::write(*value, std::string_view(argv[2]) == "xml" ? plist::Format::Xml : plist::Format::Binary, &error);
    if (!bytes) return std::fprintf(stderr, "%s\n", error.c_str()), 1;
    return writeFile(argv[1], *bytes) ? 0 : 1;
}

[[maybe_unused]] const bool registered = bench::registerTool("--write-plist-files", "DIR", writePlistFiles) &&
                        bench::registerTool("--plist-read-memory", "FILE", readMemory) &&
                        bench::registerTool("--plist-convert", "IN OUT xml|binary", convert);

}  // namespace
