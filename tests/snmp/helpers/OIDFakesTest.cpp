// The fakes themselves: an unexpected call must fail the test.

#include "tests/snmp/helpers/OIDTestHelpers.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

using OIDFakes::Allocations;
using OIDFakes::Replace;
using OIDFakes::slots;

namespace {

TEST(OIDFakesTest, ARefusalThatIsNeverReachedFails)
{
    EXPECT_NONFATAL_FAILURE({ const Allocations refusing(1); }, "never asked for");
}

TEST(OIDFakesTest, ASecondWatchFails)
{
    EXPECT_NONFATAL_FAILURE(
        {
            const Allocations first;
            const Allocations second;
        },
        "one watch at a time");
}

TEST(OIDFakesTest, AnUnexpectedPrintFails)
{
    const PrintSettings restored(false, false); // a failed print leaves them on
    EXPECT_NONFATAL_FAILURE(
        {
            const Replace printer(slots().printValue, unexpectedPrint);
            IntegerBinding var(1);
            makeOID({1, 3}).toValue(var.get());
        },
        "printer was called");
}

TEST(OIDFakesTest, AReplacementEndsWithItsScope)
{
    {
        const Replace parser(slots().parse,
                             [](const char*, oid*, std::size_t*) -> oid* { return nullptr; });
        EXPECT_TRUE(slots().parse);
    }
    EXPECT_FALSE(slots().parse);
}

TEST(OIDFakesTest, TheLockIsSeenHeldAndFree)
{
    EXPECT_FALSE(lockIsHeld());
    const Poco::Mutex::ScopedLock held(UVARNETSNMP::OID::s_mutex);
    EXPECT_TRUE(lockIsHeld());
}

} // namespace
