#pragma once
// The drawing interface patches render through. The raster backend
// implements it with QPainter, the OpenGL backend (gl/GlBackend.h) with
// framebuffer objects; BackendFactory.h chooses between them.
//
// Geometry is in Quartz Composer units: the destination is 2 units wide
// (x in −1…1), 2·h/w units high, origin at the centre, y up, z towards the
// viewer. Quads are drawn in perspective with the eye on the z axis.

#include "runtime/Fog.h"
#include "runtime/Image.h"
#include "runtime/ShaderProgram.h"
#include "runtime/Value.h"

#include <QMatrix4x4>
#include <QRectF>
#include <QSize>
#include <QVector2D>
#include <QVector3D>
#include <QVector4D>
#include <QTransform>

#include <cmath>
#include <memory>
#include <vector>

namespace runtime {

// Quartz Composer's blending index: 0 Replace, 1 Over, 2 Add. Index 3 seen
// in a few files has no known meaning and draws as Over.
enum class BlendMode : std::uint8_t { Replace, Over, Add };
BlendMode blendModeFromIndex(int index);

// Distance of the eye from the z = 0 plane, in units: a 60° horizontal field
// of view across the 2-unit-wide destination.
inline constexpr double kEyeDistance = 1.7320508075688772;

enum class Culling : std::uint8_t { None, Back, Front };

struct Lighting;

struct QuadDraw {
    QMatrix4x4 transform;  // local units → destination units (3-D)
    QRectF rect;           // the quad in local units (x, y, width, height; y up)
    Image image;           // stretched over the quad; null draws a flat colour
    Image mask;            // optional: its luminance × alpha scales coverage
    Color color = Color::white();  // multiplies the image (or is the flat colour)
    BlendMode blend = BlendMode::Over;
    bool antialias = true;
    // Tested against (and written to) the depth buffer meshes fill, where
    // the backend has one (OpenGL); raster draws in order regardless.
    bool depthTest = false;
    // A layer in the 3-D scene (a Sprite): fogged inside a Fog patch.
    // Billboards face the viewer outside the scene and are not.
    bool fogged = false;
    // The lights around a sprite, for GLSL programs that read them; the
    // backends' own quads are drawn unlit.
    const Lighting* lighting = nullptr;
    // The front is the side the quad's corners turn counter-clockwise on,
    // as with meshes: a quad turned half round about x or y shows its back.
    Culling culling = Culling::None;
};

// Whether the side of the quad the eye sees is the one `quad.culling`
// removes. Both backends decide it here, before drawing, so that they agree.
bool isCulled(const QuadDraw& quad);

// A triangle mesh: every three vertices make a triangle, counter-clockwise
// seen from the front.
struct MeshVertex {
    QVector3D position;
    QVector3D normal;
    QVector2D texCoord;  // t = 0 at the image's top row
};

struct MeshDraw {
    QMatrix4x4 transform;  // local units → destination units
    const std::vector<MeshVertex>* vertices = nullptr;
    // Optional, one per vertex (straight RGBA): multiplies `color`.
    const std::vector<QVector4D>* colors = nullptr;
    Image image;  // over the texture coordinates; null draws a flat colour
    Color color = Color::white();
    BlendMode blend = BlendMode::Over;
    bool depthTest = true;  // against what earlier 3-D draws of the frame left
    Culling culling = Culling::None;
    const Lighting* lighting = nullptr;  // unlit when null
};

// What environment patches (Projection, Fog, GLSL Shader) set on a target
// for everything their children draw into it. Each restores the one it
// found when its children are done; a Render In Image inside starts afresh.
struct DrawEnvironment {
    // Of the eye from the z = 0 plane, in units; infinite (or not
    // positive) is an orthographic view. z = 0 maps one to one either way.
    double eyeDistance = kEyeDistance;
    const Fog* fog = nullptr;                // meshes and fogged quads
    const ShaderProgram* program = nullptr;  // OpenGL only; prepared first
    bool orthographic() const { return !(eyeDistance > 0) || std::isinf(eyeDistance); }
    // What a target has outside every environment patch.
    bool isStandard() const { return eyeDistance == kEyeDistance && !fog && !program; }
    // Depth along the line of sight, as fog measures it; an orthographic
    // view measures from where the standard eye would be.
    double depthOf(const QVector3D& p) const { return (orthographic() ? kEyeDistance : eyeDistance) - double(p.z()); }
};

class RenderTarget {
public:
    virtual ~RenderTarget() = default;
    virtual QSize pixelSize() const = 0;
    virtual void clear(const Color& color) = 0;
    virtual void drawQuad(const QuadDraw& quad) = 0;
    virtual void drawMesh(const MeshDraw& mesh) = 0;
    // The current content as an image value (shares pixels where it can).
    virtual Image snapshot() const = 0;
    // Called when a frame is done: a target drawing over the caller's image
    // elsewhere than in memory writes it back.
    virtual void finish() {}

    const DrawEnvironment& environment() const { return environment_; }
    // Returns the previous environment so that the caller can restore it.
    DrawEnvironment setEnvironment(const DrawEnvironment& environment)
    {
        DrawEnvironment previous = environment_;
        environment_ = environment;
        environmentChanged();
        return previous;
    }
    // Compiles (once) what a program environment will draw with: an empty
    // string when it can, else why not (the compiler's log). Targets
    // without GLSL say so; their draws ignore the program.
    virtual QString prepareProgram(const ShaderProgram&) { return QStringLiteral("GLSL shaders need the OpenGL backend"); }

    // Units across the destination: 2 wide, 2·h/w high.
    double unitsWide() const { return 2.0; }
    double unitsHigh() const
    {
        const QSize s = pixelSize();
        return s.width() > 0 ? 2.0 * s.height() / s.width() : 0.0;
    }

protected:
    virtual void environmentChanged() {}

private:
    DrawEnvironment environment_;
};

class Backend {
public:
    virtual ~Backend() = default;
    // An offscreen target for Render In Image, cleared to transparent.
    virtual std::unique_ptr<RenderTarget> makeTarget(QSize pixelSize) = 0;
    // A target that draws over the caller's image; `view` maps destination
    // units to destination units before the pixel mapping (a zoomed or
    // panned canvas passes its transform).
    virtual std::unique_ptr<RenderTarget> wrapImage(QImage* image, const QTransform& view = {}) = 0;
};

}  // namespace runtime
