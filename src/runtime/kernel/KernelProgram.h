#pragma once
// A compiled Core Image kernel (the kernel language of the Core Image
// Filter patch) and the loop that runs it over a region of pixels.

#include "runtime/kernel/KernelNodes.h"

#include <QImage>
#include <QRect>

#include <memory>
#include <vector>

namespace runtime::kernel {

class KernelProgram {
public:
    // The first kernel function of `source`. Null with `error` ("line 4:
    // ...") when the source does not compile.
    static std::shared_ptr<const KernelProgram> compile(const QString& source, QString* error);

    const QString& name() const { return kernel_->name; }
    const std::vector<Parameter>& parameters() const { return kernel_->parameters; }

    // Runs the kernel for each pixel of `region` (image space) into `out`, a
    // premultiplied ARGB32 raster of the region's size. `arguments` has one
    // value per parameter; a sampler's value is its index in `samplers`.
    // False when the kernel loops too long, in which case `out` is partly
    // written and should be dropped.
    bool render(const std::vector<Vec>& arguments, const std::vector<Sampler>& samplers, const QRect& region, QImage& out) const;

    // Loop rounds one pixel may take before the kernel is stopped.
    static constexpr int kLoopBudgetPerPixel = 1 << 16;

private:
    friend class Parser;
    KernelProgram() = default;

    std::vector<std::unique_ptr<Function>> functions_;
    std::vector<StmtPtr> globals_;  // initialisers of file-level constants
    const Function* kernel_ = nullptr;
    int slotCount_ = 0;
};

}  // namespace runtime::kernel
