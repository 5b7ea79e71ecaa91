// Misuse of the fake, which must fail the test.

#include "tests/snmp/helpers/FakeNetSNMP.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <stdexcept>

namespace {

void LeaveACallUntaken()
{
    const FakeNetSNMP fake;
    snmp_shutdown("Test");
}

void LeaveASessionOpen()
{
    FakeNetSNMP fake;
    netsnmp_session session = {};
    snmp_sess_open(&session);
    fake.ForgetCalls();
}

void CloseASessionTwice()
{
    FakeNetSNMP fake;
    netsnmp_session session = {};
    void* const handle = snmp_sess_open(&session);
    fake.ForgetCalls();
    snmp_sess_close(handle);
    snmp_sess_close(handle);
    fake.openHandles = 0;
}

void UseAnotherHandle()
{
    FakeNetSNMP fake;
    int other = 0;
    snmp_sess_timeout(&other);
    fake.ForgetCalls();
}

TEST(FakeNetSNMP, FailsOnACallThatTheTestDidNotTake)
{
    EXPECT_NONFATAL_FAILURE(LeaveACallUntaken(), "not expected");
}

TEST(FakeNetSNMP, FailsOnASessionThatIsNotClosed)
{
    EXPECT_NONFATAL_FAILURE(LeaveASessionOpen(), "not closed");
}

TEST(FakeNetSNMP, FailsOnASessionThatIsClosedAgain)
{
    EXPECT_NONFATAL_FAILURE(CloseASessionTwice(), "closed again");
}

TEST(FakeNetSNMP, FailsOnAHandleThatIsNotItsOwn)
{
    EXPECT_NONFATAL_FAILURE(UseAnotherHandle(), "another handle");
}

TEST(FakeNetSNMP, ThrowsWhenItDoesNotLive)
{
    EXPECT_THROW(init_snmp("Test"), std::logic_error);
}

} // namespace
