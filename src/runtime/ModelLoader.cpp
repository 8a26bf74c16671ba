#include "runtime/ModelLoader.h"

#include <assimp/Importer.hpp>
#include <assimp/ProgressHandler.hpp>
#include <assimp/config.h>
#include <assimp/material.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <chrono>
#include <cstring>
#include <map>
#include <mutex>
#include <thread>

namespace runtime {

namespace {

using Clock = std::chrono::steady_clock;

// Lets Assimp give up on a file that takes too long, where its reader asks.
class Deadline : public Assimp::ProgressHandler {
public:
    explicit Deadline(int timeoutMs) : end_(Clock::now() + std::chrono::milliseconds(timeoutMs)) {}
    bool Update(float) override { return Clock::now() < end_; }

private:
    Clock::time_point end_;
};

LoadedModel failure(const QString& path, const QString& reason)
{
    return {Mesh::fromTriangles({}), QStringLiteral("cannot read model %1: %2").arg(path, reason)};
}

// Triangles the faces of the scene make once triangulated.
std::size_t triangleCount(const aiScene& scene)
{
    std::size_t count = 0;
    for (unsigned m = 0; m < scene.mNumMeshes; ++m) {
        const aiMesh* mesh = scene.mMeshes[m];
        if (!mesh || !mesh->mFaces) continue;
        for (unsigned f = 0; f < mesh->mNumFaces; ++f)
            if (mesh->mFaces[f].mNumIndices >= 3) count += mesh->mFaces[f].mNumIndices - 2;
    }
    return count;
}

// The material's diffuse colour, or white for the grey material Assimp
// invents for files without one.
QVector4D diffuseColor(const aiMaterial* material)
{
    if (!material) return {1, 1, 1, 1};
    aiString name;
    if (material->Get(AI_MATKEY_NAME, name) == AI_SUCCESS && QLatin1String(name.C_Str()) == QLatin1String(AI_DEFAULT_MATERIAL_NAME))
        return {1, 1, 1, 1};
    aiColor4D color(1, 1, 1, 1);
    material->Get(AI_MATKEY_COLOR_DIFFUSE, color);
    float opacity = 1;
    material->Get(AI_MATKEY_OPACITY, opacity);
    return {color.r, color.g, color.b, std::clamp(color.a * opacity, 0.0f, 1.0f)};
}

Image textureImage(const aiScene& scene, const aiString& reference, const QString& modelDirectory)
{
    if (const aiTexture* embedded = scene.GetEmbeddedTexture(reference.C_Str())) {
        if (embedded->mHeight == 0)  // compressed (PNG, JPEG, ...): mWidth bytes
            return Image::fromEncodedData(QByteArray(reinterpret_cast<const char*>(embedded->pcData), int(embedded->mWidth)));
        QImage pixels(int(embedded->mWidth), int(embedded->mHeight), QImage::Format_ARGB32);
        if (pixels.isNull()) return {};
        for (int y = 0; y < pixels.height(); ++y)
            for (int x = 0; x < pixels.width(); ++x) {
                const aiTexel& t = embedded->pcData[std::size_t(y) * embedded->mWidth + std::size_t(x)];
                pixels.setPixel(x, y, qRgba(t.r, t.g, t.b, t.a));
            }
        return Image::fromRaster(pixels.convertToFormat(QImage::Format_ARGB32_Premultiplied));
    }
    // Files written on Windows name textures with backslashes.
    const QString name = QString::fromUtf8(reference.C_Str()).replace(QLatin1Char('\\'), QLatin1Char('/'));
    QImage pixels(QDir(modelDirectory).absoluteFilePath(name));
    if (pixels.isNull()) pixels = QImage(QDir(modelDirectory).absoluteFilePath(QFileInfo(name).fileName()));
    if (pixels.isNull()) return {};
    return Image::fromRaster(pixels.convertToFormat(QImage::Format_ARGB32_Premultiplied));
}

// The first diffuse texture any mesh of the scene uses.
Image firstDiffuseTexture(const aiScene& scene, const QString& modelDirectory)
{
    for (unsigned m = 0; m < scene.mNumMeshes; ++m) {
        const unsigned index = scene.mMeshes[m]->mMaterialIndex;
        if (index >= scene.mNumMaterials) continue;
        aiString reference;
        if (scene.mMaterials[index]->GetTexture(aiTextureType_DIFFUSE, 0, &reference) != AI_SUCCESS) continue;
        return textureImage(scene, reference, modelDirectory);
    }
    return {};
}

Mesh::Arrays arraysOf(const aiScene& scene)
{
    // Colours only when something is coloured: most models are drawn in
    // the renderer's colour.
    bool coloured = false;
    for (unsigned m = 0; m < scene.mNumMeshes; ++m) {
        const aiMesh* mesh = scene.mMeshes[m];
        const aiMaterial* material = mesh->mMaterialIndex < scene.mNumMaterials ? scene.mMaterials[mesh->mMaterialIndex] : nullptr;
        coloured = coloured || mesh->HasVertexColors(0) || diffuseColor(material) != QVector4D(1, 1, 1, 1);
    }
    Mesh::Arrays arrays;
    bool allTextured = true;
    for (unsigned m = 0; m < scene.mNumMeshes; ++m) {
        const aiMesh* mesh = scene.mMeshes[m];
        if (!(mesh->mPrimitiveTypes & aiPrimitiveType_TRIANGLE) || !mesh->mVertices) continue;
        allTextured = allTextured && mesh->HasTextureCoords(0);
        const aiMaterial* material = mesh->mMaterialIndex < scene.mNumMaterials ? scene.mMaterials[mesh->mMaterialIndex] : nullptr;
        const QVector4D diffuse = diffuseColor(material);
        const auto base = std::uint32_t(arrays.positions.size());
        for (unsigned v = 0; v < mesh->mNumVertices; ++v) {
            const aiVector3D& p = mesh->mVertices[v];
            arrays.positions.emplace_back(p.x, p.y, p.z);
            const aiVector3D n = mesh->mNormals ? mesh->mNormals[v] : aiVector3D(0, 0, 1);
            arrays.normals.emplace_back(n.x, n.y, n.z);
            const aiVector3D t = mesh->HasTextureCoords(0) ? mesh->mTextureCoords[0][v] : aiVector3D();
            arrays.texCoords.emplace_back(t.x, t.y);
            if (coloured) {
                const aiColor4D c = mesh->HasVertexColors(0) ? mesh->mColors[0][v] : aiColor4D(1, 1, 1, 1);
                arrays.colors.push_back(QVector4D(c.r, c.g, c.b, c.a) * diffuse);
            }
        }
        for (unsigned f = 0; f < mesh->mNumFaces; ++f) {
            const aiFace& face = mesh->mFaces[f];
            if (face.mNumIndices != 3) continue;
            for (unsigned k = 0; k < 3; ++k) arrays.indices.push_back(base + face.mIndices[k]);
        }
    }
    if (!allTextured) {
        // Part of the model has no texture coordinates: an image stretched
        // over the rest would be misleading, so none is drawn.
        arrays.texCoords.clear();
    }
    return arrays;
}

// Formats that state their counts up front are checked before Assimp
// reads them: a PLY header promising ten million faces kept its reader
// busy for some twenty seconds on a file holding one.
QString declaredCountProblem(const QString& path, qint64 size, const ModelLimits& limits)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return QStringLiteral("cannot be opened");
    const QByteArray head = file.read(8192);
    const QString tooMany = QStringLiteral("more than %1 triangles").arg(limits.maxTriangles);
    if (head.startsWith("ply")) {
        for (const QByteArray& line : head.split('\n')) {
            const QList<QByteArray> words = line.simplified().split(' ');
            if (words.value(0) == "end_header") break;
            if (words.size() < 3 || words[0] != "element") continue;
            bool ok = false;
            const qulonglong count = words[2].toULongLong(&ok);
            if (!ok) continue;
            if (words[1] == "face" && count > limits.maxTriangles) return tooMany;
            // Every element takes at least a byte, in text or binary.
            if (count > qulonglong(size)) return QStringLiteral("shorter than its header says");
        }
        return {};
    }
    // Binary STL: an 80-byte header, then the triangle count.
    if (head.size() >= 84 && !head.startsWith("solid")) {
        std::uint32_t count = 0;
        std::memcpy(&count, head.constData() + 80, sizeof count);
        if (count > limits.maxTriangles && path.endsWith(QLatin1String(".stl"), Qt::CaseInsensitive)) return tooMany;
    }
    return {};
}

}  // namespace

