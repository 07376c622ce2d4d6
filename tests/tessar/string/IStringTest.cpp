#include "tessar/string/IString.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <initializer_list>
#include <memory>
#include <new>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "tessar/core/Containers.h"
#include "tessar/string/CString.h"
#include "tests/support/HeapProbe.h"
#include "tests/tessar/string/StringPrinters.h"

using koString::CString;
using koString::IString;

namespace {

constexpr char16_t replacement = 0xFFFD;

std::string bytes(std::initializer_list<unsigned> values) {
    std::string text;
    for (unsigned value : values) {
        text += static_cast<char>(value);
    }
    return text;
}

std::u16string units(std::initializer_list<unsigned> values) {
    std::u16string text;
    for (unsigned value : values) {
        text += static_cast<char16_t>(value);
    }
    return text;
}

std::string hex(std::string_view text) {
    std::string out;
    for (char byte : text) {
        char digits[4];
        std::snprintf(digits, sizeof(digits), "%02X ", static_cast<unsigned char>(byte));
        out += digits;
    }
    return out;
}

bool isScalarValue(char32_t c) { return c <= 0x10FFFF && (c < 0xD800 || c > 0xDFFF); }

// Encoders written from the bit layouts, independently of the library's.
std::string referenceUtf8(char32_t c) {
    if (c < 0x80) {
        return bytes({c});
    }
    if (c < 0x800) {
        return bytes({0xC0 | (c >> 6), 0x80 | (c & 0x3F)});
    }
    if (c < 0x10000) {
        return bytes({0xE0 | (c >> 12), 0x80 | ((c >> 6) & 0x3F), 0x80 | (c & 0x3F)});
    }
    return bytes(
        {0xF0 | (c >> 18), 0x80 | ((c >> 12) & 0x3F), 0x80 | ((c >> 6) & 0x3F), 0x80 | (c & 0x3F)});
}

std::u16string referenceUtf16(char32_t c) {
    if (c < 0x10000) {
        return units({c});
    }
    return units({0xD800 + ((c - 0x10000) / 0x400), 0xDC00 + ((c - 0x10000) % 0x400)});
}

// UTF-8 decoding straight from the definition of a maximal subpart: at each offset, either a
// well-formed sequence starts there, or the longest run that is the start of some well-formed
// sequence (at least one byte) becomes one U+FFFD.
class ReferenceDecoder {
public:
    ReferenceDecoder() {
        // The bytes before the last of a multi-byte sequence are the same for 64 code points
        // in a row, and every boundary between lengths or around surrogates is a multiple of
        // 64, so one code point in 64 gives every proper prefix.
        for (char32_t c = 0x80; c <= 0x10FFFF; c += 64) {
            if (isScalarValue(c)) {
                const std::string sequence = referenceUtf8(c);
                for (std::size_t k = 1; k < sequence.size(); ++k) {
                    prefixes_.insert(sequence.substr(0, k));
                }
            }
        }
    }

    std::u16string decode(std::string_view text) const {
        std::u16string out;
        std::size_t i = 0;
        while (i < text.size()) {
            char32_t c = 0;
            std::size_t length = 1;
            while (length <= 4 &&
                   !(i + length <= text.size() && wellFormed(text.substr(i, length), c))) {
                ++length;
            }
            if (length <= 4) {
                out += referenceUtf16(c);
                i += length;
                continue;
            }
            std::size_t subpart = 3;
            while (subpart > 1 && !(i + subpart <= text.size() &&
                                    prefixes_.count(std::string(text.substr(i, subpart))))) {
                --subpart;
            }
            out += replacement;
            i += subpart;
        }
        return out;
    }

private:
    // True when the bytes are exactly the shortest encoding of a scalar value, put in c.
    static bool wellFormed(std::string_view sequence, char32_t& c) {
        const auto lead = static_cast<unsigned char>(sequence[0]);
        const std::size_t length = lead < 0x80             ? 1
                                   : (lead & 0xE0) == 0xC0 ? 2
                                   : (lead & 0xF0) == 0xE0 ? 3
                                   : (lead & 0xF8) == 0xF0 ? 4
                                                           : 0;
        if (length != sequence.size()) {
            return false;
        }
        c = length == 1 ? lead : lead & (0x7F >> length);
        for (std::size_t k = 1; k < length; ++k) {
            const auto byte = static_cast<unsigned char>(sequence[k]);
            if ((byte & 0xC0) != 0x80) {
                return false;
            }
            c = c * 64 + (byte & 0x3F);
        }
        return isScalarValue(c) && referenceUtf8(c) == sequence;
    }

