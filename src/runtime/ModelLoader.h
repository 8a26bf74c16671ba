#pragma once
// 3-D model files (OBJ, Collada, 3DS, FBX, PLY, STL and the rest Assimp
// reads) as one triangle mesh, and the process-wide cache that reads each
// file once, off the rendering thread.

#include "runtime/Mesh.h"

#include <QString>

#include <cstddef>
#include <future>

namespace runtime {

struct ModelLimits {
    // Larger models are refused: a broadcast logo needs far fewer, and a
    // million triangles already take some 150 MB once expanded for drawing.
    std::size_t maxTriangles = 1'000'000;
    qint64 maxFileBytes = 256ll << 20;
    // Reading stops (where the format's reader reports progress) after this.
    int timeoutMs = 60'000;
};

struct LoadedModel {
    MeshPtr mesh;   // never null: empty when the file cannot be used
    QString error;  // empty on success
};

// Reads `path` (absolute) synchronously: triangulated, the scene's node
// transforms applied, smooth normals made where the file has none, the
// first texture coordinates, vertex colours (or material diffuse colours)
// and the first diffuse texture as the mesh's image.
LoadedModel loadModel(const QString& path, const ModelLimits& limits = {});

class ModelCache {
public:
    static ModelCache& shared();

    // The model at `path` (absolute), read on a worker thread the first
    // time it is asked for, and again only when the file's size or time
    // changed. Every caller of one path shares one reading.
    std::shared_future<LoadedModel> request(const QString& path);

    // Entries kept: at most this many files and, among those already read,
    // this many triangles in all (the least recently asked for go first).
    static constexpr std::size_t kMaxEntries = 32;
    static constexpr std::size_t kMaxCachedTriangles = 4'000'000;

private:
    ModelCache() = default;
    struct Entry;
    struct State;
    State& state();
};

}  // namespace runtime