LoadedModel loadModel(const QString& path, const ModelLimits& limits)
{
    const QFileInfo info(path);
    if (!info.exists()) return failure(path, QStringLiteral("no such file"));
    if (!info.isFile() || !info.isReadable()) return failure(path, QStringLiteral("not a readable file"));
    if (info.size() > limits.maxFileBytes)
        return failure(path, QStringLiteral("larger than %1 MB").arg(limits.maxFileBytes >> 20));

    if (const QString problem = declaredCountProblem(path, info.size(), limits); !problem.isEmpty()) return failure(path, problem);

    Assimp::Importer importer;
    importer.SetPropertyInteger(AI_CONFIG_PP_SBP_REMOVE, aiPrimitiveType_POINT | aiPrimitiveType_LINE);
    importer.SetProgressHandler(new Deadline(limits.timeoutMs));  // the importer deletes it
    // Read first and count, so that a huge model is refused before the
    // post-processing steps spend time and memory on it.
    const aiScene* scene = importer.ReadFile(QFile::encodeName(path).constData(), aiProcess_ValidateDataStructure);
    if (!scene) return failure(path, QString::fromUtf8(importer.GetErrorString()));
    if (scene->mFlags & AI_SCENE_FLAGS_INCOMPLETE) return failure(path, QStringLiteral("the file holds no complete scene"));
    if (triangleCount(*scene) > limits.maxTriangles)
        return failure(path, QStringLiteral("more than %1 triangles").arg(limits.maxTriangles));
    scene = importer.ApplyPostProcessing(aiProcess_Triangulate | aiProcess_JoinIdenticalVertices | aiProcess_GenSmoothNormals |
                                         aiProcess_SortByPType | aiProcess_PreTransformVertices | aiProcess_FlipUVs |
                                         aiProcess_FindInvalidData);
    if (!scene) return failure(path, QString::fromUtf8(importer.GetErrorString()));
    // Instanced parts are copied by applying the node transforms.
    if (triangleCount(*scene) > limits.maxTriangles)
        return failure(path, QStringLiteral("more than %1 triangles").arg(limits.maxTriangles));

    Mesh::Arrays arrays = arraysOf(*scene);
    if (arrays.indices.empty()) return failure(path, QStringLiteral("no triangles"));
    if (!arrays.texCoords.empty()) arrays.image = firstDiffuseTexture(*scene, info.absolutePath());
    return {Mesh::fromTriangles(std::move(arrays)), {}};
}