    std::set<std::string> prefixes_;
};

} // namespace

TEST(IString, ConstructsFromEachSource) {
    EXPECT_TRUE(IString().empty());
    const char* none = nullptr;
    EXPECT_TRUE(IString(none).empty());
    ASSERT_NE(IString(none).data(), nullptr);

    const IString name("caf\xC3\xA9");
    EXPECT_EQ(name.size(), 4u);
    EXPECT_EQ(name.view(), u"caf\u00E9");
    EXPECT_EQ(name.data()[4], u'\0');
    EXPECT_EQ(IString(std::string_view("caf\xC3\xA9 au lait", 5)), name);
    EXPECT_EQ(IString(CString("caf\xC3\xA9")), name);
    EXPECT_EQ(IString(std::u16string_view(u"caf\u00E9")), name);

    // A NUL is a character like any other when the length is given.
    const IString withNul(std::string_view("a\0b", 3));
    EXPECT_EQ(withNul.view(), units({'a', 0, 'b'}));
    EXPECT_EQ(withNul.toUtf8().view(), std::string_view("a\0b", 3));
    EXPECT_TRUE(IString(std::string_view()).toUtf8().empty());
}

TEST(IString, ConvertsEachCodePointClassBothWays) {
    struct Case {
        char32_t codePoint;
        std::string utf8;
        std::u16string utf16;
    };
    const std::vector<Case> cases = {
        {0x0000, bytes({0x00}), units({0x0000})},
        {0x0041, bytes({0x41}), units({0x0041})},
        {0x007F, bytes({0x7F}), units({0x007F})},
        {0x0080, bytes({0xC2, 0x80}), units({0x0080})},
        {0x00E9, bytes({0xC3, 0xA9}), units({0x00E9})},
        {0x07FF, bytes({0xDF, 0xBF}), units({0x07FF})},
        {0x0800, bytes({0xE0, 0xA0, 0x80}), units({0x0800})},
        {0x20AC, bytes({0xE2, 0x82, 0xAC}), units({0x20AC})},
        {0xD7FF, bytes({0xED, 0x9F, 0xBF}), units({0xD7FF})},
        {0xE000, bytes({0xEE, 0x80, 0x80}), units({0xE000})},
        {0xFFFD, bytes({0xEF, 0xBF, 0xBD}), units({0xFFFD})},
        {0xFFFF, bytes({0xEF, 0xBF, 0xBF}), units({0xFFFF})},
        {0x10000, bytes({0xF0, 0x90, 0x80, 0x80}), units({0xD800, 0xDC00})},
        {0x1F600, bytes({0xF0, 0x9F, 0x98, 0x80}), units({0xD83D, 0xDE00})},
        {0x10FFFF, bytes({0xF4, 0x8F, 0xBF, 0xBF}), units({0xDBFF, 0xDFFF})},
    };
    std::string allUtf8;
    std::u16string allUtf16;
    for (const Case& test : cases) {
        SCOPED_TRACE(hex(test.utf8));
        EXPECT_EQ(IString(std::string_view(test.utf8)).view(), test.utf16);
        EXPECT_EQ(IString(std::u16string_view(test.utf16)).toUtf8().view(), test.utf8);
        EXPECT_EQ(referenceUtf8(test.codePoint), test.utf8);
        EXPECT_EQ(referenceUtf16(test.codePoint), test.utf16);
        allUtf8 += test.utf8;
        allUtf16 += test.utf16;
    }
    EXPECT_EQ(IString(std::string_view(allUtf8)).view(), allUtf16);
    EXPECT_EQ(IString(std::u16string_view(allUtf16)).toUtf8().view(), allUtf8);
}

