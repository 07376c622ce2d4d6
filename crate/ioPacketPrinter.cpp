#include "crate/ioPacketPrinter.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "crate/ioPacketWalker.h"

namespace {

void put(std::string& out, std::string_view text) { out.append(text); }

template <class Integer>
requires std::is_integral_v<Integer>
void put(std::string& out, Integer value) {
    char text[24];
    out.append(text, std::to_chars(text, text + sizeof text, value).ptr);
}

/// Appends each part, text or integer, to `out`.
template <class... Parts>
void append(std::string& out, const Parts&... parts) {
    (put(out, parts), ...);
}

/// Shortest round-trip form; non-finite values as words, NaN with its bits.
template <class T>
void appendReal(std::string& out, T value, bool json) {
    if (std::isfinite(value)) {
        char text[40];
        const auto result = std::to_chars(text, text + sizeof text, value);
        out.append(text, result.ptr);
        return;
    }
    std::string word;
    if (std::isnan(value)) {
        using Bits = std::conditional_t<sizeof(T) == 4, std::uint32_t, std::uint64_t>;
        char hex[24];
        const auto result = std::to_chars(hex, hex + sizeof hex, std::bit_cast<Bits>(value), 16);
        word = "NaN(0x" + std::string(hex, result.ptr) + ")";
    } else {
        word = value < 0 ? "-Infinity" : "Infinity";
    }
    if (json) {
        out += '"' + word + '"';
    } else {
        out += word;
    }
}

/// The length of the valid UTF-8 sequence at `text[i]`, 0 when there is none.
std::size_t utf8Length(std::string_view text, std::size_t i) {
    const auto byte = [&](std::size_t k) { return static_cast<unsigned char>(text[k]); };
    const unsigned char lead = byte(i);
    std::size_t length = 0;
    std::uint32_t code = 0;
    if (lead < 0x80) {
        return 1;
    } else if (lead >= 0xc2 && lead <= 0xdf) {
        length = 2;
        code = lead & 0x1f;
    } else if (lead >= 0xe0 && lead <= 0xef) {
        length = 3;
        code = lead & 0x0f;
    } else if (lead >= 0xf0 && lead <= 0xf4) {
        length = 4;
        code = lead & 0x07;
    } else {
        return 0;
    }
    if (i + length > text.size()) {
        return 0;
    }
    for (std::size_t k = 1; k < length; ++k) {
        if ((byte(i + k) & 0xc0) != 0x80) {
            return 0;
        }
        code = (code << 6) | (byte(i + k) & 0x3f);
    }
    const bool overlong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
    const bool surrogate = code >= 0xd800 && code <= 0xdfff;
    return overlong || surrogate || code > 0x10ffff ? 0 : length;
}

void appendQuoted(std::string& out, std::string_view text, bool json) {
    static const char digits[] = "0123456789abcdef";
    out += '"';
    for (std::size_t i = 0; i < text.size();) {
        const unsigned char c = static_cast<unsigned char>(text[i]);
        if (c == '"' || c == '\\') {
            out += '\\';
            out += static_cast<char>(c);
            ++i;
        } else if (c == '\n') {
            out += "\\n";
            ++i;
        } else if (c == '\t') {
            out += "\\t";
            ++i;
        } else if (c < 0x20 || c == 0x7f) {
            out += json ? "\\u00" : "\\x";
            out += digits[c >> 4];
            out += digits[c & 15];
            ++i;
        } else if (const std::size_t length = utf8Length(text, i); length != 0) {
            out.append(text.substr(i, length));
            i += length;
        } else if (json) {
            out += "\\ufffd";
            ++i;
        } else {
            out += "\\x";
            out += digits[c >> 4];
            out += digits[c & 15];
            ++i;
        }
    }
    out += '"';
}

template <class T>
void appendElement(std::string& out, const void* head, std::size_t i, bool json) {
    T element;
    std::memcpy(&element, static_cast<const T*>(head) + i, sizeof(T));
    if constexpr (std::is_floating_point_v<T>) {
        appendReal(out, element, json);
    } else {
        append(out, element);
    }
}

void appendElements(std::string& out, const ioPacketVisitor::Value& v, bool json) {
    for (std::size_t i = 0; i < v.headCount; ++i) {
        if (i != 0) {
            out += json ? "," : " ";
        }
        switch (v.kind) {
            case ioValueKind::floatArray:
                appendElement<float>(out, v.head, i, json);
                break;
            case ioValueKind::doubleArray:
                appendElement<double>(out, v.head, i, json);
                break;
            case ioValueKind::int32Array:
                appendElement<std::int32_t>(out, v.head, i, json);
                break;
            case ioValueKind::uint32Array:
                appendElement<std::uint32_t>(out, v.head, i, json);
                break;
            default:
                appendElement<std::uint8_t>(out, v.head, i, json);
                break;
        }
    }
}

/// The scalar part of a value, as text or a JSON value.
void appendScalar(std::string& out, const ioPacketVisitor::Value& v, bool json) {
    switch (v.kind) {
        case ioValueKind::int32:
        case ioValueKind::int64:
        case ioValueKind::pointer:
            append(out, v.integer);
            break;
        case ioValueKind::uint32:
            append(out, v.unsignedInteger);
            break;
        case ioValueKind::float32:
            appendReal(out, static_cast<float>(v.real), json);
            break;
        case ioValueKind::float64:
            appendReal(out, v.real, json);
            break;
        case ioValueKind::boolean:
            out += v.integer != 0 ? "true" : "false";
            break;
        case ioValueKind::string:
            appendQuoted(out, v.text, json);
            break;
        default:
            break;
    }
}

/// Collects the listing and hands it to `sink` in pieces of about 64 KiB. Open containers
/// are kept on a stack, so that a walk stopped by damage still closes every JSON bracket.
class Printer : public ioPacketVisitor {
public:
    Printer(std::function<void(std::string_view)> sink, bool json)
        : sink_(std::move(sink)), json_(json) {}

