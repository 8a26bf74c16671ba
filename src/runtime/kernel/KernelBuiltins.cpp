#include "runtime/kernel/KernelBuiltins.h"

#include <QHash>

#include <algorithm>
#include <cmath>
#include <functional>
#include <numbers>

namespace runtime::kernel {

namespace {

constexpr float kDegrees = float(180.0 / std::numbers::pi);

#define KERNEL_MAP1(Name, body)                                                                                        \
    struct Name {                                                                                                      \
        float operator()(float x) const { return body; }                                                               \
    };
#define KERNEL_MAP2(Name, body)                                                                                        \
    struct Name {                                                                                                      \
        float operator()(float x, float y) const { return body; }                                                      \
    };
#define KERNEL_MAP3(Name, body)                                                                                        \
    struct Name {                                                                                                      \
        float operator()(float x, float y, float z) const { return body; }                                             \
    };

KERNEL_MAP1(Radians, x / kDegrees)
KERNEL_MAP1(Degrees, x* kDegrees)
KERNEL_MAP1(Sin, std::sin(x))
KERNEL_MAP1(Cos, std::cos(x))
KERNEL_MAP1(Tan, std::tan(x))
KERNEL_MAP1(Asin, std::asin(x))
KERNEL_MAP1(Acos, std::acos(x))
KERNEL_MAP1(Atan, std::atan(x))
KERNEL_MAP1(Exp, std::exp(x))
KERNEL_MAP1(Log, std::log(x))
KERNEL_MAP1(Exp2, std::exp2(x))
KERNEL_MAP1(Log2, std::log2(x))
KERNEL_MAP1(Sqrt, std::sqrt(x))
KERNEL_MAP1(InverseSqrt, 1.0f / std::sqrt(x))
KERNEL_MAP1(Abs, std::fabs(x))
KERNEL_MAP1(Sign, x > 0 ? 1.0f : x < 0 ? -1.0f : 0.0f)
KERNEL_MAP1(Floor, std::floor(x))
KERNEL_MAP1(Ceil, std::ceil(x))
KERNEL_MAP1(Fract, x - std::floor(x))

KERNEL_MAP2(Pow, std::pow(x, y))
KERNEL_MAP2(Atan2, std::atan2(x, y))
KERNEL_MAP2(Mod, x - y * std::floor(x / y))
KERNEL_MAP2(Min, y < x ? y : x)
KERNEL_MAP2(Max, x < y ? y : x)
KERNEL_MAP2(Step, y < x ? 0.0f : 1.0f)

KERNEL_MAP3(Clamp, std::min(std::max(x, y), z))
KERNEL_MAP3(Mix, x + (y - x) * z)
KERNEL_MAP3(Compare, x < 0 ? y : z)
struct SmoothStep {
    float operator()(float e0, float e1, float x) const
    {
        const float t = std::clamp((x - e0) / (e1 - e0), 0.0f, 1.0f);
        return t * t * (3 - 2 * t);
    }
};

template <int N>
float dotOf(const Vec& a, const Vec& b)
{
    float s = 0;
    for (int i = 0; i < N; ++i) s += a.v[i] * b.v[i];
    return s;
}

template <int N>
Vec lengthFn(Frame&, int, const Vec* a)
{
    return Vec::splat(std::sqrt(dotOf<N>(a[0], a[0])));
}
template <int N>
Vec distanceFn(Frame&, int, const Vec* a)
{
    Vec d;
    for (int i = 0; i < N; ++i) d.v[i] = a[0].v[i] - a[1].v[i];
    return Vec::splat(std::sqrt(dotOf<N>(d, d)));
}
template <int N>
Vec dotFn(Frame&, int, const Vec* a)
{
    return Vec::splat(dotOf<N>(a[0], a[1]));
}
template <int N>
Vec normalizeFn(Frame&, int, const Vec* a)
{
    const float length = std::sqrt(dotOf<N>(a[0], a[0]));
    Vec out;
    for (int i = 0; i < 4; ++i) out.v[i] = a[0].v[i] / length;
    return out;
}
// reflect(I, N) = I - 2 dot(N, I) N
template <int N>
Vec reflectFn(Frame&, int, const Vec* a)
{
    const float d = 2 * dotOf<N>(a[1], a[0]);
    Vec out;
    for (int i = 0; i < 4; ++i) out.v[i] = a[0].v[i] - d * a[1].v[i];
    return out;
}
Vec crossFn(Frame&, int, const Vec* a)
{
    const Vec& x = a[0];
    const Vec& y = a[1];
    return {{x.v[1] * y.v[2] - x.v[2] * y.v[1], x.v[2] * y.v[0] - x.v[0] * y.v[2], x.v[0] * y.v[1] - x.v[1] * y.v[0], 0}};
}

const Sampler& samplerOf(Frame& frame, const Vec& index) { return frame.samplers[int(index.v[0])]; }

// sample() and samplerCoord() are in nearly every kernel: they get nodes of
// their own rather than the general per-pixel call.
class Sample : public Computing {
public:
    Sample(ExprPtr sampler, ExprPtr coordinate) : Computing(Type::Vec4), sampler_(std::move(sampler)), coordinate_(std::move(coordinate)) {}
    const Lanes& eval(Frame& frame) const override
    {
        const float* index = sampler_->eval(frame).v[0];
        const Lanes& at = coordinate_->eval(frame);
        for (int p = 0; p < kBlock; ++p) {
            const Vec c = frame.samplers[int(index[p])].sample(at.v[0][p], at.v[1][p]);
            for (int l = 0; l < 4; ++l) out_.v[l][p] = c.v[l];
        }
        return out_;
    }

private:
    ExprPtr sampler_, coordinate_;
};

class SamplerCoord : public Computing {
public:
    explicit SamplerCoord(ExprPtr sampler) : Computing(Type::Vec2), sampler_(std::move(sampler)) {}
    const Lanes& eval(Frame& frame) const override
    {
        const float* index = sampler_->eval(frame).v[0];
        for (int p = 0; p < kBlock; ++p) {
            const Sampler& s = frame.samplers[int(index[p])];
            out_.v[0][p] = frame.destCoord.v[0][p] - s.spaceOriginX();
            out_.v[1][p] = frame.destCoord.v[1][p] - s.spaceOriginY();
        }
        return out_;
    }

private:
    ExprPtr sampler_;
};

Vec samplerTransformFn(Frame& frame, int, const Vec* a)
{
    const Sampler& s = samplerOf(frame, a[0]);
    return {{a[1].v[0] - s.spaceOriginX(), a[1].v[1] - s.spaceOriginY(), 0, 0}};
}
Vec samplerExtentFn(Frame& frame, int, const Vec* a) { return samplerOf(frame, a[0]).extent(); }
Vec samplerOriginFn(Frame& frame, int, const Vec* a)
{
    const Vec e = samplerOf(frame, a[0]).extent();
    return {{e.v[0], e.v[1], 0, 0}};
}
Vec samplerSizeFn(Frame& frame, int, const Vec* a)
{
    const Vec e = samplerOf(frame, a[0]).extent();
    return {{e.v[2], e.v[3], 0, 0}};
}
Vec destCoordFn(Frame& frame, int pixel, const Vec*) { return {{frame.destCoord.v[0][pixel], frame.destCoord.v[1][pixel], 0, 0}}; }
Vec premultiplyFn(Frame&, int, const Vec* a)
{
    const Vec& c = a[0];
    return {{c.v[0] * c.v[3], c.v[1] * c.v[3], c.v[2] * c.v[3], c.v[3]}};
}
Vec unpremultiplyFn(Frame&, int, const Vec* a)
{
    const Vec& c = a[0];
    if (!(c.v[3] > 0)) return {};
    return {{c.v[0] / c.v[3], c.v[1] / c.v[3], c.v[2] / c.v[3], c.v[3]}};
}
Vec sinCosFn(Frame&, int, const Vec* a) { return {{std::sin(a[0].v[0]), std::cos(a[0].v[0]), 0, 0}}; }
Vec cosSinFn(Frame&, int, const Vec* a) { return {{std::cos(a[0].v[0]), std::sin(a[0].v[0]), 0, 0}}; }

[[noreturn]] void fail(const QString& message) { throw message; }

void expectCount(const QString& name, const std::vector<ExprPtr>& args, std::size_t count)
{
    if (args.size() != count)
        fail(QStringLiteral("%1 takes %2 argument%3, not %4").arg(name).arg(count).arg(count == 1 ? "" : "s").arg(args.size()));
}

void expectType(const QString& name, const ExprPtr& arg, Type type)
{
    const bool fits = arg->type() == type || (type == Type::Float && arg->type() == Type::Int);
    if (!fits) fail(QStringLiteral("%1 expects a %2 here, not a %3").arg(name, typeName(type), typeName(arg->type())));
}

// The float type shared by componentwise arguments.
Type componentwiseType(const QString& name, const std::vector<ExprPtr>& args)
{
    Type type = Type::Float;
    for (const ExprPtr& a : args) {
        if (!isNumeric(a->type())) fail(QStringLiteral("%1 expects numbers, not a %2").arg(name, typeName(a->type())));
        try {
            type = combinedType(type, a->type());
        } catch (const QString&) {
            fail(QStringLiteral("%1 cannot mix %2 and %3").arg(name, typeName(type), typeName(a->type())));
        }
    }
    return type == Type::Int ? Type::Float : type;
}

template <class Op>
ExprPtr map1(const QString& name, std::vector<ExprPtr>& a)
{
    expectCount(name, a, 1);
    const Type t = componentwiseType(name, a);
    return std::make_unique<Map1<Op>>(t, std::move(a[0]));
}
template <class Op>
ExprPtr map2(const QString& name, std::vector<ExprPtr>& a)
{
    expectCount(name, a, 2);
    const Type t = componentwiseType(name, a);
    return std::make_unique<Map2<Op>>(t, std::move(a[0]), std::move(a[1]));
}
template <class Op>
ExprPtr map3(const QString& name, std::vector<ExprPtr>& a)
{
    expectCount(name, a, 3);
    const Type t = componentwiseType(name, a);
    return std::make_unique<Map3<Op>>(t, std::move(a[0]), std::move(a[1]), std::move(a[2]));
}

ExprPtr computed(Type type, Computed::Function f, std::vector<ExprPtr>& a)
{
    return std::make_unique<Computed>(type, f, std::move(a));
}

// Geometric functions over the first lanes of same-sized vectors.
template <Computed::Function F2, Computed::Function F3, Computed::Function F4>
ExprPtr geometric(const QString& name, std::vector<ExprPtr>& a, std::size_t count, bool scalarResult)
{
    expectCount(name, a, count);
    const Type t = componentwiseType(name, a);
    for (const ExprPtr& e : a)
        if (laneCount(e->type()) != laneCount(t)) fail(QStringLiteral("%1 expects arguments of one size").arg(name));
    const Type result = scalarResult ? Type::Float : t;
    switch (laneCount(t)) {
    case 2: return computed(result, F2, a);
    case 3: return computed(result, F3, a);
    case 4: return computed(result, F4, a);
    default: return computed(result, F4, a);  // scalars: every lane holds the value
    }
}

ExprPtr samplerQuery(const QString& name, std::vector<ExprPtr>& a, Type result, Computed::Function f)
{
    expectCount(name, a, 1);
    expectType(name, a[0], Type::Sampler);
    return computed(result, f, a);
}

using Builder = std::function<ExprPtr(const QString&, std::vector<ExprPtr>&)>;

const QHash<QString, Builder>& builders()
{
    static const QHash<QString, Builder> table = {
        {QStringLiteral("radians"), map1<Radians>},
        {QStringLiteral("degrees"), map1<Degrees>},
        {QStringLiteral("sin"), map1<Sin>},
        {QStringLiteral("cos"), map1<Cos>},
        {QStringLiteral("tan"), map1<Tan>},
        {QStringLiteral("sin_"), map1<Sin>},
        {QStringLiteral("cos_"), map1<Cos>},
        {QStringLiteral("tan_"), map1<Tan>},
        {QStringLiteral("asin"), map1<Asin>},
        {QStringLiteral("acos"), map1<Acos>},
        {QStringLiteral("atan"),
         [](const QString& n, std::vector<ExprPtr>& a) { return a.size() == 2 ? map2<Atan2>(n, a) : map1<Atan>(n, a); }},
        {QStringLiteral("exp"), map1<Exp>},
        {QStringLiteral("log"), map1<Log>},
        {QStringLiteral("exp2"), map1<Exp2>},
        {QStringLiteral("log2"), map1<Log2>},
        {QStringLiteral("sqrt"), map1<Sqrt>},
        {QStringLiteral("inversesqrt"), map1<InverseSqrt>},
        {QStringLiteral("abs"), map1<Abs>},
        {QStringLiteral("sign"), map1<Sign>},
        {QStringLiteral("floor"), map1<Floor>},
        {QStringLiteral("ceil"), map1<Ceil>},
        {QStringLiteral("fract"), map1<Fract>},
        {QStringLiteral("pow"), map2<Pow>},
        {QStringLiteral("mod"), map2<Mod>},
        {QStringLiteral("min"), map2<Min>},
        {QStringLiteral("max"), map2<Max>},
        {QStringLiteral("step"), map2<Step>},
        {QStringLiteral("clamp"), map3<Clamp>},
        {QStringLiteral("mix"), map3<Mix>},
        {QStringLiteral("smoothstep"), map3<SmoothStep>},
        {QStringLiteral("compare"), map3<Compare>},
        {QStringLiteral("length"),
         [](const QString& n, std::vector<ExprPtr>& a) { return geometric<lengthFn<2>, lengthFn<3>, lengthFn<4>>(n, a, 1, true); }},
        {QStringLiteral("distance"),
         [](const QString& n, std::vector<ExprPtr>& a) { return geometric<distanceFn<2>, distanceFn<3>, distanceFn<4>>(n, a, 2, true); }},
        {QStringLiteral("dot"), [](const QString& n, std::vector<ExprPtr>& a) { return geometric<dotFn<2>, dotFn<3>, dotFn<4>>(n, a, 2, true); }},
        {QStringLiteral("normalize"),
         [](const QString& n, std::vector<ExprPtr>& a) { return geometric<normalizeFn<2>, normalizeFn<3>, normalizeFn<4>>(n, a, 1, false); }},
        {QStringLiteral("reflect"),
         [](const QString& n, std::vector<ExprPtr>& a) { return geometric<reflectFn<2>, reflectFn<3>, reflectFn<4>>(n, a, 2, false); }},
        {QStringLiteral("cross"),
         [](const QString& n, std::vector<ExprPtr>& a) {
             expectCount(n, a, 2);
             expectType(n, a[0], Type::Vec3);
             expectType(n, a[1], Type::Vec3);
             return computed(Type::Vec3, crossFn, a);
         }},
        {QStringLiteral("sample"),
         [](const QString& n, std::vector<ExprPtr>& a) {
             expectCount(n, a, 2);
             expectType(n, a[0], Type::Sampler);
             expectType(n, a[1], Type::Vec2);
             return std::make_unique<Sample>(std::move(a[0]), std::move(a[1]));
         }},
        {QStringLiteral("samplerTransform"),
         [](const QString& n, std::vector<ExprPtr>& a) {
             expectCount(n, a, 2);
             expectType(n, a[0], Type::Sampler);
             expectType(n, a[1], Type::Vec2);
             return computed(Type::Vec2, samplerTransformFn, a);
         }},
        {QStringLiteral("samplerCoord"),
         [](const QString& n, std::vector<ExprPtr>& a) {
             expectCount(n, a, 1);
             expectType(n, a[0], Type::Sampler);
             return std::make_unique<SamplerCoord>(std::move(a[0]));
         }},
        {QStringLiteral("samplerExtent"),
         [](const QString& n, std::vector<ExprPtr>& a) { return samplerQuery(n, a, Type::Vec4, samplerExtentFn); }},
        {QStringLiteral("samplerOrigin"),
         [](const QString& n, std::vector<ExprPtr>& a) { return samplerQuery(n, a, Type::Vec2, samplerOriginFn); }},
        {QStringLiteral("samplerSize"),
         [](const QString& n, std::vector<ExprPtr>& a) { return samplerQuery(n, a, Type::Vec2, samplerSizeFn); }},
        {QStringLiteral("destCoord"),
         [](const QString& n, std::vector<ExprPtr>& a) {
             expectCount(n, a, 0);
             return computed(Type::Vec2, destCoordFn, a);
         }},
        {QStringLiteral("premultiply"),
         [](const QString& n, std::vector<ExprPtr>& a) {
             expectCount(n, a, 1);
             expectType(n, a[0], Type::Vec4);
             return computed(Type::Vec4, premultiplyFn, a);
         }},
        {QStringLiteral("unpremultiply"),
         [](const QString& n, std::vector<ExprPtr>& a) {
             expectCount(n, a, 1);
             expectType(n, a[0], Type::Vec4);
             return computed(Type::Vec4, unpremultiplyFn, a);
         }},
        {QStringLiteral("sincos"),
         [](const QString& n, std::vector<ExprPtr>& a) {
             expectCount(n, a, 1);
             expectType(n, a[0], Type::Float);
             return computed(Type::Vec2, sinCosFn, a);
         }},
        {QStringLiteral("cossin"),
         [](const QString& n, std::vector<ExprPtr>& a) {
             expectCount(n, a, 1);
             expectType(n, a[0], Type::Float);
             return computed(Type::Vec2, cosSinFn, a);
         }},
    };
    return table;
}

}  // namespace

Type combinedType(Type a, Type b)
{
    const int la = laneCount(a), lb = laneCount(b);
    if (la > 1 && lb > 1 && la != lb) throw QStringLiteral("cannot combine a %1 and a %2").arg(typeName(a), typeName(b));
    if (la > 1 || lb > 1) return floatType(std::max(la, lb));
    if (a == Type::Int && b == Type::Int) return Type::Int;
    return Type::Float;
}

ExprPtr makeBuiltinCall(const QString& name, std::vector<ExprPtr>& args)
{
    const auto it = builders().constFind(name);
    if (it == builders().constEnd()) return nullptr;
    return (*it)(name, args);
}

}  // namespace runtime::kernel
