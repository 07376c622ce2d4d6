#include "tools/formwork/JsonWriter.h"

#include <cinttypes>
#include <cmath>
#include <cstdio>

namespace formworkTool {

void JsonWriter::newLine() {
    text_ += '\n';
    text_.append(2 * nonEmpty_.size(), ' ');
}

void JsonWriter::beginValue() {
    if (afterKey_) {
        afterKey_ = false;
        return;
    }
    if (!nonEmpty_.empty()) {
        if (nonEmpty_.back()) {
            text_ += compact_.back() ? ", " : ",";
        }
        nonEmpty_.back() = true;
        if (!compact_.back()) {
            newLine();
        }
    }
}

void JsonWriter::open(char bracket) {
    beginValue();
    text_ += bracket;
    nonEmpty_.push_back(false);
    compact_.push_back(false);
}

void JsonWriter::close(char bracket) {
    const bool hadMembers = nonEmpty_.back();
    const bool compact = compact_.back();
    nonEmpty_.pop_back();
    compact_.pop_back();
    if (hadMembers && !compact) {
        newLine();
    }
    text_ += bracket;
    if (nonEmpty_.empty()) {
        text_ += '\n';
    }
}

void JsonWriter::key(std::string_view name) {
    value(name);
    text_ += ": ";
    afterKey_ = true;
}

void JsonWriter::value(std::string_view text) {
    beginValue();
    text_ += '"';
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            text_ += '\\';
            text_ += c;
        } else if (c == '\n') {
            text_ += "\\n";
        } else if (c == '\t') {
            text_ += "\\t";
        } else if (byte < 0x20) {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\u%04x", byte);
            text_ += escaped;
        } else {
            text_ += c;
        }
    }
    text_ += '"';
}

void JsonWriter::value(std::int64_t number) {
    beginValue();
    char digits[24];
    std::snprintf(digits, sizeof digits, "%" PRId64, number);
    text_ += digits;
}

void JsonWriter::value(double number) {
    if (!std::isfinite(number)) {
        null();
        return;
    }
    beginValue();
    char digits[32];
    std::snprintf(digits, sizeof digits, "%.9g", number);
    text_ += digits;
}

void JsonWriter::value(bool flag) {
    beginValue();
    text_ += flag ? "true" : "false";
}

void JsonWriter::null() {
    beginValue();
    text_ += "null";
}

} // namespace formworkTool