TEST(IString, RoundTripsEveryScalarValue) {
    std::string utf8;
    std::u16string utf16;
    std::size_t count = 0;
    for (char32_t c = 0; c <= 0x10FFFF; ++c) {
        if (isScalarValue(c)) {
            utf8 += referenceUtf8(c);
            utf16 += referenceUtf16(c);
            ++count;
        }
    }
    ASSERT_EQ(count, 0x110000u - 0x800u);
    const IString text{std::string_view(utf8)};
    EXPECT_EQ(text.size(), utf16.size());
    EXPECT_TRUE(text.view() == utf16);
    const CString back = text.toUtf8();
    EXPECT_EQ(back.size(), utf8.size());
    EXPECT_TRUE(back.view() == utf8);
}

TEST(IString, ReplacesEachMaximalSubpart) {
    const char16_t r = replacement;
    struct Case {
        std::string utf8;
        std::u16string utf16;
    };
    const std::vector<Case> cases = {
        // Continuation bytes where a lead byte is due.
        {bytes({0x80}), {r}},
        {bytes({0xBF, 0x41}), {r, u'A'}},
        {bytes({0xC3, 0xA9, 0xA9}), {u'\u00E9', r}},
        // Bytes that never start a sequence: C0, C1 (overlong two-byte forms), F5..FF.
        {bytes({0xC0, 0x80}), {r, r}},
        {bytes({0xC1, 0xBF}), {r, r}},
        {bytes({0xF5, 0x80, 0x80, 0x80}), {r, r, r, r}},
        {bytes({0xF8, 0x88, 0x80, 0x80, 0x80}), {r, r, r, r, r}},
        {bytes({0xFE, 0xFF}), {r, r}},
        // Overlong three- and four-byte forms: the lead byte cannot go on, so each byte counts.
        {bytes({0xE0, 0x80, 0x80}), {r, r, r}},
        {bytes({0xE0, 0x9F, 0xBF}), {r, r, r}},
        {bytes({0xF0, 0x80, 0x80, 0x80}), {r, r, r, r}},
        {bytes({0xF0, 0x8F, 0xBF, 0xBF}), {r, r, r, r}},
        // Surrogates encoded in UTF-8.
        {bytes({0xED, 0xA0, 0x80}), {r, r, r}},
        {bytes({0xED, 0xBF, 0xBF}), {r, r, r}},
        {bytes({0xED, 0xA0, 0xBD, 0xED, 0xB8, 0x80}), {r, r, r, r, r, r}},
        // Above U+10FFFF.
        {bytes({0xF4, 0x90, 0x80, 0x80}), {r, r, r, r}},
        {bytes({0xF7, 0xBF, 0xBF, 0xBF}), {r, r, r, r}},
        // Cut short by the end, by an ASCII byte or by the next lead byte: one U+FFFD each,
        // and the interrupting byte starts afresh.
        {bytes({0xC3}), {r}},
        {bytes({0xE2, 0x82}), {r}},
        {bytes({0xF0, 0x9F, 0x98}), {r}},
        {bytes({0xE2, 0x82, 0x41}), {r, u'A'}},
        {bytes({0xF0, 0x9F, 0x98, 0x41}), {r, u'A'}},
        {bytes({0xF1, 0x80, 0xC3, 0xA9}), {r, u'\u00E9'}},
        {bytes({0xE2, 0xF0, 0x9F, 0x98, 0x80}), {r, 0xD83D, 0xDE00}},
        // The worked example of the Unicode standard's replacement practice.
        {bytes({0x61, 0xF1, 0x80, 0x80, 0xE1, 0x80, 0xC2, 0x62, 0x80, 0x63, 0x80, 0xBF, 0x64}),
         {u'a', r, r, r, u'b', r, u'c', r, r, u'd'}},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(hex(test.utf8));
        EXPECT_EQ(IString(std::string_view(test.utf8)).view(), test.utf16);
    }
}

