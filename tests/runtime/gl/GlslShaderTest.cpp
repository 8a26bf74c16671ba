// The GLSL Shader patch on OpenGL: its program draws the children's quads
// and meshes with the fixed-function state the built-ins read, its
// uniforms follow the ports, and a program that does not compile leaves
// the children unshaded with a problem listed.

#include "../CompositionBuilder.h"

#include "runtime/gl/GlProgramCheck.h"

#include <QFile>

#include <gtest/gtest.h>

using test::Node;

namespace {

constexpr QSize kSize(128, 96);  // 64 pixels per unit

const char* const kPassThrough = "void main()\n{\n    gl_FrontColor = gl_Color;\n    gl_TexCoord[0] = gl_MultiTexCoord0;\n"
                                 "    gl_Position = ftransform();\n}\n";

Node shader(const std::string& vertex, const std::string& fragment)
{
    Node n("QCGLSLShader", "GLSLShader_1");
    n.state("vertexShader", vertex).state("fragmentShader", fragment);
    return n;
}

Node sprite(double r, double g, double b)
{
    Node n("QCSprite", "Sprite_1");
    n.input("inputColor", test::colorValue(r, g, b)).input("inputWidth", 1.0).input("inputHeight", 1.0);
    return n;
}

Node clearBlack()
{
    return Node("QCClear", "Clear_1").input("inputColor", test::colorValue(0, 0, 0));
}

QImage draw(const Node& root, const std::function<void(runtime::Renderer&)>& setup = {})
{
    runtime::Renderer renderer(test::load(root), kSize);
    if (renderer.backendKind() != runtime::BackendKind::OpenGL) ADD_FAILURE() << "not drawing with OpenGL";
    if (setup) setup(renderer);
    renderer.render(0);
    return renderer.snapshot().convertToFormat(QImage::Format_ARGB32);
}

int columnsCovered(const QImage& image, int y)
{
    int n = 0;
    for (int x = 0; x < image.width(); ++x) n += qGray(image.pixel(x, y)) > 0;
    return n;
}

bool near(QRgb actual, QRgb expected, int tolerance = 3)
{
    return std::abs(qRed(actual) - qRed(expected)) <= tolerance && std::abs(qGreen(actual) - qGreen(expected)) <= tolerance &&
           std::abs(qBlue(actual) - qBlue(expected)) <= tolerance && std::abs(qAlpha(actual) - qAlpha(expected)) <= tolerance;
}

TEST(GlslShaderOnOpenGL, AProgramTintsItsChildren)
{
    Node s = shader(kPassThrough, "void main() { gl_FragColor = gl_Color * vec4(0.5, 1.0, 0.25, 1.0); }");
    s.child(sprite(1, 1, 1));
    Node r = test::root();
    r.child(clearBlack()).child(s).child(sprite(0, 0, 1).input("inputX", 0.8).input("inputWidth", 0.2));
    const QImage image = draw(r);
    EXPECT_TRUE(near(image.pixel(64, 48), qRgb(128, 255, 64))) << std::hex << image.pixel(64, 48);
    // ftransform() places it where the fixed pipeline would: 1 unit = 64 px.
    EXPECT_NEAR(columnsCovered(image, 30), 64 + 13, 2);
    EXPECT_EQ(image.pixel(2, 48), qRgb(0, 0, 0));
    // Outside the patch the sprite draws as before.
    EXPECT_TRUE(near(image.pixel(115, 48), qRgb(0, 0, 255))) << std::hex << image.pixel(115, 48);
}

TEST(GlslShaderOnOpenGL, UniformPortsAndSamplersReachTheProgram)
{
    Node s = shader(kPassThrough, "uniform vec4 tint;\nuniform float gain;\nuniform vec2 shift;\nuniform sampler2D pattern;\n"
                                  "void main() { gl_FragColor = texture2D(pattern, gl_TexCoord[0].xy + shift) * tint * gain; }\n");
    s.input("gain", 1.0).input("tint", test::colorValue(1, 0.5, 1)).child(sprite(1, 1, 1));
    Node r = test::root();
    r.child(clearBlack()).child(s);
    QImage pattern(2, 1, QImage::Format_ARGB32);
    pattern.setPixel(0, 0, qRgb(255, 0, 0));
    pattern.setPixel(1, 0, qRgb(0, 255, 255));
    const QImage image = draw(r, [&](runtime::Renderer& renderer) {
        ASSERT_TRUE(renderer.setNodeInputValue("GLSLShader_1", "pattern", pattern));
    });
    EXPECT_TRUE(near(image.pixel(64 - 24, 48), qRgb(255, 0, 0))) << std::hex << image.pixel(40, 48);
    EXPECT_TRUE(near(image.pixel(64 + 24, 48), qRgb(0, 128, 255))) << std::hex << image.pixel(88, 48);

    // A new value of a port is the uniform's next frame; the vec2 moves
    // the lookup (the image's edge is clamped). Programs write straight
    // alpha: half of the colour over the black.
    runtime::Renderer renderer(test::load(r), kSize);
    ASSERT_TRUE(renderer.setNodeInputValue("GLSLShader_1", "pattern", pattern));
    ASSERT_TRUE(renderer.setNodeInputValue("GLSLShader_1", "shift_X", 0.75));
    ASSERT_TRUE(renderer.setNodeInputValue("GLSLShader_1", "gain", 0.5));
    renderer.render(0);
    const QImage shifted = renderer.snapshot().convertToFormat(QImage::Format_ARGB32);
    EXPECT_TRUE(near(shifted.pixel(64 - 24, 48), qRgb(0, 32, 64))) << std::hex << shifted.pixel(40, 48);
}

TEST(GlslShaderOnOpenGL, MeshesFeedTheirNormals)
{
    // Normals in eye space as colours: the teapot's front faces the eye.
    Node s = shader("varying vec3 n;\nvoid main() { n = gl_NormalMatrix * gl_Normal; gl_Position = ftransform(); }\n",
                    "varying vec3 n;\nvoid main() { gl_FragColor = vec4(normalize(n) * 0.5 + 0.5, 1.0); }\n");
    Node teapot("QCTeapot", "Teapot_1");
    teapot.input("inputScale", 1.5);
    s.child(teapot);
    Node r = test::root();
    r.child(clearBlack()).child(s);
    const QImage image = draw(r);
    const QRgb front = image.pixel(64, 48);
    EXPECT_GT(qBlue(front), 230);
    EXPECT_NEAR(qRed(front), 128, 12);
    // The body narrows towards the lid there: its normal tilts up (+y).
    EXPECT_GT(qGreen(front), 140);
    EXPECT_LT(qGreen(front), 210);
    // Right of the centre the normal turns right (+x): more red.
    EXPECT_GT(qRed(image.pixel(64 + 20, 48)), qRed(front) + 40);
}

TEST(GlslShaderOnOpenGL, LightsAndFogReachTheBuiltIns)
{
    // Programs read the Lighting and Fog patches around them as OpenGL's
    // fixed-function state: the light's colour left, the fog's right.
    Node s = shader(kPassThrough, "void main() { gl_FragColor = gl_TexCoord[0].x < 0.5 ? vec4(gl_LightSource[0].diffuse.rgb, 1.0)"
                                  " : vec4(gl_Fog.color.rgb, 1.0); }");
    s.child(sprite(1, 1, 1));
    Node fog("QCFog", "Fog_1");
    fog.input("inputColor", test::colorValue(0, 0.5, 1)).child(s);
    Node lighting("QCLighting", "Lighting_1");
    lighting.state("lightCount", 1).input("color_1", test::colorValue(1, 0.5, 0)).child(fog);
    Node r = test::root();
    r.child(clearBlack()).child(lighting);
    const QImage image = draw(r);
    EXPECT_TRUE(near(image.pixel(64 - 16, 48), qRgb(255, 128, 0))) << std::hex << image.pixel(48, 48);
    EXPECT_TRUE(near(image.pixel(64 + 16, 48), qRgb(0, 128, 255))) << std::hex << image.pixel(80, 48);
}

TEST(GlslShaderOnOpenGL, ABrokenProgramLeavesItsChildrenUnshaded)
{
    Node s = shader(kPassThrough, "void main() { gl_FragColor = vec4(0.0, 1.0, 0.0, 1.0) * undefinedThing; }");
    s.child(sprite(1, 0, 0));
    Node r = test::root();
    r.child(clearBlack()).child(s);
    auto composition = test::load(r);
    ASSERT_TRUE(composition);
    EXPECT_TRUE(test::problemsText(*composition).contains("GLSLShader_1: the fragment shader does not compile: line 1:"));
    const QImage image = draw(r);
    EXPECT_TRUE(near(image.pixel(64, 48), qRgb(255, 0, 0))) << std::hex << image.pixel(64, 48);
    EXPECT_EQ(image.pixel(2, 2), qRgb(0, 0, 0));
}

TEST(GlslShaderOnOpenGL, TheDriverReportsWhatDoesNotCompile)
{
    Node broken = shader(kPassThrough, "void main()\n{\n    gl_FragColor = vec4(1.0) * undefinedThing;\n}\n");
    Node fine = shader(kPassThrough, "void main() { gl_FragColor = gl_Color; }");
    Node macro("QCPatch", "Patch_1");
    macro.child(broken);
    Node r = test::root();
    r.child(macro).child(fine);
    auto composition = test::load(r);
    ASSERT_TRUE(composition);
    const auto problems = runtime::programProblemsFromDriver(*composition);
    ASSERT_TRUE(problems.has_value());
    ASSERT_FALSE(problems->isEmpty());
    for (const QString& line : *problems) {
        EXPECT_TRUE(line.startsWith("Patch_1/GLSLShader_1: the OpenGL driver does not compile the fragment shader: "))
            << line.toStdString();
        EXPECT_FALSE(line.contains(u'\n'));
    }
    EXPECT_TRUE(problems->join(' ').contains("undefinedThing")) << problems->join('\n').toStdString();
}

TEST(GlslShaderOnOpenGL, TheCorpusFileRendersItsShadedTeapot)
{
    const QString file = QStringLiteral(VELLORAN_CORPUS_DIR "/kineme_GLTools_GLTools-scissor.qtz");
    if (!QFile::exists(file)) GTEST_SKIP() << "corpus file missing: " << file.toStdString();
    QString error;
    auto composition = runtime::Composition::loadFile(file, &error);
    ASSERT_TRUE(composition) << error.toStdString();
    EXPECT_FALSE(composition->unsupportedClasses().contains("QCGLSLShader"));
    EXPECT_FALSE(composition->unsupportedClasses().contains("QCTeapot"));
    const auto driver = runtime::programProblemsFromDriver(*composition);
    ASSERT_TRUE(driver.has_value());
    EXPECT_TRUE(driver->isEmpty()) << driver->join('\n').toStdString();
    runtime::Renderer renderer(composition, QSize(160, 120));
    renderer.render(1.0);
    const QImage image = renderer.snapshot();
    int drawn = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) drawn += qAlpha(image.pixel(x, y)) > 0;
    EXPECT_GT(drawn, 160 * 120 / 20);
}

}  // namespace
