// Meshes: Mesh Creator (from structures), Mesh Renderer, Mesh Transform,
// and two readers of a mesh, Mesh Components and Mesh Bounds (our names:
// Quartz Composer's own getters are not publicly described).
//
// Structures are read the way hand-built ones come: a list of members per
// vertex (each a list or an x/y/z keyed structure), or one flat list of
// numbers taken three (two for texture coordinates, four for colours) at a
// time. Colours may also be colour values.

#include "runtime/ExecutionContext.h"
#include "runtime/Mesh.h"
#include "runtime/patches/ObjectPatch.h"
#include "runtime/patches/PatchFamilies.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>

namespace runtime {

namespace {

// Vertices read from one structure; more are ignored (a mesh of this many
// vertices is already far beyond what a structure built in a composition
// holds).
constexpr std::size_t kMaxCreatorVertices = 1'000'000;

float finite(double v)
{
    return std::isfinite(v) ? float(v) : 0.0f;
}

// The numbers of one vertex: by key (x y z w, r g b a, s t, u v) when the
// structure is keyed, else in order.
template <std::size_t N>
std::array<float, N> components(const Value& value, const std::array<float, N>& fallback)
{
    std::array<float, N> out = fallback;
    if (value.kind() == Value::Kind::Color) {
        const Color c = value.toColor();
        const double rgba[] = {c.red, c.green, c.blue, c.alpha};
        for (std::size_t i = 0; i < N && i < 4; ++i) out[i] = finite(rgba[i]);
        return out;
    }
    const StructurePtr s = value.toStructure();
    if (!s) return out;
    static const char* const names[][4] = {{"x", "y", "z", "w"}, {"r", "g", "b", "a"}, {"s", "t", "p", "q"}, {"u", "v", "", ""}};
    if (s->isKeyed()) {
        for (const auto& member : s->members())
            for (const auto& set : names)
                for (std::size_t i = 0; i < N; ++i)
                    if (*set[i] && member.key.compare(QLatin1String(set[i]), Qt::CaseInsensitive) == 0) out[i] = finite(member.value.toNumber());
        return out;
    }
    for (std::size_t i = 0; i < N && i < s->count(); ++i) out[i] = finite(s->memberAt(i)->toNumber());
    return out;
}

template <std::size_t N>
std::vector<std::array<float, N>> tuples(const Value& value, const std::array<float, N>& fallback)
{
    std::vector<std::array<float, N>> out;
    const StructurePtr s = value.toStructure();
    if (!s || s->count() == 0) return out;
    const Value::Kind first = s->memberAt(0)->kind();
    if (first == Value::Kind::Structure || first == Value::Kind::Color) {
        const std::size_t count = std::min(s->count(), kMaxCreatorVertices);
        out.reserve(count);
        for (std::size_t i = 0; i < count; ++i) out.push_back(components<N>(*s->memberAt(i), fallback));
        return out;
    }
    // A flat list of numbers.
    const std::size_t count = std::min(s->count() / N, kMaxCreatorVertices);
    out.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        std::array<float, N> t;
        for (std::size_t k = 0; k < N; ++k) t[k] = finite(s->memberAt(i * N + k)->toNumber());
        out.push_back(t);
    }
    return out;
}

// Indices as a flat list, or a list of lists (one per triangle).
std::vector<std::uint32_t> indexList(const Value& value)
{
    std::vector<std::uint32_t> out;
    const StructurePtr s = value.toStructure();
    if (!s) return out;
    const auto add = [&out](const Value& v) {
        const double d = v.toNumber();
        // A negative or fractional index names no vertex: it is made too
        // large to be used, and its triangle is dropped.
        out.push_back(d >= 0 && d < 4294967295.0 && d == std::floor(d) ? std::uint32_t(d) : 0xffffffffu);
    };
    for (const auto& member : s->members()) {
        if (out.size() >= 3 * kMaxCreatorVertices) break;
        if (const StructurePtr inner = member.value.toStructure()) {
            for (const auto& m : inner->members()) add(m.value);
        } else {
            add(member.value);
        }
    }
    return out;
}

class MeshCreatorPatch : public Patch {
public:
    explicit MeshCreatorPatch(const PatchSetup& setup) : Patch(setup)
    {
        vertices_ = &addInput(QStringLiteral("inputVertices"), PortType::Structure);
        normals_ = &addInput(QStringLiteral("inputNormals"), PortType::Structure);
        texCoords_ = &addInput(QStringLiteral("inputTextureCoordinates"), PortType::Structure);
        colors_ = &addInput(QStringLiteral("inputColors"), PortType::Structure);
        indices_ = &addInput(QStringLiteral("inputIndices"), PortType::Structure);
        // 0 triangles, 1 triangle strip, 2 triangle fan, 3 quads. A public
        // tutorial draws a square from four vertices in strip order without
        // changing a setting, so the strip is the default.
        primitive_ = &addInput(QStringLiteral("inputPrimitiveType"), PortType::Index,
                               stateNumber(setup, "primitiveType", 1));
        mesh_ = &addOutput(QStringLiteral("outputMesh"), PortType::Mesh);
    }
    InputHints inputHints(const InputPort& port) const override
    {
        if (&port != primitive_) return {};
        return {0.0, 3.0, {QStringLiteral("Triangles"), QStringLiteral("Triangle Strip"), QStringLiteral("Triangle Fan"), QStringLiteral("Quads")}};
    }
    void execute(ExecutionContext&, double) override
    {
        Mesh::Arrays arrays;
        for (const auto& p : tuples<3>(vertices_->value, {0, 0, 0})) arrays.positions.emplace_back(p[0], p[1], p[2]);
        for (const auto& n : tuples<3>(normals_->value, {0, 0, 1})) arrays.normals.emplace_back(n[0], n[1], n[2]);
        for (const auto& t : tuples<2>(texCoords_->value, {0, 0})) arrays.texCoords.emplace_back(t[0], t[1]);
        for (const auto& c : tuples<4>(colors_->value, {1, 1, 1, 1})) arrays.colors.emplace_back(c[0], c[1], c[2], c[3]);
        const int type = std::clamp(index(primitive_), 0, 3);
        const std::vector<std::uint32_t> order = indexList(indices_->value);
        setOutput(*mesh_, Mesh::make(std::move(arrays), static_cast<Mesh::Primitive>(type), order));
    }

private:
    InputPort* vertices_;
    InputPort* normals_;
    InputPort* texCoords_;
    InputPort* colors_;
    InputPort* indices_;
    InputPort* primitive_;
    OutputPort* mesh_;
};

// Translation, rotation (degrees, X then Y then Z) and a scale per axis,
// as ObjectPatch places a mesh, for Mesh Transform.
class PlacementPorts {
public:
    void add(const std::function<InputPort&(const QString&, double)>& addInput)
    {
        for (const char* key : {"inputX", "inputY", "inputZ", "inputRX", "inputRY", "inputRZ"})
            ports_.push_back(&addInput(QString::fromLatin1(key), 0.0));
        for (const char* key : {"inputScaleX", "inputScaleY", "inputScaleZ"}) ports_.push_back(&addInput(QString::fromLatin1(key), 1.0));
    }
    QMatrix4x4 matrix() const
    {
        const auto v = [this](std::size_t i) { return finite(ports_[i]->value.toNumber()); };
        QMatrix4x4 m;
        m.translate(v(0), v(1), v(2));
        m.rotate(v(3), 1, 0, 0);
        m.rotate(v(4), 0, 1, 0);
        m.rotate(v(5), 0, 0, 1);
        m.scale(v(6), v(7), v(8));
        return m;
    }

private:
    std::vector<InputPort*> ports_;
};

class MeshRendererPatch : public ObjectPatch {
public:
    explicit MeshRendererPatch(const PatchSetup& setup) : ObjectPatch(setup)
    {
        mesh_ = &addInput(QStringLiteral("inputMesh"), PortType::Mesh);
        for (const char* key : {"inputScaleX", "inputScaleY", "inputScaleZ"})
            scale_.push_back(&addInput(QString::fromLatin1(key), PortType::Number, 1.0));
        color_ = &addInput(QStringLiteral("inputColor"), PortType::Color, Color::white());
        image_ = &addInput(QStringLiteral("inputImage"), PortType::Image);
    }
    void execute(ExecutionContext& context, double) override
    {
        const MeshPtr mesh = mesh_->value.toMesh();
        if (!context.target() || !mesh || mesh->isEmpty()) return;
        MeshDraw draw = prepared(context);
        draw.transform.scale(finite(number(scale_[0])), finite(number(scale_[1])), finite(number(scale_[2])));
        draw.vertices = &mesh->drawVertices();
        if (mesh->hasColors()) draw.colors = &mesh->drawColors();
        // The renderer's image, else the mesh's own (a model's texture);
        // without texture coordinates there is nothing to map it with.
        const Image image = image_->value.toImage();
        if (!mesh->arrays().texCoords.empty()) draw.image = image.isNull() ? mesh->arrays().image : image;
        draw.color = color_->value.toColor();
        context.target()->drawMesh(draw);
    }

private:
    InputPort* mesh_;
    std::vector<InputPort*> scale_;
    InputPort* color_;
    InputPort* image_;
};

class MeshTransformPatch : public Patch {
public:
    explicit MeshTransformPatch(const PatchSetup& setup) : Patch(setup)
    {
        mesh_ = &addInput(QStringLiteral("inputMesh"), PortType::Mesh);
        placement_.add([this](const QString& key, double initial) -> InputPort& { return addInput(key, PortType::Number, initial); });
        output_ = &addOutput(QStringLiteral("outputMesh"), PortType::Mesh);
    }
    void execute(ExecutionContext&, double) override
    {
        const MeshPtr mesh = mesh_->value.toMesh();
        setOutput(*output_, mesh ? Value(mesh->transformed(placement_.matrix())) : Value());
    }

private:
    InputPort* mesh_;
    PlacementPorts placement_;
    OutputPort* output_;
};

Value vectorStructure(std::initializer_list<float> numbers)
{
    std::vector<Structure::Member> members;
    members.reserve(numbers.size());
    for (const float n : numbers) members.push_back({QString(), Value(double(n))});
    return Value(std::make_shared<const Structure>(std::move(members)));
}

template <class T, class F>
Value listOf(const std::vector<T>& items, F toValue)
{
    std::vector<Structure::Member> members;
    members.reserve(items.size());
    for (const T& item : items) members.push_back({QString(), toValue(item)});
    return Value(std::make_shared<const Structure>(std::move(members)));
}

// The mesh's arrays as structures in the form Mesh Creator takes them
// (indices three to a triangle), its image and its counts.
class MeshComponentsPatch : public Patch {
public:
    explicit MeshComponentsPatch(const PatchSetup& setup) : Patch(setup)
    {
        mesh_ = &addInput(QStringLiteral("inputMesh"), PortType::Mesh);
        vertices_ = &addOutput(QStringLiteral("outputVertices"), PortType::Structure);
        normals_ = &addOutput(QStringLiteral("outputNormals"), PortType::Structure);
        texCoords_ = &addOutput(QStringLiteral("outputTextureCoordinates"), PortType::Structure);
        colors_ = &addOutput(QStringLiteral("outputColors"), PortType::Structure);
        indices_ = &addOutput(QStringLiteral("outputIndices"), PortType::Structure);
        image_ = &addOutput(QStringLiteral("outputImage"), PortType::Image);
        vertexCount_ = &addOutput(QStringLiteral("outputVertexCount"), PortType::Index);
        triangleCount_ = &addOutput(QStringLiteral("outputTriangleCount"), PortType::Index);
    }
    void execute(ExecutionContext&, double) override
    {
        const MeshPtr mesh = mesh_->value.toMesh();
        const Mesh::Arrays empty;
        const Mesh::Arrays& a = mesh ? mesh->arrays() : empty;
        setOutput(*vertices_, listOf(a.positions, [](const QVector3D& p) { return vectorStructure({p.x(), p.y(), p.z()}); }));
        setOutput(*normals_, listOf(a.normals, [](const QVector3D& n) { return vectorStructure({n.x(), n.y(), n.z()}); }));
        setOutput(*texCoords_, listOf(a.texCoords, [](const QVector2D& t) { return vectorStructure({t.x(), t.y()}); }));
        setOutput(*colors_, listOf(a.colors, [](const QVector4D& c) { return vectorStructure({c.x(), c.y(), c.z(), c.w()}); }));
        setOutput(*indices_, listOf(a.indices, [](std::uint32_t i) { return Value(double(i)); }));
        setOutput(*image_, a.image);
        setOutput(*vertexCount_, double(a.positions.size()));
        setOutput(*triangleCount_, double(a.indices.size() / 3));
    }

private:
    InputPort* mesh_;
    OutputPort* vertices_;
    OutputPort* normals_;
    OutputPort* texCoords_;
    OutputPort* colors_;
    OutputPort* indices_;
    OutputPort* image_;
    OutputPort* vertexCount_;
    OutputPort* triangleCount_;
};

// The axis-aligned box around the mesh: its corners, centre and size, for
// placing and scaling an imported model.
class MeshBoundsPatch : public Patch {
public:
    explicit MeshBoundsPatch(const PatchSetup& setup) : Patch(setup)
    {
        mesh_ = &addInput(QStringLiteral("inputMesh"), PortType::Mesh);
        for (const char* group : {"outputMin", "outputMax", "outputCenter", "outputSize"})
            for (const char* axis : {"X", "Y", "Z"}) outputs_.push_back(&addOutput(QLatin1String(group) + QLatin1String(axis), PortType::Number));
    }
    void execute(ExecutionContext&, double) override
    {
        const MeshPtr mesh = mesh_->value.toMesh();
        const QVector3D min = mesh ? mesh->boundsMin() : QVector3D(), max = mesh ? mesh->boundsMax() : QVector3D();
        const QVector3D values[] = {min, max, (min + max) / 2, max - min};
        for (std::size_t g = 0; g < 4; ++g)
            for (int axis = 0; axis < 3; ++axis) setOutput(*outputs_[g * 3 + std::size_t(axis)], double(values[g][axis]));
    }

private:
    InputPort* mesh_;
    std::vector<OutputPort*> outputs_;
};

}  // namespace

void registerMeshPatches(PatchRegistry& registry)
{
    registry.add(QStringLiteral("QCMeshCreator"), factoryOf<MeshCreatorPatch>());
    registry.add(QStringLiteral("QCMeshRenderer"), factoryOf<MeshRendererPatch>());
    registry.add(QStringLiteral("QCMeshTransform"), factoryOf<MeshTransformPatch>());
    registry.add(QStringLiteral("QCMeshComponents"), factoryOf<MeshComponentsPatch>());
    registry.add(QStringLiteral("QCMeshBounds"), factoryOf<MeshBoundsPatch>());
}

}  // namespace runtime
