// The GLSL Shader patch without OpenGL: uniforms read from the sources
// become ports, glslang's errors become problems (and `qtz check` lines),
// and on the raster backend the children draw unshaded. What the program
// draws is checked on OpenGL (gl/GlslShaderTest.cpp).

#include "CompositionBuilder.h"

#include "../support/CliRunner.h"
#include "plist/PropertyList.h"
#include "runtime/GlslDeclarations.h"
#include "runtime/GlslValidator.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using test::Node;

namespace {

const char* const kVertex = "void main()\n{\n    gl_FrontColor = gl_Color;\n    gl_Position = ftransform();\n}\n";

Node shader(const std::string& key, const std::string& vertex, const std::string& fragment)
{
    Node n("QCGLSLShader", key);
    n.state("vertexShader", vertex).state("fragmentShader", fragment);
    return n;
}

Node redSprite()
{
    Node n("QCSprite", "Sprite_1");
    n.input("inputColor", test::colorValue(1, 0, 0)).input("inputWidth", 1.0).input("inputHeight", 1.0);
    return n;
}

TEST(GlslDeclarations, UniformsOfPortTypesInOrderOfDeclaration)
{
    const QString vertex = QStringLiteral(
        "uniform float amount; // uniform vec3 commented;\n"
        "/* uniform float alsoCommented; */ uniform highp vec2 offset, scale;\n"
        "uniform mat4 matrix; uniform float weights[4]; uniform vec4 tint;\n");
    const QString fragment = QStringLiteral("uniform sampler2D texture; uniform int count;\nuniform bool on; uniform float amount;\n"
                                            "uniform vec3 gl_Reserved;\nuniform vec3 direction = vec3(1.0, 0.0, b), up;\n");
    const auto uniforms = runtime::declaredUniforms({vertex, fragment});
    std::vector<std::pair<QString, runtime::UniformKind>> got;
    for (const auto& u : uniforms) got.emplace_back(u.name, u.kind);
    using K = runtime::UniformKind;
    const std::vector<std::pair<QString, K>> expected{{"amount", K::Float}, {"offset", K::Vec2}, {"scale", K::Vec2},
                                                      {"tint", K::Vec4},    {"texture", K::Sampler}, {"count", K::Int},
                                                      {"on", K::Bool},      {"direction", K::Vec3}, {"up", K::Vec3}};
    EXPECT_EQ(got, expected);
}

TEST(GlslDeclarations, CommentsKeepLineNumbers)
{
    const QString code = runtime::withoutComments(QStringLiteral("a /* x\ny */ b // z\nc"));
    EXPECT_EQ(code.count(u'\n'), 2);
    EXPECT_FALSE(code.contains(u'x'));
    EXPECT_FALSE(code.contains(u'z'));
    EXPECT_TRUE(code.endsWith(u'c'));
    // An unclosed comment runs to the end without reading past it.
    EXPECT_EQ(runtime::withoutComments(QStringLiteral("a /* open")).trimmed(), QStringLiteral("a"));
}

TEST(GlslValidator, AcceptsFixedFunctionBuiltInsWithoutAVersion)
{
    // What Quartz Composer's files are written against: GLSL 1.10/1.20 with
    // the compatibility profile's built-ins.
    EXPECT_TRUE(runtime::glslErrors(QString::fromLatin1(kVertex), runtime::ShaderStage::Vertex).isEmpty());
    EXPECT_TRUE(runtime::glslErrors(QStringLiteral("varying vec3 n;\nvoid main() { n = gl_NormalMatrix * gl_Normal;\n"
                                                   "gl_TexCoord[0] = gl_MultiTexCoord0; gl_Position = gl_ModelViewProjectionMatrix * gl_Vertex; }"),
                                    runtime::ShaderStage::Vertex)
                    .isEmpty());
    EXPECT_TRUE(runtime::glslErrors(QStringLiteral("#version 120\nuniform sampler2D t;\n"
                                                   "void main() { gl_FragColor = texture2D(t, gl_TexCoord[0].xy) * gl_Color; }"),
                                    runtime::ShaderStage::Fragment)
                    .isEmpty());
}

TEST(GlslValidator, ErrorsNameTheirLine)
{
    const QStringList errors = runtime::glslErrors(QStringLiteral("void main()\n{\n    gl_FragColor = vec4(1.0) + missing;\n}\n"),
                                                   runtime::ShaderStage::Fragment);
    ASSERT_EQ(errors.size(), 1) << errors.join('\n').toStdString();
    EXPECT_TRUE(errors[0].startsWith("line 3: 'missing'")) << errors[0].toStdString();
    // A vertex-only built-in in a fragment shader is an error too.
    EXPECT_FALSE(runtime::glslErrors(QStringLiteral("void main() { gl_Position = ftransform(); }"),
                                     runtime::ShaderStage::Fragment)
                     .isEmpty());
    // Garbage and a stage without main() give errors, never a crash.
    EXPECT_FALSE(runtime::glslErrors(QStringLiteral("\x01\x02 }}}{{ uniform"), runtime::ShaderStage::Vertex).isEmpty());
    const QStringList noMain = runtime::glslErrors(QStringLiteral("uniform float x;"), runtime::ShaderStage::Vertex);
    ASSERT_FALSE(noMain.isEmpty());
    EXPECT_TRUE(noMain[0].contains("entry point")) << noMain[0].toStdString();
}

TEST(GlslShaderPatch, UniformsBecomeTypedPorts)
{
    Node r = test::root();
    r.child(shader("GLSLShader_1", kVertex,
                   "uniform float gain; uniform vec2 shift; uniform vec4 tint; uniform sampler2D pattern;\n"
                   "uniform int steps; uniform bool invert;\n"
                   "void main() { gl_FragColor = gl_Color * tint * gain; }\n")
                .input("gain", 0.25));
    auto c = test::load(r);
    ASSERT_TRUE(c);
    runtime::Renderer renderer(c, QSize(8, 8));
    EXPECT_DOUBLE_EQ(renderer.nodeInputValue("GLSLShader_1", "gain").toDouble(), 0.25);  // stored value
    EXPECT_EQ(renderer.nodeInputValue("GLSLShader_1", "shift_X").typeId(), QMetaType::Double);
    EXPECT_EQ(renderer.nodeInputValue("GLSLShader_1", "shift_Y").typeId(), QMetaType::Double);
    EXPECT_FALSE(renderer.nodeInputValue("GLSLShader_1", "shift_Z").isValid());
    EXPECT_EQ(renderer.nodeInputValue("GLSLShader_1", "tint").typeId(), QMetaType::QColor);
    EXPECT_TRUE(renderer.setNodeInputValue("GLSLShader_1", "pattern", QImage(2, 2, QImage::Format_ARGB32)));
    EXPECT_EQ(renderer.nodeInputValue("GLSLShader_1", "invert").typeId(), QMetaType::Bool);
    EXPECT_TRUE(renderer.setNodeInputValue("GLSLShader_1", "steps", 3));
}

TEST(GlslShaderPatch, CompileErrorsAreProblemsWithTheNodePath)
{
    Node inner = shader("GLSLShader_1", kVertex, "void main()\n{\n    gl_FragColor = undeclared;\n}\n");
    Node macro("QCPatch", "Patch_1");
    macro.child(inner).child(shader("GLSLShader_2", "void main() { gl_Position = ftransform() }", ""));
    Node r = test::root();
    r.child(macro);
    auto c = test::load(r);
    ASSERT_TRUE(c);
    const QString problems = test::problemsText(*c);
    EXPECT_TRUE(problems.contains("Patch_1/GLSLShader_1: the fragment shader does not compile: line 3: 'undeclared'"))
        << problems.toStdString();
    EXPECT_TRUE(problems.contains("Patch_1/GLSLShader_2: the vertex shader does not compile: line 1:")) << problems.toStdString();
    EXPECT_FALSE(problems.contains("GLSLShader_1: the vertex shader")) << problems.toStdString();
    // The raster backend's limit is said once, not per shader.
    EXPECT_EQ(problems.count("draw on the OpenGL backend only"), 1) << problems.toStdString();
}

TEST(GlslShaderPatch, ChildrenDrawUnshadedOnTheRasterBackend)
{
    // The program would paint everything green; without OpenGL the sprite
    // keeps its own colour, as it does when a program does not compile.
    for (const char* fragment : {"void main() { gl_FragColor = vec4(0.0, 1.0, 0.0, 1.0); }", "void main() { broken"}) {
        Node s = shader("GLSLShader_1", kVertex, fragment);
        s.child(redSprite());
        Node r = test::root();
        r.child(Node("QCClear", "Clear_1").input("inputColor", test::colorValue(0, 0, 0))).child(s);
        runtime::Renderer renderer(test::load(r), QSize(32, 24), runtime::BackendPreference::Raster);
        renderer.render(0);
        const QImage image = renderer.snapshot();
        EXPECT_EQ(image.pixel(16, 12), qRgb(255, 0, 0)) << fragment;
        EXPECT_EQ(image.pixel(1, 1), qRgb(0, 0, 0)) << fragment;
    }
}

TEST(GlslShaderPatch, QtzCheckListsCompileErrors)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    Node r = test::root();
    r.child(shader("GLSLShader_1", kVertex, "void main()\n{\n  gl_FragColor = 2.0 * nothing;\n}\n"));
    const auto bytes = plist::writeBinary(test::document(r));
    ASSERT_TRUE(bytes);
    const QString file = dir.filePath("broken.qtz");
    QFile f(file);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write(bytes->data(), qint64(bytes->size()));
    f.close();
    const CliResult run = runCli({"qtz", "check", file});
    ASSERT_EQ(run.code, 0) << run.err.toStdString();
    const QJsonObject report = QJsonDocument::fromJson(run.out.toUtf8()).object();
    EXPECT_TRUE(report["unsupported"].toArray().isEmpty());
    QStringList compileErrors;
    for (const auto& line : report["problems"].toArray())
        if (line.toString().contains("does not compile")) compileErrors << line.toString();
    // The undeclared name, then what follows from it on the same line.
    ASSERT_GE(compileErrors.size(), 1) << run.out.toStdString();
    EXPECT_TRUE(compileErrors[0].startsWith("GLSLShader_1: the fragment shader does not compile: line 3: 'nothing'"))
        << compileErrors[0].toStdString();
    for (const QString& line : compileErrors) EXPECT_TRUE(line.contains(": line 3: ")) << line.toStdString();
}

TEST(GlslShaderPatch, TheCorpusShaderCompilesCleanly)
{
    const QString file = QStringLiteral(VELLORAN_CORPUS_DIR "/kineme_GLTools_GLTools-scissor.qtz");
    if (!QFile::exists(file)) GTEST_SKIP() << "corpus file missing: " << file.toStdString();
    const CliResult run = runCli({"qtz", "check", file});
    ASSERT_EQ(run.code, 0) << run.err.toStdString();
    const QJsonObject report = QJsonDocument::fromJson(run.out.toUtf8()).object();
    const QJsonArray unsupported = report["unsupported"].toArray();
    EXPECT_FALSE(unsupported.contains(QJsonValue("QCGLSLShader")));
    EXPECT_FALSE(unsupported.contains(QJsonValue("QCTeapot")));
    EXPECT_TRUE(unsupported.contains(QJsonValue("KinemeGLScissorPatch")));  // third party
    for (const auto& line : report["problems"].toArray())
        EXPECT_FALSE(line.toString().contains("does not compile")) << line.toString().toStdString();
}

}  // namespace
