#include "runtime/kernel/KernelProgram.h"

#include <algorithm>
#include <cmath>

namespace runtime::kernel {

namespace {

// A result channel as an 8-bit value; colour may not exceed alpha in a
// premultiplied pixel, and NaN is treated as nothing.
inline int channel(float v)
{
    if (!(v > 0)) return 0;
    if (v >= 1) return 255;
    return int(v * 255.0f + 0.5f);
}

inline QRgb toPixel(const Vec& c)
{
    const int a = channel(c.v[3]);
    return qRgba(std::min(channel(c.v[0]), a), std::min(channel(c.v[1]), a), std::min(channel(c.v[2]), a), a);
}

}  // namespace

bool KernelProgram::render(const std::vector<Vec>& arguments, const std::vector<Sampler>& samplers, const QRect& region, QImage& out) const
{
    std::vector<Vec> slots(std::size_t(std::max(slotCount_, 1)));
    Frame frame;
    frame.slots = slots.data();
    frame.samplers = samplers.data();
    const std::vector<Parameter>& params = kernel_->parameters;
    const std::size_t argumentCount = std::min(arguments.size(), params.size());
    for (int row = 0; row < region.height(); ++row) {
        auto* line = reinterpret_cast<QRgb*>(out.scanLine(row));
        // Rows run top-down; image space runs bottom-up; pixel centres sit
        // on halves.
        const float y = float(region.y() + region.height() - 1 - row) + 0.5f;
        for (int column = 0; column < region.width(); ++column) {
            frame.destCoord = {{float(region.x() + column) + 0.5f, y, 0, 0}};
            frame.loopBudget = kLoopBudgetPerPixel;
            frame.result = {};
            // Parameters are variables the kernel may change, so each pixel
            // starts from the arguments again.
            for (std::size_t i = 0; i < argumentCount; ++i) slots[std::size_t(params[i].slot)] = arguments[i];
            for (const StmtPtr& g : globals_) g->exec(frame);
            kernel_->body->exec(frame);
            if (frame.exhausted) return false;
            line[column] = toPixel(frame.result);
        }
    }
    return true;
}

}  // namespace runtime::kernel
