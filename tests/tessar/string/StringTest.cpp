#include "tessar/string/String.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <compare>
#include <cstdarg>
#include <iterator>
#include <memory>
#include <new>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "tessar/core/Containers.h"
#include "tests/support/HeapProbe.h"

using koString::CString;
using koString::IString;

namespace {

constexpr char16_t r = 0xFFFD;

// Formats the same arguments twice from one list, which must not be used up by the first.
__attribute__((format(printf, 1, 2))) CString formatThroughList(const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    CString first = CString::vformat(fmt, args);
    EXPECT_EQ(CString::vformat(fmt, args).view(), first.view());
    va_end(args);
    return first;
}

// Copying and moving, for either string type. `longText` is too long to be kept inside the
// object, so a copy of it must allocate.
template <class Text>
void checkCopyAndMove(const Text& longText) {
    Text a = longText;
    Text& sameA = a;
    a = std::move(sameA);
    Text moved(std::move(a));
    EXPECT_TRUE(a.empty());
    a = std::move(moved);
    EXPECT_TRUE(moved.empty());
    static_assert(std::is_nothrow_move_constructible_v<Text> &&
                  std::is_nothrow_move_assignable_v<Text>);

    // A copy that cannot allocate leaves the target as it was.
    const auto* storage = a.data();
    {
        const heapProbe::FailureScope failing(0);
        EXPECT_THROW(a = longText, std::bad_alloc);
    }
    EXPECT_EQ(a.view(), longText.view());
    EXPECT_EQ(a.data(), storage);
}

bool isScalarValue(char32_t c) { return c <= 0x10FFFF && (c < 0xD800 || c > 0xDFFF); }

// Encoders written from the bit layouts, independently of the library's.
std::string referenceUtf8(char32_t c) {
    const auto byte = [](char32_t value) { return static_cast<char>(value); };
    const auto tail = [c](int shift) { return static_cast<char>(0x80 | ((c >> shift) & 0x3F)); };
    return c < 0x80      ? std::string{byte(c)}
           : c < 0x800   ? std::string{byte(0xC0 | (c >> 6)), tail(0)}
           : c < 0x10000 ? std::string{byte(0xE0 | (c >> 12)), tail(6), tail(0)}
                         : std::string{byte(0xF0 | (c >> 18)), tail(12), tail(6), tail(0)};
}

std::u16string referenceUtf16(char32_t c) {
    const auto unit = [](char32_t value) { return static_cast<char16_t>(value); };
    return c < 0x10000 ? std::u16string{unit(c)}
                       : std::u16string{unit(0xD800 + (c - 0x10000) / 0x400),
                                        unit(0xDC00 + (c - 0x10000) % 0x400)};
}

// True when the bytes are exactly the encoding of a scalar value, which is put in c.
bool wellFormed(std::string_view sequence, char32_t& c) {
    const auto lead = static_cast<unsigned char>(sequence[0]);
    c = sequence.size() == 1 ? lead : lead & (0x7F >> sequence.size());
    for (std::size_t k = 1; k < sequence.size(); ++k) {
        c = c * 64 + (static_cast<unsigned char>(sequence[k]) & 0x3F);
    }
    return isScalarValue(c) && referenceUtf8(c) == sequence;
}

// UTF-8 decoding straight from the definition of a maximal subpart: at each offset, the
// longest run (at least one byte) that is a well-formed sequence or the start of one gives
// its code point or, if only a start, one U+FFFD.
std::u16string referenceDecode(std::string_view text) {
    // The bytes before the last of a multi-byte sequence are the same for 64 code points in a
    // row, and every boundary between lengths or around surrogates is a multiple of 64, so one
    // code point in 64 gives every proper prefix.
    static const std::set<std::string> prefixes = [] {
        std::set<std::string> all;
        for (char32_t c = 0x80; c <= 0x10FFFF; c += 64) {
            for (std::size_t k = 1; isScalarValue(c) && k < referenceUtf8(c).size(); ++k) {
                all.insert(referenceUtf8(c).substr(0, k));
            }
        }
        return all;
    }();
    std::u16string out;
    for (std::size_t length = 0; !text.empty(); text.remove_prefix(length)) {
        char32_t c = 0;
        length = std::min<std::size_t>(4, text.size());
        while (length > 1 && !wellFormed(text.substr(0, length), c) &&
               prefixes.count(std::string(text.substr(0, length))) == 0) {
            --length;
        }
        out += wellFormed(text.substr(0, length), c) ? referenceUtf16(c) : std::u16string{r};
    }
    return out;
}

} // namespace

TEST(CString, ConstructsAppendsAndKeepsInnerNul) {
    const char* none = nullptr;
    EXPECT_TRUE(CString(none) == none && CString(none, 0).empty() && CString("a") > none);
    CString text("uvs and sts", 3);
    text.append(std::string_view("icesXYZ", 4)).append("!?", 1).append(none, 0);
    text += '\0';
    // A NUL inside is kept: the size and comparisons see it, c_str() stops at it.
    EXPECT_EQ(text.view(), std::string_view("uvsices!\0", 9));
    EXPECT_STREQ(text.c_str(), "uvsices!");
    text.reserve(500);
    const heapProbe::Scope heap;
    for (int i = 0; i < 40; ++i) {
        text += "0123456789";
    }
    EXPECT_EQ(heap.calls(), 0u);
    EXPECT_EQ(text.size(), 409u);
}

