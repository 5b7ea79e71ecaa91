// The security parameters. This file includes the source under test, so that it can replace malloc
// there with every linker and sanitizer.

#include "snmp/SNMPSecurity.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdlib.h> // NOLINT(modernize-deprecated-headers): before the name malloc is taken over

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace {

/// The sizes that were requested, and whether requests are refused.
std::vector<std::size_t> asked; // NOLINT(cert-err58-cpp): an empty vector does not throw
bool refuse = false;

void* observedMalloc(std::size_t size)
{
    asked.push_back(size);
    return refuse ? nullptr : malloc(size);
}

} // namespace

#define malloc observedMalloc
#include "snmp/SNMPSecurity.cpp" // NOLINT(bugprone-suspicious-include): the reason stands above
#undef malloc

using testing::ElementsAre;
using UVARNETSNMP::ByteString;
using UVARNETSNMP::SNMPSecurity;

namespace {

using ByteParams = std::map<std::string, ByteString>;
using TextParams = std::map<std::string, std::string>;

const ByteString withNul = {'a', 'b', 0, 'c', 255};

TEST(ByteStringType, IsTheStandardLibrarysString)
{
    static_assert(std::is_same_v<ByteString, std::basic_string<unsigned char>>);
    static_assert(std::is_same_v<ByteString::traits_type, std::char_traits<unsigned char>>);
}

// The traits, which this project defines where the standard library has none.
TEST(ByteStringType, ComparesSearchesAndMovesOctets)
{
    const unsigned char terminated[] = {'a', 'b', 0, 'c'};
    EXPECT_EQ(ByteString(terminated), (ByteString{'a', 'b'}));
    EXPECT_LT((ByteString{100}), (ByteString{200})) << "octets are not negative";
    EXPECT_LT((ByteString{1, 0}), (ByteString{1, 0, 0}));
    EXPECT_NE(withNul, (ByteString{'a', 'b'}));
    EXPECT_EQ(ByteString(), ByteString());
    const unsigned char last = 255;
    const unsigned char absent = 7;
    EXPECT_EQ(withNul.find(last), 4U);
    EXPECT_EQ(withNul.find(absent), ByteString::npos);
    EXPECT_EQ(ByteString().find(absent), ByteString::npos);
    ByteString grown = withNul;
    grown.insert(0, 40, last);
    EXPECT_EQ(grown.size(), 45U);
    grown.erase(0, 40);
    EXPECT_EQ(grown, withNul);
    grown += grown;
    EXPECT_EQ(grown.substr(5), withNul);
}

TEST(SNMPSecurityConstructor, DefaultHasNoParameters)
{
    const SNMPSecurity security;
    EXPECT_TRUE(security.Lookup("community").empty());
    EXPECT_TRUE(security.Lookup("").empty());
}

TEST(SNMPSecurityConstructor, CopiesByteStringsUnchanged)
{
    const SNMPSecurity security(ByteParams{{"community", withNul}, {"other", {}}, {"", {1}}});
    EXPECT_EQ(security.Lookup("community"), withNul);
    EXPECT_TRUE(security.Lookup("other").empty());
    EXPECT_EQ(security.Lookup(""), ByteString{1});
}

TEST(SNMPSecurityConstructor, CutsTextsAtTheirFirstNul)
{
    using namespace std::string_literals;
    const SNMPSecurity security(TextParams{
        {"cut", "ab\0cd"s}, {"whole", "ab\xff"s}, {"led", "\0ab"s}, {"key\0with nul"s, "kept"s}});
    EXPECT_EQ(security.Lookup("cut"), (ByteString{'a', 'b'}));
    EXPECT_EQ(security.Lookup("whole"), (ByteString{'a', 'b', 255}));
    EXPECT_TRUE(security.Lookup("led").empty());
    EXPECT_EQ(security.LookupString("key\0with nul"s), "kept");
}

TEST(SNMPSecurityConstructor, KeepsTheKeyOfAnEmptyText)
{
    const SNMPSecurity security(TextParams{{"empty", ""}});
    EXPECT_NE(&security.Lookup("empty"), &security.Lookup("missing"));
    EXPECT_TRUE(security.Lookup("empty").empty());
}

TEST(SNMPSecurityConstructor, TakesNoPartInLaterChangesOfTheMap)
{
    ByteParams params{{"community", {1}}};
    const SNMPSecurity security(params);
    params["community"] = {2};
    EXPECT_EQ(security.Lookup("community"), ByteString{1});
}

TEST(SNMPSecurityCopy, IsIndependentOfItsOriginal)
{
    auto original = std::make_unique<SNMPSecurity>(ByteParams{{"community", withNul}});
    const SNMPSecurity copy(*original);
    SNMPSecurity assigned(ByteParams{{"other", {1}}});
    assigned = *original;
    original.reset();
    EXPECT_EQ(copy.Lookup("community"), withNul);
    EXPECT_EQ(assigned.Lookup("community"), withNul);
    EXPECT_TRUE(assigned.Lookup("other").empty());
    static_assert(!std::is_polymorphic_v<SNMPSecurity>);
    static_assert(sizeof(SNMPSecurity) == sizeof(std::map<std::string, ByteString>));
}

TEST(SNMPSecurityLookup, ComparesKeysWithCase)
{
    const SNMPSecurity security(TextParams{{"community", "lower"}, {"Community", "upper"}});
    EXPECT_EQ(security.LookupString("community"), "lower");
    EXPECT_EQ(security.LookupString("Community"), "upper");
    EXPECT_EQ(security.LookupString("COMMUNITY"), "");
    EXPECT_EQ(security.LookupString("communit"), "");
}

TEST(SNMPSecurityLookup, OfMissingKeysIsOneSharedEmptyString)
{
    const SNMPSecurity security;
    const ByteString& first = security.Lookup("missing");
    EXPECT_EQ(&first, &SNMPSecurity(TextParams{{"a", "b"}}).Lookup("other"));
    EXPECT_TRUE(first.empty());
}

TEST(SNMPSecurityLookup, RefersToTheStoredValue)
{
    const SNMPSecurity security(ByteParams{{"community", withNul}});
    EXPECT_EQ(&security.Lookup("community"), &security.Lookup("community"));
}

TEST(SNMPSecurityLookupString, EndsAtTheFirstNul)
{
    const SNMPSecurity security(ByteParams{{"inner", withNul}, {"led", {0, 'a'}}, {"high", {255}}});
    EXPECT_EQ(security.LookupString("inner"), "ab");
    EXPECT_EQ(security.LookupString("led"), "");
    EXPECT_EQ(security.Lookup("led"), (ByteString{0, 'a'}));
    EXPECT_EQ(security.LookupString("high"), "\xff");
    EXPECT_EQ(security.LookupString("missing"), "");
}

struct Bytes
{
    using Char = unsigned char;
    static constexpr auto duplicate = &SNMPSecurity::LookupDuplicate;
};
struct Text
{
    using Char = char;
    static constexpr auto duplicate = &SNMPSecurity::LookupDuplicateString;
};

/// Both duplicating look-ups, which differ only in the type of their buffer.
template <class Function>
class SNMPSecurityDuplicate : public testing::Test
{
protected:
    using Char = typename Function::Char;
    using Buffer = std::unique_ptr<Char, decltype(&std::free)>;

