#include "inventory/Utf8.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using inventory::firstCharacter;
using inventory::textFromAgent;

const std::string bad = "\xef\xbf\xbd"; // U+FFFD
const std::string euro = "\xe2\x82\xac";
const std::string smile = "\xf0\x9f\x98\x80";

TEST(Utf8Test, WhatAnAgentSentBecomesUTF8)
{
    const struct
    {
        std::string sent;
        std::string text;
    } cases[] = {
        {"laser", "laser"},
        {" laser \r\n", " laser \r\n"}, // nothing is trimmed
        {euro + smile + "\xc3\xa9", euro + smile + "\xc3\xa9"},
        {"a\xff", "a" + bad},
        {"\xe9t\xe9", bad + "t" + bad},              // Latin-1
        {"\xc0\xaf", bad + bad},                     // overlong
        {"\xe0\x80\xaf", bad + bad + bad},           // overlong
        {"\xf0\x80\x80\xaf", bad + bad + bad + bad}, // overlong
        {"\xed\xa0\x80", bad + bad + bad},           // a surrogate
        {"\xf4\x90\x80\x80", bad + bad + bad + bad}, // above U+10FFFF
        {"\xf8\x88\x80\x80\x80", bad + bad + bad + bad + bad},
        {"\x80", bad},
        {"\xe2\x82", bad + bad}, // incomplete, but not cut
        {"\xe2\x82z", bad + bad + "z"},
        {"\xf0\x9f\x98", bad + bad + bad},
        {bad, bad},
        {"\xf4\x8f\xbf\xbf\xed\x9f\xbf", "\xf4\x8f\xbf\xbf\xed\x9f\xbf"},
        {std::string("a\0b\0\0", 5), std::string("a\0b", 3)},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(textFromAgent(each.sent), each.text) << testing::PrintToString(each.sent);
    }
}

TEST(Utf8Test, NothingIsLeftOfAnEmptyTextOrOfNULs)
{
    EXPECT_FALSE(textFromAgent(""));
    EXPECT_FALSE(textFromAgent(std::string(3, '\0')));
    EXPECT_FALSE(textFromAgent(std::string(2000, '\0')));
}

TEST(Utf8Test, TextsAreCutAt1024OctetsAsSent)
{
    EXPECT_EQ(textFromAgent(std::string(1024, 'a')), std::string(1024, 'a'));
    EXPECT_EQ(textFromAgent(std::string(1025, 'a')), std::string(1024, 'a'));
    EXPECT_EQ(textFromAgent(std::string(70000, '\xff'))->size(), 1024 * bad.size());
    // NULs at the end of what the cut leaves.
    EXPECT_EQ(textFromAgent(std::string(1000, 'a') + std::string(100, '\0') + "b"),
              std::string(1000, 'a'));
}

TEST(Utf8Test, ACharacterThatTheCutDividesIsDropped)
{
    for (const std::string& character : {euro, smile, std::string("\xc3\xa9")}) {
        for (std::size_t kept = 1; kept < character.size(); ++kept) {
            const std::string before(1024 - kept, 'a');
            EXPECT_EQ(textFromAgent(before + character + "b"), before) << kept;
        }
        const std::string before(1024 - character.size(), 'a');
        EXPECT_EQ(textFromAgent(before + character + "b"), before + character);
    }
}

TEST(Utf8Test, WhatIsNoBeginningOfACharacterIsReplacedAtTheCutToo)
{
    const std::string before(1022, 'a');
    EXPECT_EQ(textFromAgent(before + "\xed\xa0\x80"), before + bad + bad); // a surrogate
    EXPECT_EQ(textFromAgent(before + "\xf8\x88\x80"), before + bad + bad);
    EXPECT_EQ(textFromAgent(before + "\x80\x80\x80"), before + bad + bad);
}

TEST(Utf8Test, CodePoints)
{
    EXPECT_EQ(firstCharacter("a").code, U'a');
    EXPECT_EQ(firstCharacter("\xc3\xa9z").code, 0xe9U);
    EXPECT_EQ(firstCharacter(euro).code, 0x20acU);
    EXPECT_EQ(firstCharacter(smile).code, 0x1f600U);
    EXPECT_EQ(firstCharacter(smile).bytes, smile);
    EXPECT_EQ(firstCharacter("\xffz").bytes, "\xff");
}

} // namespace
