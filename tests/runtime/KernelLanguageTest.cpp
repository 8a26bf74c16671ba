// The Core Image kernel language: what compiles, what it computes, and how
// bad sources fail.

#include "runtime/kernel/KernelProgram.h"

#include <gtest/gtest.h>

using runtime::kernel::KernelProgram;
using runtime::kernel::Sampler;
using runtime::kernel::Vec;

namespace {

QImage run(const KernelProgram& program, const QRect& region, const std::vector<Vec>& args = {},
           const std::vector<Sampler>& samplers = {}, bool* finished = nullptr)
{
    QImage out(region.size(), QImage::Format_ARGB32_Premultiplied);
    out.fill(Qt::transparent);
    const bool ok = program.render(args, samplers, region, out);
    if (finished) *finished = ok;
    return out;
}

std::shared_ptr<const KernelProgram> compiled(const QString& source)
{
    QString error;
    auto program = KernelProgram::compile(source, &error);
    EXPECT_TRUE(program) << error.toStdString() << "\n" << source.toStdString();
    return program;
}

// Runs `statements` in a kernel and tells whether `condition` then holds.
bool holds(const QString& statements, const QString& condition)
{
    const auto program = compiled(QStringLiteral("kernel vec4 k() {\n%1\nreturn (%2) ? vec4(1.0) : vec4(0.0, 0.0, 0.0, 1.0);\n}")
                                      .arg(statements, condition));
    if (!program) return false;
    return run(*program, QRect(0, 0, 1, 1)).pixel(0, 0) == qRgba(255, 255, 255, 255);
}

QString compileError(const QString& source)
{
    QString error;
    EXPECT_FALSE(KernelProgram::compile(source, &error)) << source.toStdString();
    return error;
}

TEST(KernelLanguage, ArithmeticFollowsGlsl)
{
    EXPECT_TRUE(holds("float a = 7.0 / 2.0; int b = 7 / 2; int c = -7 / 2;", "a == 3.5 && b == 3 && c == -3"));
    EXPECT_TRUE(holds("vec2 v = vec2(1.0, 2.0) * 3.0 + 1.0;", "v == vec2(4.0, 7.0)"));
    EXPECT_TRUE(holds("vec4 v = vec4(1, 2, 3, 4); v *= vec4(2.0);", "v.w == 8.0 && v.x == 2.0"));
    EXPECT_TRUE(holds("float x = 2.0; float y = -x + 2.0 * 3.0;", "y == 4.0"));
    EXPECT_TRUE(holds("int i = 0; int j = i++; int k = ++i;", "i == 2 && j == 0 && k == 2"));
    EXPECT_TRUE(holds("bool a = true; bool b = false;", "(a ^^ b) && !(a && b) && (a || b) && !b"));
    EXPECT_TRUE(holds("float x = 1.0 < 2.0 ? 5.0 : 6.0;", "x == 5.0"));
    EXPECT_TRUE(holds("int z = 1 / 0;", "z == 0"));  // no trap on integer division by zero
}

TEST(KernelLanguage, SwizzlesReadAndWriteLanes)
{
    EXPECT_TRUE(holds("vec4 c = vec4(0.1, 0.2, 0.3, 0.4); vec3 r = c.bgr;", "r == vec3(0.3, 0.2, 0.1)"));
    EXPECT_TRUE(holds("vec4 c = vec4(0.0); c.xw = vec2(1.0, 2.0);", "c == vec4(1.0, 0.0, 0.0, 2.0)"));
    EXPECT_TRUE(holds("vec2 p = vec2(3.0, 4.0); p[0] = p[1] + 1.0;", "p.x == 5.0 && p.y == 4.0"));
    EXPECT_TRUE(holds("vec3 p = vec3(1.0, 2.0, 3.0); int i = 2; p[i] = 9.0; float q = p[i - 1];", "p.z == 9.0 && q == 2.0"));
    EXPECT_TRUE(holds("vec3 p = vec3(1.0, 2.0, 3.0); int i = 7; float q = p[i];", "q == 3.0"));  // clamped, not out of bounds
    EXPECT_TRUE(holds("vec4 v = vec4(vec2(1.0, 2.0), 3.0, 4.0); vec4 w = vec4(2.0);", "v.z == 3.0 && w.y == 2.0"));
    EXPECT_TRUE(holds("vec4 s = vec4(1.0, 2.0, 3.0, 4.0).wzyx;", "s.x == 4.0 && s.a == 1.0"));
}

TEST(KernelLanguage, ControlFlowAndFunctions)
{
    EXPECT_TRUE(holds("float s = 0.0; for (int i = 0; i < 10; i++) { if (i == 3) continue; if (i == 6) break; s += float(i); }",
                      "s == 12.0"));  // 0+1+2+4+5
    EXPECT_TRUE(holds("int n = 0; while (n < 5) n += 2;", "n == 6"));
    EXPECT_TRUE(holds("int n = 10; do { n++; } while (n < 5);", "n == 11"));
    const auto program = compiled(R"(
        const float half = 0.5;
        float twice(float x) { return 2.0 * x; }
        vec2 swap(vec2 v) { return v.yx; }
        kernel vec4 k() {
            vec2 s = swap(vec2(twice(half), twice(twice(0.25))));
            return vec4(s, 0.0, 1.0) * 0.5;
        })");
    ASSERT_TRUE(program);
    EXPECT_EQ(program->name(), QStringLiteral("k"));
    EXPECT_EQ(run(*program, QRect(0, 0, 1, 1)).pixel(0, 0), qRgba(128, 128, 0, 128));
    // Samplers pass on to functions; file-level variables are shared by them.
    const auto passing = compiled(R"(
        float seen = 0.0;
        vec4 twice(sampler s) { seen = 1.0; return 2.0 * sample(s, samplerCoord(s)); }
        kernel vec4 k(sampler image) { vec4 c = twice(image); return vec4(c.rgb, seen); })");
    QImage pixels(1, 1, QImage::Format_ARGB32_Premultiplied);
    pixels.fill(qRgba(50, 60, 70, 255));
    const runtime::Image one = runtime::Image::fromRaster(pixels);
    EXPECT_EQ(run(*passing, one.extent(), {Vec::splat(0)}, {Sampler(one, {}, Sampler::Filter::Linear, Sampler::Wrap::Transparent)})
                  .pixel(0, 0),
              qRgba(100, 120, 140, 255));
    // Variables start over at each pixel: the count is 1 everywhere.
    const auto counter = compiled("kernel vec4 k() { float n; n += 1.0; return vec4(n); }");
    const QImage image = run(*counter, QRect(0, 0, 3, 1));
    EXPECT_EQ(image.pixel(2, 0), qRgba(255, 255, 255, 255));
}

// Pixels of one block that take different paths: each gets its own result.
TEST(KernelLanguage, PixelsFollowTheirOwnPaths)
{
    const auto program = compiled(R"(
        float firstSquareAbove(float limit) {
            for (int i = 0; i < 100; i++) {
                if (float(i * i) > limit) return float(i);
            }
            return -1.0;
        }
        kernel vec4 k() {
            float x = floor(destCoord().x);
            float n = 0.0;
            for (int i = 0; i < 64; i++) {
                if (float(i) >= x) break;
                if (mod(float(i), 2.0) == 1.0) continue;
                n += 1.0;
            }
            if (x == 5.0) return vec4(1.0, 0.0, 0.0, 1.0);
            float r = x > 20.0 ? firstSquareAbove(x) : 0.0;
            return vec4(n / 255.0, r / 255.0, 0.0, 1.0);
        })");
    ASSERT_TRUE(program);
    const QImage image = run(*program, QRect(0, 0, 70, 1));  // more than two blocks
    for (int x = 0; x < 70; ++x) {
        if (x == 5) {
            EXPECT_EQ(image.pixel(x, 0), qRgb(255, 0, 0));
            continue;
        }
        const int evens = std::min((x + 1) / 2, 32);  // even numbers below x and 64
        int square = 0;
        if (x > 20)
            while (square * square <= x) ++square;
        EXPECT_EQ(image.pixel(x, 0), qRgb(evens, square, 0)) << "x = " << x;
    }
}

TEST(KernelLanguage, BuiltInsMatchTheirDefinitions)
{
    EXPECT_TRUE(holds("float m = mod(-1.0, 3.0);", "m == 2.0"));
    EXPECT_TRUE(holds("vec2 c = clamp(vec2(-1.0, 2.0), 0.0, 1.0);", "c == vec2(0.0, 1.0)"));
    EXPECT_TRUE(holds("float s = smoothstep(0.0, 2.0, 1.0);", "s == 0.5"));
    EXPECT_TRUE(holds("vec2 c = compare(vec2(-1.0, 1.0), vec2(5.0), vec2(7.0));", "c == vec2(5.0, 7.0)"));
    EXPECT_TRUE(holds("float l = length(vec2(3.0, 4.0)); float d = dot(vec3(1.0, 2.0, 3.0), vec3(1.0));", "l == 5.0 && d == 6.0"));
    EXPECT_TRUE(holds("float a = degrees(atan(1.0, 1.0));", "abs(a - 45.0) < 0.001"));
    EXPECT_TRUE(holds("vec2 sc = sincos(0.0); vec2 cs = cossin(0.0);", "sc == vec2(0.0, 1.0) && cs == vec2(1.0, 0.0)"));
    EXPECT_TRUE(holds("vec4 p = premultiply(vec4(1.0, 0.5, 0.0, 0.5)); vec4 u = unpremultiply(p);",
                      "p == vec4(0.5, 0.25, 0.0, 0.5) && u == vec4(1.0, 0.5, 0.0, 0.5)"));
    EXPECT_TRUE(holds("vec3 c = cross(vec3(1.0, 0.0, 0.0), vec3(0.0, 1.0, 0.0));", "c == vec3(0.0, 0.0, 1.0)"));
    EXPECT_TRUE(holds("float s = step(0.5, 0.4) + step(0.5, 0.6); vec2 m = mix(vec2(0.0), vec2(4.0, 8.0), 0.25);",
                      "s == 1.0 && m == vec2(1.0, 2.0)"));
}

TEST(KernelLanguage, DestinationCoordinatesArePixelCentresInImageSpace)
{
    // Red is x / 10, green is y / 10 (image space, y up).
    const auto program = compiled("kernel vec4 k() { vec2 p = destCoord(); return vec4(p.x / 10.0, p.y / 10.0, 0.0, 1.0); }");
    const QImage image = run(*program, QRect(2, 5, 2, 3));
    EXPECT_EQ(qRed(image.pixel(0, 0)), 64);    // x = 2.5
    EXPECT_EQ(qGreen(image.pixel(0, 0)), 191);  // top row: y = 7.5
    EXPECT_EQ(qGreen(image.pixel(0, 2)), 140);  // bottom row: y = 5.5
    EXPECT_EQ(qRed(image.pixel(1, 0)), 89);     // x = 3.5
}

TEST(KernelLanguage, LargeRegionsSplitIntoBandsLoseNoRow)
{
    const auto program = compiled(
        "kernel vec4 k() { vec2 p = floor(destCoord()); return vec4(mod(p.x, 256.0) / 255.0, mod(p.y, 256.0) / 255.0, 0.0, 1.0); }");
    const QRect region(-10, 3, 400, 300);  // large enough for a band per core
    const QImage image = run(*program, region);
    int wrong = 0;
    for (int row = 0; row < region.height(); ++row)
        for (int column = 0; column < region.width(); ++column) {
            const int x = region.x() + column, y = region.y() + region.height() - 1 - row;
            wrong += image.pixel(column, row) != qRgb((x + 256) % 256, y % 256, 0);
        }
    EXPECT_EQ(wrong, 0);
}

TEST(KernelLanguage, ResultsStayValidPremultipliedPixels)
{
    const auto program = compiled("kernel vec4 k(float x) { return vec4(x, 2.0, -1.0, 0.5); }");
    EXPECT_EQ(run(*program, QRect(0, 0, 1, 1), {Vec::splat(0.25f)}).pixel(0, 0), qRgba(64, 128, 0, 128));
    EXPECT_EQ(run(*program, QRect(0, 0, 1, 1), {Vec::splat(std::nanf(""))}).pixel(0, 0), qRgba(0, 128, 0, 128));
}

TEST(KernelLanguage, ParametersComeInDeclarationOrder)
{
    const auto program = compiled("kernel vec4 k(sampler image, __color tint, vec2 centre, float amount) { return tint; }");
    ASSERT_TRUE(program);
    const auto& p = program->parameters();
    ASSERT_EQ(p.size(), 4u);
    EXPECT_EQ(p[0].name, QStringLiteral("image"));
    EXPECT_EQ(p[0].type, runtime::kernel::Type::Sampler);
    EXPECT_TRUE(p[1].isColor);
    EXPECT_EQ(p[2].type, runtime::kernel::Type::Vec2);
    EXPECT_EQ(p[3].name, QStringLiteral("amount"));
}

TEST(KernelLanguage, BadSourcesFailWithTheLine)
{
    EXPECT_EQ(compileError("kernel vec4 k() {\n  return vec4(1.0)\n}"), QStringLiteral("line 3: expected ';' before '}'"));
    EXPECT_TRUE(compileError("kernel vec4 k() {\n\n float x = y; return vec4(x); }").startsWith("line 3: 'y' is not declared"));
    EXPECT_TRUE(compileError("kernel vec4 k() { return vec4(foo(1.0)); }").contains("unknown function 'foo'"));
    EXPECT_TRUE(compileError("kernel vec4 k() { vec2 a = vec2(1.0); vec3 b = vec3(1.0); return vec4(a + b, 1.0); }")
                    .contains("cannot combine a vec2 and a vec3"));
    EXPECT_TRUE(compileError("kernel vec4 k() { const float a = 1.0; a = 2.0; return vec4(a); }").contains("constant"));
    EXPECT_TRUE(compileError("kernel vec4 k() { break; return vec4(1.0); }").contains("outside a loop"));
    EXPECT_TRUE(compileError("kernel vec4 k() { float x = 1.0; return x.xyzw; }").contains("does not fit"));
    EXPECT_TRUE(compileError("kernel vec4 k() { mat3 m; return vec4(1.0); }").contains("'mat3' is not supported"));
    EXPECT_TRUE(compileError("kernel vec4 k() { return vec4(1.0, 2.0); }").contains("needs 4 values"));
    EXPECT_TRUE(compileError("kernel vec4 k(sampler s) { return sample(s, 1.0); }").contains("expects a vec2"));
    EXPECT_TRUE(compileError("kernel float k() { return 1.0; }").contains("returns a vec4"));
    EXPECT_TRUE(compileError("float f(float x) { return x; }").contains("no kernel function"));
    EXPECT_TRUE(compileError("kernel vec4 k() { return vec4(1.0); /* open").contains("unterminated comment"));
    EXPECT_TRUE(compileError("#define X 1\nkernel vec4 k() { return vec4(1.0); }").contains("preprocessor"));
    EXPECT_TRUE(compileError("").contains("no kernel function"));
    // Absurd nesting is an error, not a stack overflow.
    EXPECT_TRUE(compileError("kernel vec4 k() { return vec4(" + QString(5000, '(') + "1.0" + QString(5000, ')') + "); }")
                    .contains("nesting too deep"));
    // Every node holds a block of values: an endless source is refused.
    EXPECT_EQ(compileError("kernel vec4 k() { float x = 0.0" + QString(" + 1.0").repeated(20000) + "; return vec4(x); }"),
              QStringLiteral("the kernel is too long"));
}

TEST(KernelLanguage, EndlessLoopsAreStopped)
{
    const auto program = compiled("kernel vec4 k() { float x = 0.0; for (;;) { x += 1.0; } return vec4(x); }");
    bool finished = true;
    run(*program, QRect(0, 0, 4, 4), {}, {}, &finished);
    EXPECT_FALSE(finished);
    // A loop within the budget runs to its end.
    const auto bounded = compiled("kernel vec4 k() { float x = 0.0; for (int i = 0; i < 1000; i++) x += 0.001; return vec4(x); }");
    run(*bounded, QRect(0, 0, 4, 4), {}, {}, &finished);
    EXPECT_TRUE(finished);
}

}  // namespace
