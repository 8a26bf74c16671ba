// Golden images of the teapot, fog, projection and (on OpenGL) GLSL
// programs. Built into the raster test binary and the OpenGL one; since the
// backends shade meshes differently by design (flat per triangle against
// per pixel), each keeps its own pictures: tests/fixtures/runtime/shaded/
// raster/ and .../opengl/. Rewrite them with VELLORAN_UPDATE_GOLDENS=1 (run
// each binary) and look at them.

#include "CompositionBuilder.h"
#include "GoldenCompare.h"

#include <QDir>
#include <QFileInfo>

#include <gtest/gtest.h>

using test::Node;

namespace {

constexpr QSize kSize(96, 72);  // 48 pixels per unit

#ifdef VELLORAN_GOLDENS_ON_OPENGL
const char* const kBackend = "opengl";
#else
const char* const kBackend = "raster";
#endif

QImage render(const Node& root, const std::function<void(runtime::Renderer&)>& setup = {})
{
    runtime::Renderer renderer(test::load(root), kSize);
    if (setup) setup(renderer);
    renderer.render(0);
    return renderer.snapshot().convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

// Fails when more than 1% of the pixels differ by more than 8 in a channel.
void expectMatchesGolden(const QImage& actual, const QString& name)
{
    const QString path = QStringLiteral(VELLORAN_RUNTIME_FIXTURES "/shaded/%1/%2.png").arg(QLatin1String(kBackend), name);
    const QImage golden = test::goldenOrUpdate(path, actual);
    if (golden.isNull()) return;
    ASSERT_EQ(golden.size(), actual.size());
    const int bad = test::differingPixels(actual, golden, 8, [](int, int, int) { return false; });
    EXPECT_LE(bad, actual.width() * actual.height() / 100) << name.toStdString() << ": " << bad << " pixels differ";
}

Node clear()
{
    return Node("QCClear", "Clear_1").input("inputColor", test::colorValue(0.1, 0.1, 0.2));
}

Node teapot()
{
    Node n("QCTeapot", "Teapot_1");
    n.input("inputScale", 1.6).input("inputRX", 20.0).input("inputRY", -30.0).input("inputColor", test::colorValue(1, 0.8, 0.4));
    return n;
}

TEST(ShadedGolden, TeapotUnlit)
{
    Node r = test::root();
    r.child(clear()).child(teapot());
    expectMatchesGolden(render(r), QStringLiteral("teapot-unlit"));
}

TEST(ShadedGolden, TeapotLit)
{
    Node lighting("QCLighting", "Lighting_1");
    lighting.state("lightCount", 1).input("positionX_1", -1.0).input("positionY_1", 1.0).input("positionZ_1", 1.0).child(teapot());
    Node r = test::root();
    r.child(clear()).child(lighting);
    expectMatchesGolden(render(r), QStringLiteral("teapot-lit"));
}

TEST(ShadedGolden, FogOverARowOfSpheres)
{
    Node fog("QCFog", "Fog_1");
    fog.input("inputType", 0).input("inputStart", 1.2).input("inputEnd", 3.5).input("inputColor", test::colorValue(0.1, 0.1, 0.2));
    for (int i = 0; i < 4; ++i) {
        Node sphere("QCSphere", "Sphere_" + std::to_string(i + 1));
        sphere.input("inputScale", 0.4).input("inputX", -0.6 + 0.4 * i).input("inputZ", 0.3 - 0.6 * i);
        sphere.input("inputColor", test::colorValue(1, 0.6, 0.2));
        fog.child(sphere);
    }
    Node r = test::root();
    r.child(clear()).child(fog);
    expectMatchesGolden(render(r), QStringLiteral("fog"));
}

TEST(ShadedGolden, ProjectionWidensThePerspective)
{
    Node cube("QCCube", "Cube_1");
    cube.input("inputRX", 25.0).input("inputRY", 35.0).input("inputCulling", 1);
    cube.input("inputWidth", 0.6).input("inputHeight", 0.6).input("inputDepth", 0.6);
    cube.input("inputColorFront", test::colorValue(1, 0, 0)).input("inputColorRight", test::colorValue(0, 1, 0));
    cube.input("inputColorTop", test::colorValue(0, 0, 1)).input("inputColorLeft", test::colorValue(1, 1, 0));
    Node projection("QCProjection", "Projection_1");
    projection.input("inputFieldOfView", 90.0).child(cube);  // the eye 1 unit away
    Node r = test::root();
    r.child(clear()).child(projection);
    expectMatchesGolden(render(r), QStringLiteral("projection"));
}

#ifdef VELLORAN_GOLDENS_ON_OPENGL

const char* const kPassThrough = "void main()\n{\n    gl_FrontColor = gl_Color;\n    gl_TexCoord[0] = gl_MultiTexCoord0;\n"
                                 "    gl_Position = ftransform();\n}\n";

Node shaded(const std::string& fragment, const Node& child)
{
    Node n("QCGLSLShader", "GLSLShader_1");
    n.state("vertexShader", kPassThrough).state("fragmentShader", fragment).child(child);
    return n;
}

Node sprite()
{
    Node n("QCSprite", "Sprite_1");
    n.input("inputWidth", 1.2).input("inputHeight", 1.0).input("inputRZ", 15.0).input("inputColor", test::colorValue(0.9, 0.9, 0.9));
    return n;
}

TEST(ShadedGolden, ShaderTints)
{
    Node r = test::root();
    r.child(clear()).child(shaded("void main() { gl_FragColor = gl_Color * vec4(1.0, 0.4, 0.2, 1.0); }", sprite()));
    expectMatchesGolden(render(r), QStringLiteral("shader-tint"));
}

TEST(ShadedGolden, ShaderWithAUniformAndASampler)
{
    Node s = shaded("uniform sampler2D stripes; uniform float mixing;\n"
                    "void main() { vec4 t = texture2D(stripes, gl_TexCoord[0].xy);\n"
                    "  gl_FragColor = mix(gl_Color, t, mixing); }\n",
                    sprite());
    s.input("mixing", 0.75);
    Node r = test::root();
    r.child(clear()).child(s);
    QImage stripes(64, 64, QImage::Format_ARGB32);
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 64; ++x) stripes.setPixel(x, y, (x / 16 + y / 16) % 2 ? qRgb(0, 128, 255) : qRgb(255, 255, 0));
    expectMatchesGolden(render(r, [&](runtime::Renderer& renderer) { renderer.setNodeInputValue("GLSLShader_1", "stripes", stripes); }),
                        QStringLiteral("shader-uniform-sampler"));
}

TEST(ShadedGolden, BrokenShaderDrawsUnshaded)
{
    Node r = test::root();
    r.child(clear()).child(shaded("void main() { gl_FragColor = nope; }", sprite()));
    expectMatchesGolden(render(r), QStringLiteral("shader-broken"));
}

TEST(ShadedGolden, ShadedTeapot)
{
    // The corpus's "x-ray" kind of program: alpha from the angle to the eye.
    Node s("QCGLSLShader", "GLSLShader_1");
    s.state("vertexShader", "varying vec3 n;\nvoid main() { n = normalize(gl_NormalMatrix * gl_Normal); gl_FrontColor = gl_Color;\n"
                            "  gl_Position = ftransform(); }\n")
        .state("fragmentShader", "varying vec3 n;\nvoid main() { float a = 1.0 - abs(normalize(n).z);\n"
                                 "  gl_FragColor = vec4(gl_Color.rgb, a); }\n")
        .child(teapot().input("inputBlending", 1).input("inputZBuffer", 0));
    Node r = test::root();
    r.child(clear()).child(s);
    expectMatchesGolden(render(r), QStringLiteral("shader-teapot"));
}

#endif

}  // namespace
