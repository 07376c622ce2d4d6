#include "tools/formwork/Progress.h"

#include <unistd.h>

namespace formworkTool {

Progress::Progress(bool enabled) : Progress(enabled && isatty(STDERR_FILENO) == 1, stderr) {}

void Progress::start(const char* label) {
    finish();
    label_ = label;
    watch_.restart();
}

void Progress::update(double fraction) {
    if (stream_ == nullptr || label_ == nullptr || watch_.stop() < delay_) {
        return;
    }
    const int percent = fraction <= 0.0   ? 0
                        : fraction >= 1.0 ? 100
                                          : static_cast<int>(fraction * 100.0);
    if (percent != shownPercent_) {
        shownPercent_ = percent;
        std::fprintf(stream_, "\r%s %3d%%", label_, percent);
        std::fflush(stream_);
    }
}

void Progress::finish() {
    if (stream_ != nullptr && shownPercent_ >= 0) {
        // Blank the line and return to its start, so the next output begins clean.
        std::fprintf(stream_, "\r\033[K");
        std::fflush(stream_);
    }
    label_ = nullptr;
    shownPercent_ = -1;
}

} // namespace formworkTool
