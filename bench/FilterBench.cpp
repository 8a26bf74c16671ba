// Core Image filters over a 1920 × 1080 frame, the costly ones a broadcast
// template is likely to use: blurs of several reaches, a glow, a zoom blur
// and a compositing mode. Each renders the whole frame.

#include "runtime/Image.h"
#include "runtime/patches/filters/FilterDefinition.h"

#include <QColor>
#include <QImage>
#include <QPainter>

#include <benchmark/benchmark.h>

namespace {

// A frame with edges for the blurs to work on: a dark ground with a bright
// box in the middle.
runtime::Image frameImage()
{
    QImage pixels(1920, 1080, QImage::Format_ARGB32_Premultiplied);
    pixels.fill(QColor(20, 30, 60));
    QPainter(&pixels).fillRect(QRect(560, 340, 800, 400), QColor(240, 200, 80));
    return runtime::Image::fromRaster(pixels);
}

void runFilter(benchmark::State& state, const char* name, runtime::FilterValues values, bool withBackground)
{
    const runtime::FilterDefinition* filter = runtime::findFilterDefinition(QString::fromLatin1(name));
    if (!filter) {
        state.SkipWithError("no such filter");
        return;
    }
    const runtime::Image image = frameImage();
    values.emplace_back("inputImage", image);
    if (withBackground) values.emplace_back("inputBackgroundImage", image);
    const QRect frame(0, 0, 1920, 1080);
    for (auto _ : state) {
        // A new filter output each round, as a frame whose inputs changed.
        const QImage out = runtime::applyFilter(*filter, values).renderRegion(frame);
        benchmark::DoNotOptimize(out.constBits());
    }
}

}  // namespace

BENCHMARK_CAPTURE(runFilter, gaussian_blur_r10, "CIGaussianBlur", {{"inputRadius", 10.0}}, false)
    ->Name("BM_Filter1080p/gaussian_blur_r10")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(runFilter, gaussian_blur_r50, "CIGaussianBlur", {{"inputRadius", 50.0}}, false)
    ->Name("BM_Filter1080p/gaussian_blur_r50")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(runFilter, box_blur_r10, "CIBoxBlur", {{"inputRadius", 10.0}}, false)
    ->Name("BM_Filter1080p/box_blur_r10")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(runFilter, bloom_r10, "CIBloom", {{"inputRadius", 10.0}, {"inputIntensity", 1.0}}, false)
    ->Name("BM_Filter1080p/bloom_r10")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(runFilter, zoom_blur, "CIZoomBlur", {{"inputCenter_X", 960.0}, {"inputCenter_Y", 540.0}, {"inputAmount", 20.0}}, false)
    ->Name("BM_Filter1080p/zoom_blur")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(runFilter, screen_blend, "CIScreenBlendMode", {}, true)
    ->Name("BM_Filter1080p/screen_blend")
    ->Unit(benchmark::kMillisecond);
