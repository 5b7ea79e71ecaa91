// The set of responders when memory runs out, in a program with an operator new of its own.

#include "tests/app/TestApp.h"
#include "tests/support/CountedNew.h"

#include "snmp/SNMPSession.h"

#include <Poco/AutoPtr.h>

#include <arpa/inet.h>
#include <netinet/in.h>

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <new>
#include <set>
#include <string>

namespace {

using Responders = std::set<std::string>;

class ResponderMemory : public NeedsCountedNew
{
protected:
    Poco::AutoPtr<TestApp> application{new TestApp};
};

/// Whether `body` fails for lack of memory when that many allocations succeed.
template <typename Body>
bool runsOut(long allocations, Body body)
{
    const AllocationLimit limit(allocations);
    try {
        body();
    } catch (const std::bad_alloc&) {
        return true;
    }
    return false;
}

TEST_F(ResponderMemory, AResponderThatFindsNoRoomLeavesTheOthers)
{
    application->AddIP("192.0.2.1");
    const std::string ip = "192.0.2.2";
    EXPECT_TRUE(runsOut(0, [&] { application->AddIP(ip); }));
    EXPECT_EQ(application->m_responders, Responders{"192.0.2.1"});

    EXPECT_FALSE(runsOut(1, [&] { application->AddIP(ip); })) << "neither locked nor lost";
    EXPECT_EQ(application->m_responders, (Responders{"192.0.2.1", "192.0.2.2"}));
}

TEST_F(ResponderMemory, AKnownResponderNeedsNone)
{
    application->AddIP("192.0.2.1");
    const std::string ip = "192.0.2.1";
    EXPECT_FALSE(runsOut(0, [&] { application->AddIP(ip); }));
}

TEST_F(ResponderMemory, TheCallbackPassesTheFailureOnAndIsReadyForTheNextAnswer)
{
    // Not set up, so nothing is opened.
    UVARNETSNMP::SNMPSession session(SNMP_VERSION_1, "public", "192.0.2.255", true);
    sockaddr_in sender = {};
    inet_pton(AF_INET, "192.0.2.3", &sender.sin_addr);
    std::array<unsigned char, 36> record{}; // an address-pair record without IPv6
    std::memcpy(record.data(), &sender, sizeof sender);
    snmp_pdu* const pdu = snmp_pdu_create(SNMP_MSG_RESPONSE);
    const std::array<oid, 2> name = {1, 3};
    snmp_pdu_add_variable(pdu, name.data(), name.size(), ASN_NULL, nullptr, 0);
    pdu->transport_data = record.data();
    pdu->transport_data_length = static_cast<int>(record.size());

    const auto answer = [&] { SNMPDiscoveryApp::SNMPCallback(session, application.get(), pdu); };
    EXPECT_TRUE(runsOut(0, answer));
    EXPECT_EQ(application->m_responders, Responders{});
    EXPECT_EQ(pdu->variables, nullptr) << "released all the same";
    EXPECT_FALSE(runsOut(1, answer));
    EXPECT_EQ(application->m_responders, Responders{"192.0.2.3"});

    pdu->transport_data = nullptr;
    pdu->transport_data_length = 0;
    snmp_free_pdu(pdu);
}

} // namespace
