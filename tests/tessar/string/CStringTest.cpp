#include "tessar/string/CString.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdarg>
#include <functional>
#include <new>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "tessar/core/Containers.h"
#include "tests/support/HeapProbe.h"
#include "tests/tessar/string/StringPrinters.h"

using koString::CString;

namespace {

// Random byte strings over a small alphabet, so that equal strings and shared prefixes are
// common; it holds bytes on both sides of 0x80 to catch a signed byte comparison.
std::vector<std::string> randomStrings(std::size_t count, unsigned seed) {
    static constexpr char alphabet[] = {'a', 'b', 'A', '\x7f', '\x80', '\xff'};
    std::mt19937 random(seed);
    std::uniform_int_distribution<std::size_t> length(0, 5);
    std::uniform_int_distribution<std::size_t> pick(0, sizeof(alphabet) - 1);
    std::vector<std::string> strings(count);
    for (std::string& text : strings) {
        text.resize(length(random));
        for (char& byte : text) {
            byte = alphabet[pick(random)];
        }
    }
    return strings;
}

// The byte order worked out independently of the string classes: unsigned bytes, element by
// element, a proper prefix first.
bool bytesLess(const std::string& a, const std::string& b) {
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
        return static_cast<unsigned char>(x) < static_cast<unsigned char>(y);
    });
}

CString formatThroughList(const char* fmt, ...) __attribute__((format(printf, 1, 2)));

// Formats the same arguments twice from one list, which must not be used up by the first.
CString formatThroughList(const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    CString first = CString::vformat(fmt, args);
    CString second = CString::vformat(fmt, args);
    va_end(args);
    EXPECT_EQ(first, second);
    return first;
}

} // namespace

TEST(CString, ConstructsFromEachSource) {
    const CString empty;
    EXPECT_TRUE(empty.empty());
    EXPECT_EQ(empty.size(), 0u);
    ASSERT_NE(empty.c_str(), nullptr);
    EXPECT_EQ(empty.c_str()[0], '\0');

    const char* none = nullptr;
    const CString fromNull(none);
    EXPECT_TRUE(fromNull.empty());
    ASSERT_NE(fromNull.c_str(), nullptr);
    EXPECT_EQ(fromNull.c_str()[0], '\0');
    EXPECT_TRUE(CString(none, 0).empty());

    const CString name("normals");
    EXPECT_EQ(name.size(), 7u);
    EXPECT_STREQ(name.c_str(), "normals");
    EXPECT_EQ(CString(std::string_view("colours, and more", 7)), "colours");
    EXPECT_EQ(CString("uvs and sts", 3).view(), "uvs");

    // A NUL inside is kept: the size and comparisons see it, c_str() stops at it.
    const CString withNul("ab\0cd", 5);
    EXPECT_EQ(withNul.size(), 5u);
    EXPECT_EQ(withNul.view(), std::string_view("ab\0cd", 5));
    EXPECT_STREQ(withNul.c_str(), "ab");
    EXPECT_NE(withNul, CString("ab"));
    EXPECT_EQ(withNul.data()[5], '\0');
}

TEST(CString, OrderAndEqualityMatchBytewiseReference) {
    const std::vector<std::string> strings = randomStrings(300, 7);
    for (const std::string& a : strings) {
        for (const std::string& b : strings) {
            const CString ca(a);
            const CString cb(b.c_str(), b.size());
            const bool less = bytesLess(a, b);
            const bool same = !less && !bytesLess(b, a);
            ASSERT_EQ(less, a < b);
            ASSERT_EQ(ca == cb, same);
            ASSERT_EQ(ca != cb, !same);
            ASSERT_EQ(ca < cb, less);
            ASSERT_EQ(ca > cb, !less && !same);
            ASSERT_EQ(ca <= cb, less || same);
            ASSERT_EQ(koString::equal(ca, cb), same);
            // Against a C string and a view, from either side.
            ASSERT_EQ(ca == b.c_str(), same);
            ASSERT_EQ(b.c_str() == ca, same);
            ASSERT_EQ(ca < b.c_str(), less);
            ASSERT_EQ(b.c_str() < ca, bytesLess(b, a));
            ASSERT_EQ(ca == std::string_view(b), same);
            ASSERT_EQ(ca < std::string_view(b), less);
        }
    }

    // Exact and case-sensitive.
    EXPECT_FALSE(koString::equal(CString("Normals"), CString("normals")));
    EXPECT_TRUE(CString("Normals") < CString("normals"));
    EXPECT_TRUE(CString("uv") < CString("uvs"));
    EXPECT_FALSE(CString("uvs") == CString("uvs "));
    const char* none = nullptr;
    EXPECT_TRUE(CString() == none);
}

TEST(CString, SortsInOrderedSetsLikeStdString) {
    const std::vector<std::string> strings = randomStrings(500, 11);
    std::set<std::string, decltype(&bytesLess)> expected(&bytesLess);
    ko::set<CString> names;
    for (const std::string& text : strings) {
        expected.insert(text);
        names.insert(CString(text));
    }
    ASSERT_EQ(names.size(), expected.size());
    auto next = expected.begin();
    for (const CString& name : names) {
        EXPECT_EQ(name.view(), *next++);
    }

    // Lookup with a C string through a transparent comparison.
    std::set<CString, std::less<>> channels{"vertices", "normals", "uvs", "sts", "colours"};
    EXPECT_NE(channels.find("uvs"), channels.end());
    EXPECT_EQ(channels.find("UVs"), channels.end());
}