    void begin(const ioReadContext& context) {
        if (json_) {
            append(out_, "{\"format\":\"FWPK\",\"minorVersion\":", context.getMinorVersion(),
                   ",\"packets\":[");
        }
        frames_.push_back({Frame::packets, true});
    }

    void startPacket(const Packet& p) override {
        ++packets_;
        if (json_) {
            element();
            append(out_, "\n{\"index\":", p.index, ",\"offset\":", p.offset, ",\"type\":");
            appendQuoted(out_, p.typeName, true);
            append(out_, ",\"object\":", p.objectReference, ",\"payloadLength\":", p.payloadLength,
                   ",\"chunks\":[");
        } else {
            append(out_, "packet ", p.index, " at ", p.offset, ": ", p.typeName);
            if (p.objectReference != 0) {
                append(out_, " (object ", p.objectReference, ")");
            }
            append(out_, ", payload ", p.payloadLength, " bytes\n");
        }
        frames_.push_back({Frame::container, true});
    }

    void startChunk(const Chunk& c) override {
        if (frames_.back().kind == Frame::chunk) {
            close(); // the previous chunk of the same packet or sub-packet
        }
        if (json_) {
            element();
            append(out_, "{\"index\":", c.index, ",\"offset\":", c.offset, ",\"length\":", c.length,
                   ",\"values\":[");
        } else {
            indent();
            append(out_, "chunk ", c.index, " at ", c.offset, ", ", c.length, " bytes\n");
        }
        frames_.push_back({Frame::chunk, true});
    }

