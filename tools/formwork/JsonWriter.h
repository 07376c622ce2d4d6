#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace formworkTool {

/// Builds a JSON text for `--json` output, indented by two spaces a level, members in the
/// order they are written. Strings are escaped (control characters as \u00XX); numbers that
/// are not finite are written as null, as JSON has no other spelling for them. Floats are
/// written with nine significant digits, enough to read back the same float.
///
/// The caller pairs every begin with its end and gives a key before each member of an object.
class JsonWriter {
public:
    void beginObject() { open('{'); }
    void endObject() { close('}'); }
    /// An array; with `compact` its members stay on one line (for short lists of numbers).
    void beginArray(bool compact = false) {
        open('[');
        compact_.back() = compact;
    }
    void endArray() { close(']'); }
    /// The key of the next member of the current object.
    void key(std::string_view name);

    void value(std::string_view text);
    void value(const char* text) { value(std::string_view(text)); }
    void value(std::int64_t number);
    void value(int number) { value(static_cast<std::int64_t>(number)); }
    void value(double number);
    void value(bool flag);
    void null();

    /// The text so far, with a final newline once the outermost value is closed.
    const std::string& text() const noexcept { return text_; }

private:
    void open(char bracket);
    void close(char bracket);
    // Starts a value: a comma and line break inside a container, unless it follows a key.
    void beginValue();
    void newLine();

    std::string text_;
    // One entry per open container: whether it holds a member yet, and whether it is compact.
    std::vector<bool> nonEmpty_;
    std::vector<bool> compact_;
    bool afterKey_ = false;
};

} // namespace formworkTool