TEST(CString, OrderEqualityAndHashMatchBytewiseReference) {
    // A small alphabet makes equal strings and shared prefixes common; bytes on both sides of
    // 0x80 catch a signed byte comparison.
    const char alphabet[] = {'a', 'b', 'A', '\x7f', '\x80', '\xff'};
    std::mt19937 engine(7);
    std::vector<std::string> strings(300);
    for (std::string& text : strings) {
        std::generate_n(std::back_inserter(text), engine() % 6,
                        [&] { return alphabet[engine() % 6]; });
    }
    const ko::hash<CString> hash;
    for (const std::string& a : strings) {
        for (const std::string& b : strings) {
            const auto order = std::lexicographical_compare_three_way(
                a.begin(), a.end(), b.begin(), b.end(),
                [](unsigned char x, unsigned char y) { return x <=> y; });
            const CString ca(a);
            ASSERT_EQ(ca <=> CString(b), order);
            ASSERT_EQ(ca <=> b.c_str(), order);
            ASSERT_EQ(ca == std::string_view(b), order == 0);
            ASSERT_TRUE(order != 0 || hash(ca) == hash(b));
        }
    }
}

TEST(CString, FormatsAnyLength) {
    EXPECT_EQ(formatThroughList("%d %s %.2f", -42, "name", 1.5).view(), "-42 name 1.50");
    // Lengths around the 256-byte stack buffer, where a second pass starts, and well past it.
    for (int length : {1, 255, 256, 257, 6000}) {
        EXPECT_EQ(formatThroughList("%*d", length, 7).view(), std::string(length - 1, ' ') + "7");
    }
}

TEST(CString, CopyAndMoveLeaveValidStates) { checkCopyAndMove(CString(std::string(100, 'q'))); }

TEST(IString, DecodingMatchesDefinition) {
    // The worked example of the Unicode standard's replacement practice checks the reference.
    const std::string example = "\x61\xF1\x80\x80\xE1\x80\xC2\x62\x80\x63\x80\xBF\x64";
    EXPECT_EQ(referenceDecode(example), std::u16string({0x61, r, r, r, 0x62, r, 0x63, r, r, 0x64}));
    // Every input of up to four of the bytes where the rules change, each in a heap block of
    // exactly its size, so that the sanitizer build catches any read beyond it.
    const unsigned edges[] = {0x00, 0x41, 0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF,
                              0xC0, 0xC1, 0xC2, 0xDF, 0xE0, 0xE1, 0xEC, 0xED, 0xEE,
                              0xEF, 0xF0, 0xF1, 0xF3, 0xF4, 0xF5, 0xFF};
    std::vector<std::string> inputs(1);
    for (std::size_t i = 0; inputs[i].size() < 4; ++i) {
        for (unsigned byte : edges) {
            inputs.push_back(inputs[i] + static_cast<char>(byte));
        }
    }
    for (const std::string& input : inputs) {
        const auto block = std::make_unique_for_overwrite<char[]>(input.size());
        input.copy(block.get(), input.size());
        ASSERT_TRUE(IString(std::string_view(block.get(), input.size())).view() ==
                    referenceDecode(input))
            << testing::PrintToString(input);
    }
}

TEST(IString, RoundTripsEveryScalarValue) {
    std::string utf8;
    std::u16string utf16;
    for (char32_t c = 0; c <= 0x10FFFF; c = c == 0xD7FF ? 0xE000 : c + 1) {
        utf8 += referenceUtf8(c);
        utf16 += referenceUtf16(c);
    }
    EXPECT_TRUE(IString(std::string_view(utf8)).view() == utf16);
    EXPECT_TRUE(IString(CString(utf8)).toUtf8().view() == utf8);
    // U+10000 sorts before U+E000 by code units (D800 < E000), though not by code points.
    EXPECT_LT(IString("\xF0\x90\x80\x80"), IString("\xEE\x80\x80"));
}

TEST(IString, KeepsUnpairedSurrogatesAndWritesThemAsReplacement) {
    // A high surrogate before a high one, a pair, a low one before a low one, a lone low one,
    // a high one before a unit that is no surrogate and one at the end.
    const std::u16string units = {0xD800, 0xD800, 0xDC00, 0xDC00, 0xDFFF, 0xDBFF, 0x41, 0xD800};
    const std::string replaced = "\xEF\xBF\xBD";
    const IString text{std::u16string_view(units)};
    EXPECT_EQ(text.view(), units);
    EXPECT_EQ(text.toUtf8().view(),
              replaced + "\xF0\x90\x80\x80" + replaced + replaced + replaced + "A" + replaced);
    // A high surrogate in the last unit of a view is not paired with the unit after it.
    EXPECT_EQ(IString(std::u16string_view(u"\U00010000", 1)).toUtf8().view(), replaced);
}

TEST(IString, CopyAndMoveLeaveValidStates) {
    checkCopyAndMove(IString(std::u16string_view(std::u16string(100, u'\u00E9'))));
}
