// SNMPSession.cpp, with Net-SNMP faked: when a session is opened and closed, and its state if it
// could not be opened.

#include "tests/snmp/helpers/OpenedSession.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iterator>
#include <string>
#include <type_traits>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using UVARNETSNMP::ByteString;
using UVARNETSNMP::SNMPSecurity;
using UVARNETSNMP::SNMPSession;

static_assert(!std::is_copy_constructible<SNMPSession>::value, "a session is one handle");
static_assert(!std::is_copy_assignable<SNMPSession>::value, "a session is one handle");
static_assert(std::has_virtual_destructor<SNMPSession>::value, "sessions may be derived from");

class SNMPSessionLifetime : public OpenedSession
{
protected:
    static void ExpectUninitialised(const OpenBook& session)
    {
        EXPECT_FALSE(session.m_initialized);
        EXPECT_TRUE(session.m_peerName.isNull());
        EXPECT_EQ(session.m_sessionPtr, nullptr);
        EXPECT_EQ(session.m_sessionHandle, nullptr);
    }
};

TEST_F(SNMPSessionLifetime, BeforeInitializeNoSessionIsOpened)
{
    const NameGuard none("");
    const OpenBook sessions[] = {
        OpenBook(SNMP_VERSION_1, "public", "192.0.2.7", false),
        OpenBook(SNMP_VERSION_1, "public"),
        OpenBook(SNMP_VERSION_3, SNMPSecurity(), "192.0.2.7", false),
    };
    for (const OpenBook& session : sessions) {
        ExpectUninitialised(session);
    }
    EXPECT_THAT(m_fake.TakeCalls(), IsEmpty());
}

TEST_F(SNMPSessionLifetime, WithoutAHostNoSessionIsOpened)
{
    const OpenBook sessions[] = {
        OpenBook(SNMP_VERSION_1, "public", "", true),
        OpenBook(SNMP_VERSION_3, SNMPSecurity(), "", false),
    };
    for (const OpenBook& session : sessions) {
        ExpectUninitialised(session);
    }
    EXPECT_THAT(m_fake.TakeCalls(), IsEmpty());
}

TEST_F(SNMPSessionLifetime, TheSecurityIsKeptAlsoByASessionThatIsNotOpened)
{
    const OpenBook session(SNMP_VERSION_1, "public", "", false);

    EXPECT_EQ(session.m_security.LookupString("community"), "public");
}

TEST_F(SNMPSessionLifetime, AnOpenThatFails)
{
    m_fake.openSucceeds = false;
    {
        OpenBook session(SNMP_VERSION_3,
                         SNMPSecurity(Texts{{"authprotocol", "SHA"}, {"securityname", "operator"}}),
                         "192.0.2.7", false);
        EXPECT_THAT(m_fake.TakeCalls(),
                    ElementsAre("snmp_duplicate_objid(1.3.6.1.6.3.10.1.1.3)", "snmp_sess_open"));

        EXPECT_TRUE(session.m_initialized);
        EXPECT_EQ(session.m_sessionPtr, nullptr);
        EXPECT_EQ(session.m_sessionHandle, nullptr);
        EXPECT_EQ(session.m_session.securityAuthProto, nullptr);
        EXPECT_EQ(session.m_session.securityName, nullptr);
        EXPECT_STREQ(session.m_session.peername, "192.0.2.7");
        EXPECT_FALSE(session.InitializeSession(SNMP_VERSION_3, false));
    }
    EXPECT_THAT(m_fake.TakeCalls(), IsEmpty()) << "nothing to close, and no second try";
}

TEST_F(SNMPSessionLifetime, TheDestructorClosesAnOpenSessionOnce)
{
    {
        const OpenBook session(SNMP_VERSION_1, "public", "192.0.2.7", false);
        m_fake.ForgetCalls();
    }
    EXPECT_THAT(m_fake.TakeCalls(), ElementsAre("snmp_sess_close"));
}

TEST_F(SNMPSessionLifetime, ASessionIsNotOpenedAgain)
{
    OpenBook session(SNMP_VERSION_1, "public", "192.0.2.7", false);
    m_fake.ForgetCalls();

    EXPECT_TRUE(session.InitializeSession(SNMP_VERSION_2c, true));

    EXPECT_THAT(m_fake.TakeCalls(), IsEmpty());
    EXPECT_EQ(session.m_session.version, SNMP_VERSION_1);
}

TEST_F(SNMPSessionLifetime, ASessionWithoutAPeerIsNotOpened)
{
    OpenBook session(SNMP_VERSION_1, "public", "", false);

    EXPECT_FALSE(session.InitializeSession(SNMP_VERSION_1, false));

    EXPECT_THAT(m_fake.TakeCalls(), IsEmpty());
}

/// Programs that were compiled with the header find the fields by their places, so the order is
/// part of the interface.
TEST_F(SNMPSessionLifetime, TheFieldsStandInOrder)
{
    const OpenBook session(SNMP_VERSION_1, "public", "", false);
    const void* const fields[] = {&session.m_peerName,      &session.m_initialized,
                                  &session.m_session,       &session.m_sessionPtr,
                                  &session.m_sessionHandle, &session.m_security};
    for (size_t i = 1; i < std::size(fields); ++i) {
        EXPECT_LT(fields[i - 1], fields[i]) << i;
    }
}

TEST(Snmpstring, EndsAtTheFirstNul)
{
    EXPECT_EQ(SNMPSession::snmpstring("public"), Octets("public"));
    EXPECT_EQ(SNMPSession::snmpstring(std::string("ab\0cd", 5)), Octets("ab"));
    EXPECT_EQ(SNMPSession::snmpstring(std::string("\0cd", 3)), ByteString());
    EXPECT_EQ(SNMPSession::snmpstring(""), ByteString());
    EXPECT_EQ(SNMPSession::snmpstring("\xff\x80"), (ByteString{0xff, 0x80}));
}

} // namespace
