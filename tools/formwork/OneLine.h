#pragma once

#include <string>

namespace formworkTool {

/// `text` with its line breaks turned into spaces and trailing spaces dropped: the program
/// reports every error in one line, whatever a library's message looks like.
inline std::string oneLine(std::string text) {
    for (char& c : text) {
        if (c == '\n' || c == '\r') {
            c = ' ';
        }
    }
    while (!text.empty() && text.back() == ' ') {
        text.pop_back();
    }
    return text;
}

} // namespace formworkTool