TEST(IString, DecodingMatchesDefinitionOnAllShortInputs) {
    const ReferenceDecoder reference;
    auto check = [&reference](const std::string& input) {
        const IString text{std::string_view(input)};
        if (text.view() != reference.decode(input)) {
            ADD_FAILURE() << "input " << hex(input);
            return false;
        }
        return true;
    };

    // Every one- and two-byte input.
    for (unsigned first = 0; first < 256; ++first) {
        ASSERT_TRUE(check(bytes({first})));
        for (unsigned second = 0; second < 256; ++second) {
            ASSERT_TRUE(check(bytes({first, second})));
        }
    }

    // Longer inputs made mostly of the bytes where the rules change.
    const std::vector<unsigned> edges = {0x00, 0x41, 0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF,
                                         0xC0, 0xC1, 0xC2, 0xDF, 0xE0, 0xE1, 0xEC, 0xED, 0xEE,
                                         0xEF, 0xF0, 0xF1, 0xF3, 0xF4, 0xF5, 0xFF};
    for (unsigned lead = 0xE0; lead <= 0xF4; ++lead) {
        for (unsigned second : edges) {
            for (unsigned third : edges) {
                ASSERT_TRUE(check(bytes({lead, second, third})));
                ASSERT_TRUE(check(bytes({lead, second, third, 0x80})));
            }
        }
    }
    std::mt19937 random(5);
    std::uniform_int_distribution<std::size_t> length(0, 10);
    std::uniform_int_distribution<std::size_t> pickEdge(0, edges.size() - 1);
    std::uniform_int_distribution<unsigned> anyByte(0, 255);
    for (int round = 0; round < 20000; ++round) {
        std::string input(length(random), '\0');
        for (char& byte : input) {
            byte =
                static_cast<char>(anyByte(random) < 64 ? anyByte(random) : edges[pickEdge(random)]);
        }
        ASSERT_TRUE(check(input));
    }
}

TEST(IString, NeverReadsPastInput) {
    // Each input sits in a heap block of exactly its size (the sanitizer build catches any
    // read beyond it) or is a view that stops short of the rest of a sequence.
    for (const std::string& input : {bytes({0xC3}), bytes({0xE2, 0x82}), bytes({0xF0, 0x9F, 0x98}),
                                     bytes({0x41, 0xF4, 0x8F})}) {
        SCOPED_TRACE(hex(input));
        std::unique_ptr<char[]> block(new char[input.size()]);
        input.copy(block.get(), input.size());
        const IString text(std::string_view(block.get(), input.size()));
        ASSERT_FALSE(text.empty());
        EXPECT_EQ(text.view().back(), replacement);
    }
    const std::string euro = bytes({0xE2, 0x82, 0xAC});
    EXPECT_EQ(IString(std::string_view(euro.data(), 2)).view(), units({replacement}));
    EXPECT_EQ(IString(std::string_view(euro.data(), 3)).view(), units({0x20AC}));

    // A high surrogate in the last unit of a view is not paired with the unit after it.
    const std::u16string pair = units({0xD83D, 0xDE00});
    EXPECT_EQ(IString(std::u16string_view(pair.data(), 1)).toUtf8().view(),
              bytes({0xEF, 0xBF, 0xBD}));
}

