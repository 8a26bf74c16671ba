#pragma once
// Values of the Core Image kernel language as the interpreter holds them.
//
// Every value is four float lanes. A scalar (float, int, bool) keeps the same
// number in all four lanes, so an operation between a scalar and a vector is
// the same lane-by-lane loop as one between two vectors; a vec2 or vec3 uses
// its first lanes and ignores the rest. Ints are whole floats, bools 0 or 1.

#include <QString>

#include <cstdint>

namespace runtime::kernel {

enum class Type : std::uint8_t { Void, Bool, Int, Float, Vec2, Vec3, Vec4, Sampler };

struct Vec {
    float v[4] = {0, 0, 0, 0};
    static Vec splat(float x) { return {{x, x, x, x}}; }
};

inline int laneCount(Type type)
{
    switch (type) {
    case Type::Vec2: return 2;
    case Type::Vec3: return 3;
    case Type::Vec4: return 4;
    case Type::Void: return 0;
    default: return 1;
    }
}

inline bool isScalar(Type type) { return type == Type::Float || type == Type::Int || type == Type::Bool; }
inline bool isNumeric(Type type) { return type == Type::Float || type == Type::Int || laneCount(type) > 1; }
inline bool isFloatVector(Type type) { return type == Type::Vec2 || type == Type::Vec3 || type == Type::Vec4; }

// float for 1, vecN otherwise.
inline Type floatType(int lanes)
{
    return lanes <= 1 ? Type::Float : lanes == 2 ? Type::Vec2 : lanes == 3 ? Type::Vec3 : Type::Vec4;
}

inline QString typeName(Type type)
{
    switch (type) {
    case Type::Void: return QStringLiteral("void");
    case Type::Bool: return QStringLiteral("bool");
    case Type::Int: return QStringLiteral("int");
    case Type::Float: return QStringLiteral("float");
    case Type::Vec2: return QStringLiteral("vec2");
    case Type::Vec3: return QStringLiteral("vec3");
    case Type::Vec4: return QStringLiteral("vec4");
    case Type::Sampler: return QStringLiteral("sampler");
    }
    return {};
}

}  // namespace runtime::kernel
