// The set of responders when its mutex fails.

#include "tests/app/TestApp.h"
#include "tests/support/FailingMutex.h"

#include "snmp/SNMPSession.h"

#include <Poco/AutoPtr.h>
#include <Poco/Bugcheck.h>

#include <arpa/inet.h>

#include <gtest/gtest.h>

#include <array>
#include <cstring>

namespace {

int unexpectedErrors = 0;

} // namespace

/// POCO's hook for errors that cannot be thrown, which would only do something in a debug build.
void Poco::Bugcheck::unexpected(const char*, int)
{
    ++unexpectedErrors;
}

namespace {

using Responders = std::set<std::string>;

class ResponderLock : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!FailingMutex::supported()) {
            GTEST_SKIP() << "NOT TESTED: mutexes cannot be replaced beside this sanitizer";
        }
    }

    Poco::AutoPtr<TestApp> application{new TestApp};
};

TEST_F(ResponderLock, AFailureToLockAddsNothing)
{
    EXPECT_EQ(failureToLock([this] { application->AddIP("192.0.2.9"); }), "cannot lock mutex");
    EXPECT_EQ(application->m_responders, Responders{});
}

TEST_F(ResponderLock, AFailureToLockPassesOutOfTheCallback)
{
    // Not set up, so nothing is opened.
    UVARNETSNMP::SNMPSession session(SNMP_VERSION_1, "public", "192.0.2.255", true);
    std::array<unsigned char, 36> record{}; // an address-pair record without IPv6, of 0.0.0.0
    snmp_pdu pdu = {};
    pdu.transport_data = record.data();
    pdu.transport_data_length = static_cast<int>(record.size());
    EXPECT_EQ(
        failureToLock([&] { SNMPDiscoveryApp::SNMPCallback(session, application.get(), &pdu); }),
        "cannot lock mutex");
    EXPECT_EQ(application->m_responders, Responders{});
}

TEST_F(ResponderLock, AFailureToUnlockIsKeptInside)
{
    bool thrown = false;
    try {
        const FailingMutex failing(FailingMutex::Call::unlock);
        application->AddIP("192.0.2.9");
    } catch (const Poco::SystemException&) {
        thrown = true;
    }
    EXPECT_FALSE(thrown);
    EXPECT_EQ(unexpectedErrors, 1);
    EXPECT_EQ(application->m_responders, Responders{"192.0.2.9"});
}

} // namespace
