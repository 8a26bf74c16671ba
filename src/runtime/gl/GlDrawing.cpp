#include "runtime/gl/GlDrawing.h"

#include "runtime/Fog.h"

#include <algorithm>
#include <cmath>

namespace runtime {

float unitChannel(double v)
{
    return std::isnan(v) ? 0.0f : float(std::clamp(v, 0.0, 1.0));
}

void setFogUniforms(QOpenGLShaderProgram& program, const Fog* fog)
{
    program.setUniformValue("fogMode", fog ? int(fog->mode) : -1);
    if (!fog) return;
    program.setUniformValue("fogColor", QVector3D(unitChannel(fog->color.red), unitChannel(fog->color.green), unitChannel(fog->color.blue)));
    program.setUniformValue("fogDensity", float(fog->density));
    program.setUniformValue("fogStart", float(fog->start));
    program.setUniformValue("fogEnd", float(fog->end));
}

void applyBlendAndDepth(QOpenGLFunctions& gl, BlendMode blend, bool depthTest)
{
    switch (blend) {
    case BlendMode::Replace: gl.glDisable(GL_BLEND); break;
    case BlendMode::Over:
        gl.glEnable(GL_BLEND);
        gl.glBlendFunc(GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
        break;
    case BlendMode::Add:
        gl.glEnable(GL_BLEND);
        gl.glBlendFunc(GL_ONE, GL_ONE);
        break;
    }
    if (depthTest) {
        gl.glEnable(GL_DEPTH_TEST);
        gl.glDepthFunc(GL_LEQUAL);
        gl.glDepthMask(GL_TRUE);
    } else {
        gl.glDisable(GL_DEPTH_TEST);
    }
}

void drawCorners(QOpenGLShaderProgram& program, QOpenGLFunctions& gl, const std::array<QuadVertex, 4>& corners)
{
    const int position = program.attributeLocation("position"), texCoord = program.attributeLocation("texCoord");
    program.enableAttributeArray(position);
    program.enableAttributeArray(texCoord);
    program.setAttributeArray(position, GL_FLOAT, &corners[0].x, 3, sizeof(QuadVertex));
    program.setAttributeArray(texCoord, GL_FLOAT, &corners[0].s, 2, sizeof(QuadVertex));
    gl.glDrawArrays(GL_TRIANGLE_FAN, 0, 4);
    program.disableAttributeArray(position);
    program.disableAttributeArray(texCoord);
}

}  // namespace runtime
