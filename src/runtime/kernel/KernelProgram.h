#pragma once
// A compiled Core Image kernel (the kernel language of the Core Image
// Filter patch) and the loop that runs it over a region of pixels.

#include "runtime/kernel/KernelStatements.h"

#include <QImage>
#include <QRect>

#include <memory>
#include <mutex>
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
    // written and should be dropped. Large regions are split into bands run
    // on several cores. Calls from several threads take turns: the
    // program's nodes hold the values of the block being run.
    bool render(const std::vector<Vec>& arguments, const std::vector<Sampler>& samplers, const QRect& region, QImage& out) const;

    // Loop rounds a block of pixels may take before the kernel is stopped.
    static constexpr int kLoopBudget = 1 << 16;

private:
    friend class Parser;
    KernelProgram() = default;
    bool renderRows(const std::vector<Vec>& arguments, const std::vector<Sampler>& samplers, const QRect& region, uchar* bits,
                    qsizetype stride, int firstRow, int endRow) const;
    // Copies of this program for the other cores, compiled on first need.
    const KernelProgram& helper(std::size_t index) const;

    QString source_;
    mutable std::vector<std::shared_ptr<const KernelProgram>> helpers_;

    std::vector<std::unique_ptr<Function>> functions_;
    std::vector<StmtPtr> globals_;  // initialisers of file-level constants
    const Function* kernel_ = nullptr;
    int slotCount_ = 0;
    mutable std::mutex running_;
};

}  // namespace runtime::kernel
