#pragma once
// The parameter list of the first kernel in an OpenCL C source, read
// without a compiler: the patch's ports must exist (so that the file's
// connections hold) even on a machine without an OpenCL device.

#include <QString>

#include <optional>
#include <vector>

namespace runtime::cl {

// Scalar element types of buffers and value arguments; all are 4 bytes.
enum class ElementType : std::uint8_t { Float, Int, UInt };

struct KernelParameter {
    enum class Kind : std::uint8_t {
        Value,        // float, int4, ...: passed by value
        InputBuffer,  // __global const T* or __constant T*
        OutputBuffer, // __global T*
        InputImage,   // image2d_t, read_only (the default)
        OutputImage,  // image2d_t, write_only
    };
    QString name;
    Kind kind = Kind::Value;
    ElementType element = ElementType::Float;
    int components = 1;  // 1, 2, 3, 4 (vector width)
    // Bytes per element: a 3-vector takes the room of a 4-vector in OpenCL.
    int stride() const { return 4 * (components == 3 ? 4 : components); }
};

struct KernelSignature {
    QString name;
    std::vector<KernelParameter> parameters;
};

constexpr qsizetype kMaxKernelSourceLength = 1 << 20;

// The first `kernel void name(...)` of the source, or nullopt with a reason
// (no kernel, or a parameter of a kind the patch cannot feed: local memory,
// 3-D images, samplers, structures, 8- and 16-wide vectors; sources over
// kMaxKernelSourceLength characters).
std::optional<KernelSignature> readKernelSignature(const QString& source, QString* error);

}  // namespace runtime::cl
