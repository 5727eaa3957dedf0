// Peak heap memory a member call takes beyond the caller's frame, through an allocation hook:
// this executable puts its own malloc family in front of the C library's and keeps the
// running total and its high-water mark. Reported per pixel of the frame.
#include <benchmark/benchmark.h>

#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstddef>

#include <opencv2/core.hpp>

#include "ChartFrame.h"
#include "talonvireo/talonVireoSFR.h"

extern "C" {
void* __libc_malloc(std::size_t);
void __libc_free(void*);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void* __libc_memalign(std::size_t, std::size_t);
}

namespace {
std::atomic<long long> gLive{0};
std::atomic<long long> gPeak{0};

void* counted(void* p) {
    if (p != nullptr) {
        const long long now = gLive.fetch_add(static_cast<long long>(malloc_usable_size(p))) +
                              static_cast<long long>(malloc_usable_size(p));
        long long peak = gPeak.load();
        while (now > peak && !gPeak.compare_exchange_weak(peak, now)) {
        }
    }
    return p;
}

void uncount(void* p) {
    if (p != nullptr) {
        gLive.fetch_sub(static_cast<long long>(malloc_usable_size(p)));
    }
}
}  // namespace

extern "C" {
void* malloc(std::size_t n) {
    return counted(__libc_malloc(n));
}
void free(void* p) {
    uncount(p);
    __libc_free(p);
}
void* calloc(std::size_t n, std::size_t size) {
    return counted(__libc_calloc(n, size));
}
void* realloc(void* p, std::size_t n) {
    uncount(p);
    return counted(__libc_realloc(p, n));
}
void* memalign(std::size_t alignment, std::size_t n) {
    return counted(__libc_memalign(alignment, n));
}
void* aligned_alloc(std::size_t alignment, std::size_t n) {
    return counted(__libc_memalign(alignment, n));
}
int posix_memalign(void** out, std::size_t alignment, std::size_t n) {
    void* p = counted(__libc_memalign(alignment, n));
    if (p == nullptr) {
        return ENOMEM;
    }
    *out = p;
    return 0;
}
}

namespace {
using namespace talonvireo;

template <class Record>
void BM_PeakExtraMemory(benchmark::State& state,
                        int (*member)(unsigned char*, int, int, const SFRParam&, Record&),
                        render::ChartProject project, int bits, int width, int height) {
    const render::ChartDesign design = render::designChart(project);
    render::ChartExposure exposure;
    exposure.bayer = true;
    exposure.bits = bits;
    cv::Mat raw = render::exposeChart(render::chartCoverage(design.squares, {}, 0.8, width, height),
                                      exposure);
    long long worst = 0;
    for (auto _ : state) {
        const long long before = gLive.load();
        gPeak.store(before);
        SFRParam param{4.0f, 80, 100};
        Record result{};
        member(raw.data, width, height, param, result);
        worst = std::max(worst, gPeak.load() - before);
    }
    state.counters["peak_extra_MB"] = static_cast<double>(worst) / (1 << 20);
    state.counters["bytes_per_pixel"] =
        static_cast<double>(worst) / (static_cast<double>(width) * height);
}

using Full = int (*)(unsigned char*, int, int, const SFRParam&, SFRResult&);
using Hlx5 = int (*)(unsigned char*, int, int, const SFRParam&, SFRResult_HLX5&);
using P = render::ChartProject;

BENCHMARK_CAPTURE(BM_PeakExtraMemory, talonvireoSFR_K31R22BX, static_cast<Full>(&talonvireoSFR),
                  P::K31R22BX, 10, 4000, 3000)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3);
BENCHMARK_CAPTURE(BM_PeakExtraMemory, talonvireoSFR_raw16_K74T16BX,
                  static_cast<Hlx5>(&talonvireoSFR_raw16), P::K74T16BX, 16, 4000, 3000)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3);
BENCHMARK_CAPTURE(BM_PeakExtraMemory, talonvireoSFR_raw10_HLX6C,
                  static_cast<Hlx5>(&talonvireoSFR_raw10_HLX6C), P::HLX6C, 10, 4000, 3000)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3);
BENCHMARK_CAPTURE(BM_PeakExtraMemory, talonvireoSFR_raw16_RQ8,
                  static_cast<Hlx5>(&talonvireoSFR_raw16_RQ8), P::K83P09BQ, 16, 4000, 3000)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3);
BENCHMARK_CAPTURE(BM_PeakExtraMemory, talonvireoSFR_raw16_HLX5_8K,
                  static_cast<Hlx5>(&talonvireoSFR_raw16_HLX5_8K), P::K74T16BX, 16, 7680, 4320)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3);
}  // namespace
