#pragma once

#include <cstdio>

#include "tessar/os/StopWatch.h"

namespace formworkTool {

/// A progress line on standard error for work that takes a while: "render 42%", redrawn in
/// place. Nothing is printed when the reporter is off (`--quiet`, or standard error is not a
/// terminal), nor during the first second of a task, so that quick work stays silent; a line
/// that was shown is cleared when the task ends. The picture and every other output are the
/// same whether it is shown or not.
class Progress {
public:
    /// On when `enabled` and standard error is a terminal.
    explicit Progress(bool enabled);
    /// A reporter that prints to `stream` whenever `enabled`, for tests.
    Progress(bool enabled, std::FILE* stream) noexcept : stream_(enabled ? stream : nullptr) {}
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress() { finish(); }

    /// Starts a task named `label` ("import", "render"), ending the previous one.
    void start(const char* label);
    /// Reports `fraction` (0 to 1) of the current task done; cheap enough to call often, as it
    /// redraws at most when the whole percentage changes.
    void update(double fraction);
    /// Ends the current task, clearing its line if one was shown.
    void finish();

    /// Whether lines may be printed at all.
    bool enabled() const noexcept { return stream_ != nullptr; }
    /// Seconds a task runs before its line appears; 0 shows it at once (for tests).
    void setDelay(double seconds) noexcept { delay_ = seconds; }

private:
    std::FILE* stream_;
    const char* label_ = nullptr;
    koOS::StopWatch watch_;
    double delay_ = 1.0;
    int shownPercent_ = -1;
};

} // namespace formworkTool
