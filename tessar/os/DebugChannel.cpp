#include "tessar/os/DebugChannel.h"

#include <cstdio>
#include <memory>

namespace koOS {

namespace {

// A copy of an argument list, released however the scope is left.
struct ArgumentsCopy {
    explicit ArgumentsCopy(std::va_list arguments) { va_copy(list, arguments); }
    ~ArgumentsCopy() { va_end(list); }
    ArgumentsCopy(const ArgumentsCopy&) = delete;
    ArgumentsCopy& operator=(const ArgumentsCopy&) = delete;

    std::va_list list;
};

// Ends an argument list that va_start began, however the scope is left.
struct ArgumentsEnd {
    ~ArgumentsEnd() { va_end(list); }

    std::va_list& list;
};

} // namespace

void DebugChannel::print(const char* format, ...) {
    if (!enabled()) {
        return;
    }
    std::va_list arguments;
    va_start(arguments, format);
    const ArgumentsEnd end{arguments};
    printList(format, arguments);
}

void DebugChannel::printList(const char* format, std::va_list arguments) {
    if (!enabled()) {
        return;
    }
    // Most messages are a line or two: format on the stack, and on the heap only when the
    // first attempt reports that the message is longer.
    char local[512];
    ArgumentsCopy retry(arguments);
    const int length = std::vsnprintf(local, sizeof local, format, arguments);
    std::unique_ptr<char[]> large;
    const char* text = local;
    if (length >= static_cast<int>(sizeof local)) {
        large = std::make_unique<char[]>(static_cast<std::size_t>(length) + 1);
        std::vsnprintf(large.get(), static_cast<std::size_t>(length) + 1, format, retry.list);
        text = large.get();
    }
    if (length <= 0) {
        return;
    }

    const std::string_view message(text, static_cast<std::size_t>(length));
    if (sink_) {
        sink_(message);
    } else {
        std::fwrite(message.data(), 1, message.size(), stderr);
        std::fflush(stderr);
    }
}

} // namespace koOS