    void value(const Value& v) override {
        if (json_) {
            element();
            append(out_, "{\"offset\":", v.offset, ",\"kind\":\"", ioValueKindName(v.kind), "\"");
            if (ioValueKindIsArray(v.kind)) {
                append(out_, ",\"count\":", v.count, ",\"values\":[");
                appendElements(out_, v, true);
                out_ += "]";
                if (v.count > v.headCount) {
                    append(out_, ",\"elided\":", v.count - v.headCount);
                }
            } else {
                out_ += ",\"value\":";
                appendScalar(out_, v, true);
            }
            out_ += "}";
        } else {
            indent();
            append(out_, "@", v.offset, " ", ioValueKindName(v.kind), " ");
            if (ioValueKindIsArray(v.kind)) {
                append(out_, "[", v.count, "]");
                if (v.headCount != 0) {
                    out_ += " ";
                    appendElements(out_, v, false);
                }
                if (v.count > v.headCount) {
                    append(out_, " ... (", v.count - v.headCount, " more)");
                }
            } else {
                appendScalar(out_, v, false);
            }
            out_ += "\n";
        }
        flushSome();
    }

    void startSubPacket(std::uint64_t offset) override {
        if (json_) {
            element();
            append(out_, "{\"offset\":", offset, ",\"kind\":\"sub-packet\",\"chunks\":[");
        } else {
            indent();
            append(out_, "@", offset, " sub-packet\n");
        }
        frames_.push_back({Frame::container, true});
    }

    void endSubPacket() override { closeContainer(); }
    void endPacket() override {
        closeContainer();
        flushSome();
    }

    void finish(const ioReadContext& context) {
        while (frames_.size() > 1) {
            close();
        }
        if (json_) {
            out_ += packets_ == 0 ? "]" : "\n]";
            append(out_, ",\"packetCount\":", packets_, ",\"error\":");
            if (context.ok()) {
                out_ += "null";
            } else {
                const ioError& e = context.error();
                out_ += "{\"message\":";
                appendQuoted(out_, e.message, true);
                append(out_, ",\"packetIndex\":", e.packetIndex, ",\"type\":");
                appendQuoted(out_, e.typeName, true);
                append(out_, ",\"byteOffset\":", e.byteOffset, "}");
            }
            out_ += "}\n";
        } else if (context.ok()) {
            append(out_, packets_, (packets_ == 1 ? " packet\n" : " packets\n"));
        } else {
            out_ += "error: " + context.error().toString() + "\n";
        }
        sink_(out_);
        out_.clear();
    }

private:
    struct Frame {
        enum Kind { packets, container, chunk } kind;
        bool empty;
    };

    /// Starts a new element of the innermost JSON array.
    void element() {
        if (!frames_.back().empty) {
            out_ += ",";
        }
        frames_.back().empty = false;
    }

    void close() {
        if (json_) {
            out_ += "]}";
        }
        frames_.pop_back();
    }

    void closeContainer() {
        if (frames_.back().kind == Frame::chunk) {
            close();
        }
        close();
    }

    /// Two spaces per open packet, sub-packet and chunk.
    void indent() { out_.append(2 * (frames_.size() - 1), ' '); }

    void flushSome() {
        if (out_.size() >= 65536) {
            sink_(out_);
            out_.clear();
        }
    }

    std::function<void(std::string_view)> sink_;
    bool json_;
    std::string out_;
    std::int64_t packets_ = 0;
    std::vector<Frame> frames_;
};

bool print(ioReadContext& context, std::function<void(std::string_view)> sink,
           const ioPrintOptions& options) {
    Printer printer(std::move(sink), options.json);
    printer.begin(context);
    walkPacketFile(context, printer, options.maxArrayElements);
    printer.finish(context);
    return context.ok();
}

} // namespace

bool printPacketFile(ioReadContext& context, std::ostream& out, const ioPrintOptions& options) {
    return print(
        context,
        [&out](std::string_view text) {
            out.write(text.data(), static_cast<std::streamsize>(text.size()));
        },
        options);
}

bool printPacketFile(ioReadContext& context, std::FILE* out, const ioPrintOptions& options) {
    return print(
        context, [out](std::string_view text) { std::fwrite(text.data(), 1, text.size(), out); },
        options);
}
