// The OpenCL Kernel patch: reading kernel parameters into ports, and
// kernels run on the machine's OpenCL device (PoCL here and in CI). Cases
// that need a device skip, saying so, where none is installed.

#include "CompositionBuilder.h"

#include "runtime/cl/ClDevice.h"
#include "runtime/cl/KernelRun.h"
#include "runtime/cl/KernelSignature.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cstring>

using runtime::cl::KernelParameter;
using test::Node;

namespace {

#define SKIP_WITHOUT_OPENCL_DEVICE()                                                      \
    do {                                                                                  \
        QString reason;                                                                   \
        if (!runtime::cl::Device::shared(&reason)) GTEST_SKIP() << reason.toStdString(); \
    } while (false)

Node kernelNode(const std::string& source)
{
    return Node("QCOpenCL", "OpenCL_1").state("source", source);
}

TEST(KernelSignature, ReadsEveryKindOfParameter)
{
    QString error;
    const auto s = runtime::cl::readKernelSignature(QStringLiteral(R"(
        // a helper first, with a comment holding kernel void fake(int x)
        float twice(float v) { return 2 * v; }
        /* block comment (kernel void fake2()) */
        __kernel void main_kernel(__global const float4 *points, global float* out,
                                  __constant int *table, const float scale, uint2 size,
                                  read_only image2d_t source, __write_only image2d_t result,
                                  unsigned int steps)
        { })"),
                                                        &error);
    ASSERT_TRUE(s) << error.toStdString();
    EXPECT_EQ(s->name, "main_kernel");
    ASSERT_EQ(s->parameters.size(), 8u);
    using K = KernelParameter::Kind;
    using E = runtime::cl::ElementType;
    const struct {
        const char* name;
        K kind;
        E element;
        int components;
    } expected[] = {
        {"points", K::InputBuffer, E::Float, 4}, {"out", K::OutputBuffer, E::Float, 1}, {"table", K::InputBuffer, E::Int, 1},
        {"scale", K::Value, E::Float, 1},        {"size", K::Value, E::UInt, 2},       {"source", K::InputImage, E::Float, 1},
        {"result", K::OutputImage, E::Float, 1}, {"steps", K::Value, E::UInt, 1},
    };
    for (std::size_t i = 0; i < std::size(expected); ++i) {
        const KernelParameter& p = s->parameters[i];
        EXPECT_EQ(p.name, expected[i].name);
        EXPECT_EQ(p.kind, expected[i].kind) << expected[i].name;
        if (p.kind != K::InputImage && p.kind != K::OutputImage) {
            EXPECT_EQ(p.element, expected[i].element) << expected[i].name;
            EXPECT_EQ(p.components, expected[i].components) << expected[i].name;
        }
    }
    EXPECT_EQ(s->parameters[0].stride(), 16);
    EXPECT_EQ((KernelParameter{QString(), K::Value, E::Float, 3}).stride(), 16);  // float3 takes a float4's room
}

TEST(KernelSignature, RefusesWhatThePatchCannotFeed)
{
    const std::pair<const char*, const char*> cases[] = {
        {"float f(float x) { return x; }", "no kernel"},
        {"__kernel void k(__local float* scratch) {}", "local memory"},
        {"__kernel void k(__global double* d) {}", "double*"},
        {"__kernel void k(__global float** p) {}", "float**"},
        {"__kernel void k(__global float* a, __global float* a) {}", "twice"},
        {"__kernel void k(__global float* a", "no end"},
    };
    for (const auto& [source, expected] : cases) {
        QString error;
        EXPECT_FALSE(runtime::cl::readKernelSignature(QString::fromLatin1(source), &error)) << source;
        EXPECT_TRUE(error.contains(QLatin1String(expected))) << source << " → " << error.toStdString();
    }
    QString error;
    const QString huge = QStringLiteral("__kernel void k(__global float* a) {}") + QString(runtime::cl::kMaxKernelSourceLength, QLatin1Char(' '));
    EXPECT_FALSE(runtime::cl::readKernelSignature(huge, &error));
    EXPECT_TRUE(error.contains("longer than")) << error.toStdString();
    // Garbage reads as no kernel, without a crash.
    for (const char* junk : {"", "(((((", "kernel void", "kernel void k(", "__kernel void k(,,)", "\x01\xff kernel void 9("}) {
        EXPECT_FALSE(runtime::cl::readKernelSignature(QString::fromLatin1(junk), &error)) << junk;
        EXPECT_FALSE(error.isEmpty());
    }
    const auto none = runtime::cl::readKernelSignature(QStringLiteral("kernel void k(void) {}"), &error);
    ASSERT_TRUE(none);
    EXPECT_TRUE(none->parameters.empty());
}

TEST(OpenCLPatch, ParametersBecomePortsWithoutADevice)
{
    Node n = kernelNode("__kernel void k(__global const float* values, __global float4* out, float gain, float2 offset) {}");
    auto composition = test::load(test::root().child(n));
    runtime::Renderer renderer(composition, QSize(8, 8));
    // Connecting to a port is possible only where the port exists.
    for (const QString port : {"values", "gain", "offset_X", "offset_Y"})
        EXPECT_TRUE(renderer.setNodeInputValue("OpenCL_1", port, 1.0)) << port.toStdString();
    EXPECT_FALSE(renderer.setNodeInputValue("OpenCL_1", "out", 1.0));
    // The range comes from "values": no count of its own.
    EXPECT_FALSE(renderer.setNodeInputValue("OpenCL_1", "inputCount", 1.0));

    // Without an input structure the count is an input; an image writer
    // without an input image has a width and a height.
    auto counted = test::load(test::root().child(kernelNode("__kernel void k(__global int* out) {}")));
    runtime::Renderer countedRenderer(counted, QSize(8, 8));
    EXPECT_TRUE(countedRenderer.setNodeInputValue("OpenCL_1", "inputCount", 3));
    auto painter = test::load(test::root().child(kernelNode("__kernel void k(write_only image2d_t out) {}")));
    runtime::Renderer painterRenderer(painter, QSize(8, 8));
    EXPECT_TRUE(painterRenderer.setNodeInputValue("OpenCL_1", "inputWidth", 3));
    EXPECT_TRUE(painterRenderer.setNodeInputValue("OpenCL_1", "inputHeight", 3));
    EXPECT_FALSE(painterRenderer.setNodeInputValue("OpenCL_1", "inputCount", 3));
}

std::unique_ptr<runtime::Renderer> kernelRenderer(const Node& node, std::initializer_list<const char*> inputs,
                                                  std::initializer_list<const char*> outputs)
{
    Node r = test::root();
    r.child(node);
    for (const char* in : inputs) r.publishInput(in, "OpenCL_1", in);
    for (const char* out : outputs) r.publishOutput(out, "OpenCL_1", out);
    auto composition = test::load(r);
    if (!composition) return nullptr;
    EXPECT_TRUE(composition->problems().isEmpty()) << test::problemsText(*composition).toStdString();
    return std::make_unique<runtime::Renderer>(composition, QSize(16, 16));
}

TEST(OpenCLPatch, DoublesAStructureOfNumbers)
{
    SKIP_WITHOUT_OPENCL_DEVICE();
    auto renderer = kernelRenderer(kernelNode(R"(
        __kernel void twice(__global const float* values, __global float* doubled, float offset) {
            size_t i = get_global_id(0);
            doubled[i] = 2.0f * values[i] + offset;
        })"),
                                   {"values", "offset"}, {"doubled"});
    ASSERT_TRUE(renderer);
    renderer->setInputValue("values", QVariantList{1.0, -2.5, 1000.0, 0.0});
    renderer->render(0);
    EXPECT_EQ(renderer->outputValue("doubled").toList(), (QVariantList{2.0, -5.0, 2000.0, 0.0}));

    // A new input runs again, with buffers of another size; the offset is passed.
    renderer->setInputValue("values", QVariantList{3.0, 4.0});
    renderer->setInputValue("offset", 0.5);
    renderer->render(1.0 / 25);
    EXPECT_EQ(renderer->outputValue("doubled").toList(), (QVariantList{6.5, 8.5}));

    // An empty structure gives nothing, not stale numbers.
    renderer->setInputValue("values", QVariantList{});
    renderer->render(2.0 / 25);
    EXPECT_TRUE(renderer->outputValue("doubled").toList().isEmpty());
}

TEST(OpenCLPatch, VectorsTravelAsStructuresOfNumbers)
{
    SKIP_WITHOUT_OPENCL_DEVICE();
    auto renderer = kernelRenderer(kernelNode(R"(
        kernel void swap(global const float4* in, global int2* out) {
            int i = get_global_id(0);
            out[i] = (int2)((int)in[i].w, (int)in[i].x);
        })"),
                                   {"in"}, {"out"});
    ASSERT_TRUE(renderer);
    renderer->setInputValue("in", QVariantList{QVariantList{1.0, 2.0, 3.0, 4.0}, QVariantList{-7.0, 0.0, 0.0, 9.0}, 5.0});
    renderer->render(0);
    const QVariantList out = renderer->outputValue("out").toList();
    ASSERT_EQ(out.size(), 3);
    EXPECT_EQ(out[0].toList(), (QVariantList{4.0, 1.0}));
    EXPECT_EQ(out[1].toList(), (QVariantList{9.0, -7.0}));
    EXPECT_EQ(out[2].toList(), (QVariantList{0.0, 5.0}));  // a bare number fills the first component
}

TEST(OpenCLPatch, WritesAnImageWithItsOriginAtTheLowerLeft)
{
    SKIP_WITHOUT_OPENCL_DEVICE();
    Node n = kernelNode(R"(
        __kernel void paint(__write_only image2d_t picture, float blue) {
            int2 p = (int2)(get_global_id(0), get_global_id(1));
            float4 c = (p.x == 0 && p.y == 0) ? (float4)(1, 0, 0, 1) : (float4)(0, p.x / 255.0f, blue, 1);
            write_imagef(picture, p, c);
        })");
    n.input("inputWidth", 40).input("inputHeight", 30).input("blue", 0.5);
    auto renderer = kernelRenderer(n, {}, {"picture"});
    ASSERT_TRUE(renderer);
    renderer->render(0);
    const QImage image = renderer->outputValue("picture").value<QImage>().convertToFormat(QImage::Format_ARGB32);
    ASSERT_EQ(image.size(), QSize(40, 30));
    EXPECT_EQ(image.pixel(0, 29), qRgb(255, 0, 0));  // the kernel's (0, 0): bottom left
    EXPECT_EQ(image.pixel(0, 0), qRgb(0, 0, 128));
    EXPECT_EQ(image.pixel(39, 0), qRgb(0, 39, 128));
    EXPECT_EQ(image.pixel(17, 12), qRgb(0, 17, 128));
}

TEST(OpenCLPatch, ReadsAnImageAndWritesOneOfItsSize)
{
    SKIP_WITHOUT_OPENCL_DEVICE();
    Node n = kernelNode(R"(
        const sampler_t nearest = CLK_NORMALIZED_COORDS_FALSE | CLK_ADDRESS_CLAMP_TO_EDGE | CLK_FILTER_NEAREST;
        __kernel void invert(read_only image2d_t source, write_only image2d_t inverted) {
            int2 p = (int2)(get_global_id(0), get_global_id(1));
            float4 c = read_imagef(source, nearest, p);
            write_imagef(inverted, p, (float4)(c.w - c.x, c.w - c.y, c.w - c.z, c.w));
        })");
    auto renderer = kernelRenderer(n, {"source"}, {"inverted"});
    ASSERT_TRUE(renderer);
    QImage source(5, 3, QImage::Format_ARGB32);
    source.fill(qRgb(10, 20, 30));
    source.setPixel(4, 0, qRgb(255, 255, 0));
    renderer->setInputValue("source", source);
    renderer->render(0);
    const QImage image = renderer->outputValue("inverted").value<QImage>().convertToFormat(QImage::Format_ARGB32);
    ASSERT_EQ(image.size(), QSize(5, 3));
    EXPECT_EQ(image.pixel(0, 0), qRgb(245, 235, 225));
    EXPECT_EQ(image.pixel(4, 0), qRgb(0, 0, 255));  // rows keep their place
    EXPECT_EQ(image.pixel(4, 2), qRgb(245, 235, 225));
}

TEST(OpenCLPatch, AKernelThatDoesNotBuildListsTheCompilersMessages)
{
    SKIP_WITHOUT_OPENCL_DEVICE();
    Node n = kernelNode("__kernel void broken(__global float* out) {\n  out[0] = undefined_thing + 1;\n}\n");
    Node r = test::root();
    r.child(n).publishOutput("out", "OpenCL_1", "out");
    auto composition = test::load(r);
    ASSERT_TRUE(composition);
    const QString problems = test::problemsText(*composition);
    EXPECT_TRUE(problems.contains("OpenCL_1: the OpenCL kernel does not build")) << problems.toStdString();
    // The compiler's own words, with the place in the source (its
    // temporary file's name, where it gives one, replaced by "line").
    EXPECT_TRUE(problems.contains("undefined_thing")) << problems.toStdString();
    EXPECT_TRUE(problems.contains("2:12:")) << problems.toStdString();
    EXPECT_FALSE(problems.contains(".cl:")) << problems.toStdString();
    // It loads and renders, giving nothing.
    runtime::Renderer renderer(composition, QSize(8, 8));
    renderer.render(0);
    EXPECT_FALSE(renderer.outputValue("out").isValid() && !renderer.outputValue("out").toList().isEmpty());
}

// OpenCL cannot stop a running kernel: a run that takes too long is given
// up, so the frame goes on, and never used again.
TEST(OpenCLKernelRun, AKernelThatRunsTooLongIsGivenUpWithoutHoldingTheFrame)
{
    QString reason;
    runtime::cl::Device* device = runtime::cl::Device::shared(&reason);
    if (!device) GTEST_SKIP() << reason.toStdString();
    const QString source = QStringLiteral(R"(
        __kernel void busy(__global float* out, uint rounds) {
            float v = 0.0f;
            for (uint i = 0; i < rounds; ++i) v = v * 0.999f + 1.0f;
            out[get_global_id(0)] = v;
        })");
    QString error;
    auto signature = runtime::cl::readKernelSignature(source, &error);
    ASSERT_TRUE(signature) << error.toStdString();
    auto program = device->build(source);
    ASSERT_TRUE(program->program) << program->log.toStdString();

    const auto rounds = [](std::uint32_t n) {
        std::vector<runtime::cl::KernelArgument> arguments(2);
        arguments[1].bytes = QByteArray(reinterpret_cast<const char*>(&n), 4);
        return arguments;
    };
    {
        runtime::cl::KernelRun quick(*device, program, *signature, std::chrono::milliseconds(2000));
        auto arguments = rounds(10);
        ASSERT_TRUE(quick.run(QSize(4, 1), false, arguments)) << quick.error().toStdString();
        float first = 0;
        std::memcpy(&first, arguments[0].bytes.constData(), 4);
        EXPECT_GT(first, 9.0f);
        EXPECT_FALSE(quick.gaveUp());
    }
    auto slow = std::make_unique<runtime::cl::KernelRun>(*device, program, *signature, std::chrono::milliseconds(50));
    {
        // Its first run may compile for the range, and has time for that.
        auto arguments = rounds(10);
        ASSERT_TRUE(slow->run(QSize(1, 1), false, arguments)) << slow->error().toStdString();
    }
    QElapsedTimer timer;
    timer.start();
    {
        // About a billion dependent steps: seconds on any CPU, far past 50 ms.
        auto arguments = rounds(1000000000u);
        EXPECT_FALSE(slow->run(QSize(1, 1), false, arguments));
        EXPECT_TRUE(slow->gaveUp());
        EXPECT_TRUE(slow->error().contains("ran longer than 50 ms")) << slow->error().toStdString();
        auto again = rounds(1);
        EXPECT_FALSE(slow->run(QSize(1, 1), false, again));  // not run again
    }
    slow.reset();  // leaving it does not wait for the kernel either
    EXPECT_LT(timer.elapsed(), 1000);
}

TEST(OpenCLPatch, AnUnreadableSignatureIsAProblemToo)
{
    auto composition = test::load(test::root().child(kernelNode("__kernel void k(__local float* x) {}")));
    ASSERT_TRUE(composition);
    EXPECT_TRUE(test::problemsText(*composition).contains("OpenCL_1: the OpenCL kernel cannot be used: the kernel parameter \"x\" is in local memory"));
}

// Runs in a child process of this test binary with the ICD loader pointed at
// an empty folder of vendors, so no platform is found whatever is installed.
TEST(OpenCLPatch, WithoutADeviceTheProblemSaysSoAndNothingRuns)
{
    if (qEnvironmentVariableIsSet("VELLORAN_OPENCL_HIDDEN")) {
        QString reason;
        EXPECT_EQ(runtime::cl::Device::shared(&reason), nullptr);
        Node r = test::root();
        r.child(kernelNode("__kernel void k(__global const float* a, __global float* b) { b[0] = a[0]; }"))
            .publishInput("a", "OpenCL_1", "a").publishOutput("b", "OpenCL_1", "b");
        auto composition = test::load(r);
        ASSERT_TRUE(composition);
        EXPECT_TRUE(test::problemsText(*composition).contains("OpenCL_1: no OpenCL device")) << test::problemsText(*composition).toStdString();
        runtime::Renderer renderer(composition, QSize(8, 8));
        renderer.setInputValue("a", QVariantList{1.0});
        renderer.render(0);
        EXPECT_TRUE(renderer.outputValue("b").toList().isEmpty());
        return;
    }
    QTemporaryDir noVendors;
    ASSERT_TRUE(noVendors.isValid());
    QProcess child;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("VELLORAN_OPENCL_HIDDEN", "1");
    environment.insert("OCL_ICD_VENDORS", noVendors.path());
    child.setProcessEnvironment(environment);
    child.start(QCoreApplication::applicationFilePath(), {"--gtest_filter=OpenCLPatch.WithoutADeviceTheProblemSaysSoAndNothingRuns"});
    ASSERT_TRUE(child.waitForFinished(60000));
    const QString output = QString::fromUtf8(child.readAllStandardOutput());
    EXPECT_EQ(child.exitCode(), 0) << output.toStdString();
    EXPECT_TRUE(output.contains("[  PASSED  ] 1 test")) << output.toStdString();
}

}  // namespace