TEST(CString, HashAgreesWithEquality) {
    const ko::hash<CString> hash;
    CString built("nor");
    built += "mal";
    built += 's';
    const CString formatted = CString::format("%s%s", "norm", "als");
    ASSERT_EQ(built, "normals");
    ASSERT_EQ(formatted, "normals");
    EXPECT_EQ(hash(built), hash(CString("normals")));
    EXPECT_EQ(hash(formatted), hash(built));
    EXPECT_EQ(hash(built), hash(std::string_view("normals")));
    EXPECT_EQ(hash(built), hash("normals"));

    // The set keeps one entry per distinct string, however many copies arrive.
    const std::vector<std::string> strings = randomStrings(2000, 3);
    std::set<std::string> distinct(strings.begin(), strings.end());
    ko::unordered_set<CString> names;
    for (const std::string& text : strings) {
        names.insert(CString(text));
    }
    EXPECT_EQ(names.size(), distinct.size());
    for (const std::string& text : distinct) {
        EXPECT_EQ(names.count(CString(text)), 1u);
    }
    EXPECT_EQ(names.count(CString("not in there")), 0u);

    // Lookup by view or literal without making a CString.
    std::unordered_set<CString, ko::hash<CString>, std::equal_to<>> channels{"uvs", "sts"};
    EXPECT_NE(channels.find(std::string_view("sts")), channels.end());
    EXPECT_NE(channels.find("uvs"), channels.end());
    EXPECT_EQ(channels.find("Uvs"), channels.end());
}

TEST(CString, FormatsAnyLength) {
    EXPECT_EQ(CString::format("%d %s %f", -42, "name", 1.5), "-42 name 1.500000");
    EXPECT_EQ(CString::format("%s", ""), "");
    EXPECT_EQ(CString::format("no arguments"), "no arguments");
    EXPECT_EQ(CString::format("%c%c", 'o', 'k').size(), 2u);

    // Lengths around the point where a second formatting pass starts, and well past it.
    for (int length : {254, 255, 256, 257, 258, 1000, 6000}) {
        SCOPED_TRACE(length);
        const std::string expected = std::string(length - 1, ' ') + "7";
        const CString padded = CString::format("%*d", length, 7);
        EXPECT_EQ(padded.size(), expected.size());
        EXPECT_EQ(padded.view(), expected);
        EXPECT_EQ(padded.c_str()[padded.size()], '\0');
    }
    std::string longText;
    for (int i = 0; i < 1000; ++i) {
        longText += "channel" + std::to_string(i) + ';';
    }
    ASSERT_GT(longText.size(), 8000u);
    const CString joined = CString::format("[%s] %d", longText.c_str(), 1000);
    EXPECT_EQ(joined.view(), "[" + longText + "] 1000");

    EXPECT_EQ(formatThroughList("%d-%s-%.2f", 3, "x", 0.125), "3-x-0.12");
    EXPECT_EQ(formatThroughList("%s|%d", longText.c_str(), 9).view(), longText + "|9");
}

TEST(CString, AppendsAndClears) {
    CString text;
    text.append("vert").append(std::string_view("icesXYZ", 4)).append("!?", 1);
    EXPECT_EQ(text, "vertices!");
    text += CString(" and ");
    text += '\0';
    const char* none = nullptr;
    text.append(none, 0);
    EXPECT_EQ(text.view(), std::string_view("vertices! and \0", 15));

    text.reserve(500);
    for (int i = 0; i < 40; ++i) {
        text += "0123456789";
    }
    EXPECT_EQ(text.size(), 415u);
    EXPECT_EQ(text.view().substr(15, 12), "012345678901");

    text.clear();
    EXPECT_TRUE(text.empty());
    EXPECT_STREQ(text.c_str(), "");
    text += "again";
    EXPECT_EQ(text, "again");
}

TEST(CString, CopyAndMoveLeaveValidStates) {
    const std::string longText(100, 'q');
    CString a(longText);
    CString b("short");

    CString& sameA = a;
    a = sameA;
    EXPECT_EQ(a.view(), longText);
    a = std::move(sameA);
    EXPECT_EQ(a.view(), longText);

    b = a;
    EXPECT_EQ(b.view(), longText);
    EXPECT_EQ(a.view(), longText);
    EXPECT_NE(b.c_str(), a.c_str());

    CString moved(std::move(a));
    EXPECT_EQ(moved.view(), longText);
    EXPECT_TRUE(a.empty());
    EXPECT_STREQ(a.c_str(), "");
    a = "reused";
    EXPECT_EQ(a, "reused");

    CString target("target");
    target = std::move(moved);
    EXPECT_EQ(target.view(), longText);
    EXPECT_TRUE(moved.empty());

    swap(target, b);
    EXPECT_EQ(b.view(), longText);
    EXPECT_EQ(target.view(), longText);

    static_assert(std::is_nothrow_move_constructible_v<CString>);
    static_assert(std::is_nothrow_move_assignable_v<CString>);
    static_assert(std::is_nothrow_swappable_v<CString>);
}

TEST(CString, FailedCopyLeavesTargetUnchanged) {
    // Both strings are too long to be kept inside the object, so the copy must allocate.
    const std::string before(200, 't');
    const CString source(std::string(300, 's'));
    CString target(before);
    const char* storage = target.c_str();
    {
        const std::size_t refusedBefore = heapProbe::failures();
        heapProbe::FailureScope failing(0);
        EXPECT_THROW(target = source, std::bad_alloc);
        EXPECT_GT(heapProbe::failures(), refusedBefore);
    }
    EXPECT_EQ(target.view(), before);
    EXPECT_EQ(target.c_str(), storage);

    target = source;
    EXPECT_EQ(target, source);
}
