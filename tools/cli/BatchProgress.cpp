#include "BatchProgress.h"

#include <unistd.h>

#include <algorithm>
#include <string>

namespace talonvireo {
namespace cli {

namespace {
std::string clock(double seconds) {
    const long s = static_cast<long>(seconds + 0.5);
    char text[32];
    std::snprintf(text, sizeof text, "%ld:%02ld:%02ld", s / 3600, s / 60 % 60, s % 60);
    return text;
}
}  // namespace

BatchProgress::BatchProgress(int total, std::FILE* out)
    : total_(total),
      out_(out),
      shown_(out != nullptr && isatty(fileno(out)) != 0),
      start_(std::chrono::steady_clock::now()),
      lastDrawn_(start_) {}

void BatchProgress::update(int done, int failed) {
    if (!shown_) {
        return;
    }
    const auto now = std::chrono::steady_clock::now();
    if (done < total_ && now - lastDrawn_ < std::chrono::milliseconds(100)) {
        return;
    }
    lastDrawn_ = now;
    const double elapsed = std::chrono::duration<double>(now - start_).count();
    const double rate = elapsed > 0.0 ? done / elapsed : 0.0;
    constexpr int kBar = 30;
    const int filled = total_ > 0 ? kBar * done / total_ : kBar;
    const std::string bar = std::string(filled, '#') + std::string(kBar - filled, '.');
    const std::string left = rate > 0.0 ? clock((total_ - done) / rate) : "-:--:--";
    std::fprintf(out_, "\r[%s] %d/%d frames, %d failed, %.1f frames/s, %s left ", bar.c_str(), done,
                 total_, failed, rate, left.c_str());
    std::fflush(out_);
    drawn_ = true;
}

void BatchProgress::finish() {
    if (drawn_) {
        std::fputc('\n', out_);
        drawn_ = false;
    }
}

}  // namespace cli
}  // namespace talonvireo
