#pragma once

#include <atomic>
#include <cstdarg>
#include <functional>
#include <string_view>
#include <utility>

#include "tessar/TessarExport.h"

namespace koOS {

/// A switchable output for diagnostic messages: printf-style messages go to standard error,
/// or to a sink the host sets, and only while the channel is enabled. A new channel is
/// disabled; nothing but the host turns it on (the environment is never read).
///
/// `print()` may run on several threads at once, and `setEnabled()` at any time; `setSink()`
/// must not run while another thread prints.
class TESSAR_EXPORT DebugChannel {
public:
    /// Receives each message whole, as one piece of text with no terminator added.
    using Sink = std::function<void(std::string_view message)>;

    DebugChannel() = default;

    DebugChannel(const DebugChannel&) = delete;
    DebugChannel& operator=(const DebugChannel&) = delete;

    /// \name Switch
    /// @{

    bool enabled() const noexcept { return enabled_.load(std::memory_order_relaxed); }
    void setEnabled(bool enabled) noexcept { enabled_.store(enabled, std::memory_order_relaxed); }

    /// @}

    /// \name Output
    /// @{

    /// Sends later messages to `sink`; an empty sink sends them to standard error again.
    void setSink(Sink sink) noexcept { sink_ = std::move(sink); }

    /// Formats a message as `std::printf` does and sends it whole, however long, when the
    /// channel is enabled; does nothing (not even formatting) when disabled. A format the C
    /// library rejects sends nothing. On standard error each message is one locked write of
    /// the C stream, so messages of several threads do not interleave.
    void print(const char* format, ...) __attribute__((format(printf, 2, 3)));
    /// As `print`, with the arguments in a `va_list`.
    void printList(const char* format, std::va_list arguments)
        __attribute__((format(printf, 2, 0)));

    /// @}

private:
    std::atomic<bool> enabled_{false};
    Sink sink_;
};

} // namespace koOS