TEST(IString, UnpairedSurrogatesBecomeReplacementInUtf8) {
    const std::string r = bytes({0xEF, 0xBF, 0xBD});
    struct Case {
        std::u16string utf16;
        std::string utf8;
    };
    const std::vector<Case> cases = {
        {units({0xD800}), r},
        {units({0xDBFF}), r},
        {units({0xDC00}), r},
        {units({0xDFFF}), r},
        {units({0xD800, 0x41}), r + "A"},
        {units({0x41, 0xDC00, 0x42}), "A" + r + "B"},
        {units({0xDC00, 0xD800}), r + r},
        {units({0xDC00, 0xDFFF}), r + r},
        {units({0xD800, 0xD800, 0xDC00}), r + bytes({0xF0, 0x90, 0x80, 0x80})},
        {units({0xD83D, 0xDE00, 0xDE00}), bytes({0xF0, 0x9F, 0x98, 0x80}) + r},
        {units({0xD83D, 0xDE00, 0xD83D}), bytes({0xF0, 0x9F, 0x98, 0x80}) + r},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(hex(test.utf8));
        const IString text(std::u16string_view(test.utf16));
        // The units are kept as given; only the UTF-8 form replaces them.
        EXPECT_EQ(text.view(), test.utf16);
        EXPECT_EQ(text.toUtf8().view(), test.utf8);
    }
}

TEST(IString, OrderEqualityAndHashFollowCodeUnits) {
    const IString supplementary("\xF0\x90\x80\x80");
    const IString privateUse("\xEE\x80\x80");
    ASSERT_EQ(supplementary.size(), 2u);
    // U+10000 sorts before U+E000 by code units (D800 < E000), though not by code points.
    EXPECT_LT(supplementary, privateUse);
    EXPECT_LT(IString("a"), IString("b"));
    EXPECT_LT(IString("a"), IString("ab"));
    EXPECT_LT(IString("Z"), IString("a"));
    EXPECT_NE(IString("a"), IString("A"));
    EXPECT_EQ(IString("\xC3\xA9"), IString(std::u16string_view(u"\u00E9")));

    const ko::hash<IString> hash;
    EXPECT_EQ(hash(IString("name")), hash(IString(std::u16string_view(u"name"))));
    ko::unordered_set<IString> texts;
    for (const char* text : {"a", "b", "\xC3\xA9", "a", "\xC3\xA9", "\xE9"}) {
        texts.insert(IString(text));
    }
    // "\xE9" alone is ill-formed and reads as U+FFFD, a text of its own.
    EXPECT_EQ(texts.size(), 4u);
    EXPECT_EQ(texts.count(IString(std::u16string_view(u"\uFFFD"))), 1u);
}

TEST(IString, CopyAndMoveLeaveValidStates) {
    const std::u16string longText(100, u'\u00E9');
    IString a{std::u16string_view(longText)};
    IString& sameA = a;
    a = sameA;
    EXPECT_EQ(a.view(), longText);
    a = std::move(sameA);
    EXPECT_EQ(a.view(), longText);

    IString b("short");
    b = a;
    EXPECT_EQ(b, a);
    IString moved(std::move(a));
    EXPECT_EQ(moved.view(), longText);
    EXPECT_TRUE(a.empty());
    a = IString("again");
    EXPECT_EQ(a.toUtf8(), "again");
    b = std::move(moved);
    EXPECT_EQ(b.view(), longText);
    EXPECT_TRUE(moved.empty());
    static_assert(std::is_nothrow_move_constructible_v<IString>);
    static_assert(std::is_nothrow_move_assignable_v<IString>);

    // A copy that cannot allocate leaves the target as it was.
    IString target("the target, long enough to need a heap block");
    const IString before = target;
    {
        const std::size_t refusedBefore = heapProbe::failures();
        heapProbe::FailureScope failing(0);
        EXPECT_THROW(target = b, std::bad_alloc);
        EXPECT_GT(heapProbe::failures(), refusedBefore);
    }
    EXPECT_EQ(target, before);
}