    void duplicate(const char* key, Char** out, std::size_t* length) const
    {
        (m_security.*Function::duplicate)(key, out, length);
    }
    const SNMPSecurity m_security{ByteParams{{"value", withNul}, {"empty", {}}}};
    Char m_sentinel = 'x';
};

struct FunctionName
{
    template <class Function>
    static std::string GetName(int /*index*/)
    {
        return std::is_same_v<Function, Bytes> ? "LookupDuplicate" : "LookupDuplicateString";
    }
};
using Functions = testing::Types<Bytes, Text>;
TYPED_TEST_SUITE(SNMPSecurityDuplicate, Functions, FunctionName);

TYPED_TEST(SNMPSecurityDuplicate, CopiesEveryByteAndEndsTheCopyWithANul)
{
    typename TestFixture::Char* out = nullptr;
    std::size_t length = 99;
    this->duplicate("value", &out, &length);
    const typename TestFixture::Buffer owner(out, &std::free);
    ASSERT_NE(out, nullptr);
    ASSERT_EQ(length, 5U);
    EXPECT_EQ(ByteString(out, out + length), withNul);
    EXPECT_EQ(out[length], 0);
}

TYPED_TEST(SNMPSecurityDuplicate, OfAnEmptyValueIsALoneNul)
{
    typename TestFixture::Char* out = nullptr;
    std::size_t length = 99;
    this->duplicate("empty", &out, &length);
    const typename TestFixture::Buffer owner(out, &std::free);
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(out[0], 0);
    EXPECT_EQ(length, 0U);
}

TYPED_TEST(SNMPSecurityDuplicate, OfAMissingKeyLeavesThePointerAsItWas)
{
    typename TestFixture::Char* out = &this->m_sentinel;
    std::size_t length = 99;
    this->duplicate("missing", &out, &length);
    EXPECT_EQ(out, &this->m_sentinel);
    EXPECT_EQ(this->m_sentinel, 'x');
    EXPECT_EQ(length, 0U);
    this->duplicate("missing", nullptr, nullptr);
}

TYPED_TEST(SNMPSecurityDuplicate, WithoutABufferPointerStillReportsTheLength)
{
    std::size_t length = 99;
    this->duplicate("value", nullptr, &length);
    EXPECT_EQ(length, 5U);
    this->duplicate("value", nullptr, nullptr);
}

TYPED_TEST(SNMPSecurityDuplicate, WithoutALengthPointerStillGivesTheCopy)
{
    typename TestFixture::Char* out = nullptr;
    this->duplicate("value", &out, nullptr);
    const typename TestFixture::Buffer owner(out, &std::free);
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(ByteString(out, out + withNul.size()), withNul);
}

class SNMPSecurityMemory : public testing::Test
{
protected:
    void SetUp() override
    {
        asked.clear();
        refuse = false;
    }
    const SNMPSecurity m_security{
        std::map<std::string, ByteString>{{"value", {1, 0, 2}}, {"empty", {}}}};
    std::size_t m_length = 99;
};

TEST_F(SNMPSecurityMemory, OneByteMoreThanTheValueIsAskedFor)
{
    unsigned char* bytes = nullptr;
    char* text = nullptr;
    m_security.LookupDuplicate("value", &bytes, &m_length);
    m_security.LookupDuplicateString("empty", &text, &m_length);
    free(bytes);
    free(text);
    EXPECT_THAT(asked, ElementsAre(4, 1));
}

TEST_F(SNMPSecurityMemory, NoneIsAskedForWithoutTheKey)
{
    m_security.LookupDuplicate("missing", nullptr, &m_length);
    m_security.LookupDuplicateString("missing", nullptr, &m_length);
    EXPECT_TRUE(asked.empty());
}

TEST_F(SNMPSecurityMemory, WithoutAnyTheLengthIsZeroAndThePointerAsItWas)
{
    refuse = true;
    unsigned char byte = 7;
    unsigned char* bytes = &byte;
    m_security.LookupDuplicate("value", &bytes, &m_length);
    EXPECT_EQ(bytes, &byte);
    EXPECT_EQ(byte, 7);
    EXPECT_EQ(m_length, 0U);

    char character = 'x';
    char* text = &character;
    m_length = 99;
    m_security.LookupDuplicateString("value", &text, &m_length);
    EXPECT_EQ(text, &character);
    EXPECT_EQ(character, 'x');
    EXPECT_EQ(m_length, 0U);
}

TEST_F(SNMPSecurityMemory, WithoutAnyTheLengthIsZeroAlsoWhenNoCopyIsWanted)
{
    refuse = true;
    m_security.LookupDuplicate("value", nullptr, &m_length);
    EXPECT_EQ(m_length, 0U);
    EXPECT_THAT(asked, ElementsAre(4));
}

} // namespace
