#pragma once
// One offscreen OpenGL context per thread, shared by that thread's OpenGL
// backends: a compatibility-profile context (files' GLSL may use the
// fixed-function built-ins) on an offscreen surface. Made on first use;
// null where no context can be made (no display, no driver), in which case
// callers fall back to the raster backend.

#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QOpenGLFunctions_2_1>
#include <QOpenGLShaderProgram>
#include <QString>

#include <memory>

namespace runtime {

class GlContext {
public:
    // The calling thread's context, or null with the reason in `why`.
    static std::shared_ptr<GlContext> forThisThread(QString* why = nullptr);
    ~GlContext();
    GlContext(const GlContext&) = delete;
    GlContext& operator=(const GlContext&) = delete;

    bool makeCurrent();
    QOpenGLFunctions& functions() { return *context_.functions(); }
    // The fixed-function calls files' GLSL programs read their built-ins
    // from (matrices, colour, arrays); null if the driver lacks them.
    QOpenGLFunctions_2_1* legacyFunctions() { return legacy_; }
    QOpenGLContext& context() { return context_; }
    QString rendererName();  // "llvmpipe (LLVM 15.0.6, 256 bits)", for the log

    // The program every quad is drawn with (see GlTarget.cpp).
    QOpenGLShaderProgram& quadProgram() { return *quadProgram_; }
    QOpenGLShaderProgram& meshProgram() { return *meshProgram_; }

private:
    GlContext() = default;
    bool create(QString* why);

    QOpenGLContext context_;
    QOffscreenSurface surface_;
    std::unique_ptr<QOpenGLShaderProgram> quadProgram_;
    std::unique_ptr<QOpenGLShaderProgram> meshProgram_;
    QOpenGLFunctions_2_1* legacy_ = nullptr;  // owned by context_
};

}  // namespace runtime
