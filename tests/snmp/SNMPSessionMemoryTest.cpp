// A session when memory is exhausted. The source under test is compiled in here with another
// malloc, which works with every linker and beside every sanitizer.

#include "tests/snmp/FakeNetSNMP.h" // for a session whose fields are open; nothing is faked here
#include "tests/support/CountedNew.h"

#include <gtest/gtest.h>

#include <stdlib.h> // NOLINT(modernize-deprecated-headers): before the name malloc is taken over

#include <cstring>
#include <map>
#include <new>

namespace {

bool refuse = false;

void* refusingMalloc(std::size_t size)
{
    return refuse ? nullptr : malloc(size);
}

} // namespace

#define malloc refusingMalloc
#include "snmp/SNMPSession.cpp" // NOLINT(bugprone-suspicious-include): the reason stands above
#undef malloc

using UVARNETSNMP::SNMPSecurity;
using UVARNETSNMP::SNMPSession;

namespace {

TEST(SNMPSessionMemory, WithoutAnyThereIsNoEngineIDAndTheOutputsAreUntouched)
{
    unsigned char byte = 7;
    unsigned char* engineID = &byte;
    size_t length = 99;
    refuse = true;
    const bool made = SNMPSession::MakeEngineID("8000000001", &engineID, &length);
    refuse = false;
    EXPECT_FALSE(made);
    EXPECT_EQ(engineID, &byte);
    EXPECT_EQ(byte, 7);
    EXPECT_EQ(length, 99U);
}

using SNMPSessionWithoutMemory = NeedsCountedNew;

TEST_F(SNMPSessionWithoutMemory, TheConstructionEndsInTheException)
{
    const NameGuard name("Test");
    const SNMPSecurity nothing;
    const std::string host = "192.0.2.7";
    bool thrown = false;
    {
        const AllocationLimit none(0);
        try {
            const OpenBook session(SNMP_VERSION_3, nothing, host, false);
        } catch (const std::bad_alloc&) {
            thrown = true;
        }
    }
    EXPECT_TRUE(thrown);
}

} // namespace
