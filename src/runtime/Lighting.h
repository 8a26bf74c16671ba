#pragma once
// The lighting a Lighting patch sets for the 3-D objects inside it, and the
// shading both backends apply: ambient plus, per light, Lambert diffuse and
// a Blinn specular highlight, with the light's distance attenuation. Light
// positions are in destination units, the eye on the z axis (Backend.h).

#include "runtime/Value.h"

#include <QVector3D>

#include <vector>

namespace runtime {

struct Light {
    QVector3D position{-1, 1, 1};
    Color color = Color::white();
    double attenuation = 0;  // 1 / (1 + attenuation × distance)
};

struct Lighting {
    static constexpr int kMaxLights = 4;
    Color ambient{0.1, 0.1, 0.1, 1};
    double shininess = 64;  // specular exponent
    double specular = 0.5;  // specular strength
    bool twoSided = false;
    std::vector<Light> lights;
};

// The colour of a surface point of colour `material` (alpha kept) with
// `normal` (unit length) at `position`.
Color shade(const Lighting& lighting, const QVector3D& position, QVector3D normal, const Color& material);

}  // namespace runtime
