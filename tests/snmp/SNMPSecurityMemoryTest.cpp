// The duplicating look-ups when malloc has no memory. The source under test is compiled in here
// with another malloc, which works with every linker and beside every sanitizer.

#include "snmp/SNMPSecurity.h"

#include <gmock/gmock.h>

#include <stdlib.h> // NOLINT(modernize-deprecated-headers): before the name malloc is taken over

#include <algorithm>
#include <vector>

namespace {

/// The number of bytes that each call asked for, and whether calls are refused.
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