struct ModelCache::Entry {
    qint64 size = -1;
    QDateTime modified;
    std::shared_future<LoadedModel> result;
    std::uint64_t lastAsked = 0;
};

struct ModelCache::State {
    std::mutex mutex;
    std::map<QString, Entry> entries;
    std::uint64_t clock = 0;

    void trim()
    {
        while (true) {
            std::size_t triangles = 0;
            auto oldest = entries.end();
            for (auto it = entries.begin(); it != entries.end(); ++it) {
                const bool ready = it->second.result.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
                if (!ready) continue;  // a reading under way stays
                triangles += it->second.result.get().mesh->triangleCount();
                if (oldest == entries.end() || it->second.lastAsked < oldest->second.lastAsked) oldest = it;
            }
            if (oldest == entries.end() || (entries.size() <= kMaxEntries && triangles <= kMaxCachedTriangles)) return;
            entries.erase(oldest);
        }
    }
};

ModelCache& ModelCache::shared()
{
    static ModelCache cache;
    return cache;
}

ModelCache::State& ModelCache::state()
{
    static State state;
    return state;
}

std::shared_future<LoadedModel> ModelCache::request(const QString& path)
{
    const QFileInfo info(path);
    State& s = state();
    std::lock_guard lock(s.mutex);
    Entry& entry = s.entries[path];
    entry.lastAsked = ++s.clock;
    if (!entry.result.valid() || entry.size != info.size() || entry.modified != info.lastModified()) {
        entry.size = info.size();
        entry.modified = info.lastModified();
        auto promise = std::make_shared<std::promise<LoadedModel>>();
        entry.result = promise->get_future().share();
        // Detached: nobody waits for a reading at exit, and an entry
        // dropped meanwhile does not block on it.
        std::thread([promise, path] {
            LoadedModel model;
            try {
                model = loadModel(path);
            } catch (const std::exception& e) {  // out of memory inside the reader
                model = failure(path, QString::fromLocal8Bit(e.what()));
            }
            promise->set_value(std::move(model));
        }).detach();
    }
    std::shared_future<LoadedModel> result = entry.result;
    s.trim();
    return result;
}

}  // namespace runtime
