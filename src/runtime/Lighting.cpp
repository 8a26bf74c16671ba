#include "runtime/Lighting.h"

#include "runtime/Backend.h"

#include <algorithm>
#include <cmath>

namespace runtime {

Color shade(const Lighting& lighting, const QVector3D& position, QVector3D normal, const Color& material)
{
    const QVector3D toEye = (QVector3D(0, 0, float(kEyeDistance)) - position).normalized();
    if (lighting.twoSided && QVector3D::dotProduct(normal, toEye) < 0) normal = -normal;
    double r = lighting.ambient.red, g = lighting.ambient.green, b = lighting.ambient.blue;
    double sr = 0, sg = 0, sb = 0;
    for (const Light& light : lighting.lights) {
        const QVector3D toLight = light.position - position;
        const double distance = toLight.length();
        const QVector3D l = toLight.normalized();
        const double fade = 1.0 / (1.0 + std::max(0.0, light.attenuation) * distance);
        const double diffuse = std::max(0.0f, QVector3D::dotProduct(normal, l)) * fade;
        r += diffuse * light.color.red;
        g += diffuse * light.color.green;
        b += diffuse * light.color.blue;
        if (diffuse <= 0) continue;
        const QVector3D half = (l + toEye).normalized();
        const double highlight = std::pow(std::max(0.0f, QVector3D::dotProduct(normal, half)), std::max(1.0, lighting.shininess)) *
                                 lighting.specular * fade;
        sr += highlight * light.color.red;
        sg += highlight * light.color.green;
        sb += highlight * light.color.blue;
    }
    const auto mix = [](double m, double lit, double spec) { return std::clamp(m * std::min(lit, 1.0) + spec, 0.0, 1.0); };
    return {mix(material.red, r, sr), mix(material.green, g, sg), mix(material.blue, b, sb), material.alpha};
}

}  // namespace runtime
