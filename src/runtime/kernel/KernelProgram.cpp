#include "runtime/kernel/KernelProgram.h"

#include "runtime/RowBands.h"

#include <algorithm>
#include <cmath>

namespace runtime::kernel {

namespace {

// A result channel as an 8-bit value; NaN is treated as nothing.
inline int channel(float v)
{
    if (!(v > 0)) return 0;
    if (v >= 1) return 255;
    return int(v * 255.0f + 0.5f);
}

// Colour may not exceed alpha in a premultiplied pixel.
inline QRgb toPixel(float r, float g, float b, float a)
{
    const int alpha = channel(a);
    return qRgba(std::min(channel(r), alpha), std::min(channel(g), alpha), std::min(channel(b), alpha), alpha);
}

}  // namespace

bool KernelProgram::render(const std::vector<Vec>& arguments, const std::vector<Sampler>& samplers, const QRect& region, QImage& out) const
{
    const std::lock_guard<std::mutex> lock(running_);
    if (region.isEmpty() || out.size() != region.size() || out.format() != QImage::Format_ARGB32_Premultiplied) return false;
    uchar* const bits = out.bits();  // detaches once, before any band starts
    const qsizetype stride = out.bytesPerLine();
    const int height = region.height();
    const int bands = rowBandCount(height, qint64(region.width()) * height);
    // Each band runs its own copy of the program: a program's frame and
    // slots are not shared. The copies are made here, before any band starts.
    for (int band = 1; band < bands; ++band) helper(std::size_t(band - 1));
    std::vector<char> finished(std::size_t(bands), 1);
    forEachRowBand(height, qint64(region.width()) * height, [&](int band, int firstRow, int endRow) {
        const KernelProgram& program = band == 0 ? *this : helper(std::size_t(band - 1));
        finished[std::size_t(band)] = program.renderRows(arguments, samplers, region, bits, stride, firstRow, endRow);
    });
    return std::all_of(finished.begin(), finished.end(), [](char ok) { return ok != 0; });
}

const KernelProgram& KernelProgram::helper(std::size_t index) const
{
    while (helpers_.size() <= index) helpers_.push_back(compile(source_, nullptr));
    return *helpers_[index];
}

bool KernelProgram::renderRows(const std::vector<Vec>& arguments, const std::vector<Sampler>& samplers, const QRect& region, uchar* bits,
                               qsizetype stride, int firstRow, int endRow) const
{
    std::vector<Lanes> slots(std::size_t(std::max(slotCount_, 1)));
    Lanes result{};
    Mask returned = Mask::none(), noLoop = Mask::none();
    Frame frame;
    frame.slots = slots.data();
    frame.samplers = samplers.data();
    frame.returned = &returned;
    frame.broken = &noLoop;
    frame.continued = &noLoop;
    frame.result = &result;
    const std::vector<Parameter>& params = kernel_->parameters;
    const std::size_t argumentCount = std::min(arguments.size(), params.size());
    for (int row = firstRow; row < endRow; ++row) {
        auto* line = reinterpret_cast<QRgb*>(bits + stride * row);
        // Rows run top-down; image space runs bottom-up; pixel centres sit
        // on halves.
        const float y = float(region.y() + region.height() - 1 - row) + 0.5f;
        for (int start = 0; start < region.width(); start += kBlock) {
            const int count = std::min(kBlock, region.width() - start);
            Mask active;
            for (int p = 0; p < kBlock; ++p) {
                active.on[p] = p < count;
                frame.destCoord.v[0][p] = float(region.x() + start + p) + 0.5f;
                frame.destCoord.v[1][p] = y;
            }
            frame.loopBudget = kLoopBudget;
            returned = Mask::none();
            std::memset(&result, 0, sizeof result);
            // Parameters are variables the kernel may change, so each block
            // starts from the arguments again.
            for (std::size_t i = 0; i < argumentCount; ++i) {
                Lanes& slot = slots[std::size_t(params[i].slot)];
                for (int l = 0; l < 4; ++l) std::fill_n(slot.v[l], kBlock, arguments[i].v[l]);
            }
            for (const StmtPtr& g : globals_) g->exec(frame, active);
            kernel_->body->exec(frame, active);
            if (frame.exhausted) return false;
            for (int p = 0; p < count; ++p) line[start + p] = toPixel(result.v[0][p], result.v[1][p], result.v[2][p], result.v[3][p]);
        }
    }
    return true;
}

}  // namespace runtime::kernel
