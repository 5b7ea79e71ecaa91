// What GetBulk sends: a GETNEXT, in nearly every case.

#include "tests/snmp/FakeNetSNMP.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using ::testing::ElementsAre;
using UVARNETSNMP::OID;

class SNMPSessionGetBulk : public ::testing::Test
{
protected:
    SNMPSessionGetBulk() { m_fake.ForgetCalls(); }

    NameGuard m_name{"Test"};
    FakeNetSNMP m_fake;
    const OID m_oid = SysUpTimeName();
};

TEST_F(SNMPSessionGetBulk, OfVersion1IsAGetNext)
{
    OpenBook session(SNMP_VERSION_1, "public", "192.0.2.7", false);
    m_fake.ForgetCalls();

    session.GetBulk(m_oid);

    EXPECT_THAT(m_fake.TakeCalls(), ElementsAre("snmp_pdu_create(161)",
                                                "snmp_add_null_var(request1, 1.3.6.1.2.1.1.3.0)",
                                                "snmp_sess_synch_response(request1)"));
}

TEST_F(SNMPSessionGetBulk, PresetOtherwiseThanZeroEndsAsAGetNext)
{
    for (const long preset : {-1L, 1L, 10L}) {
        OpenBook session(SNMP_VERSION_2c, "public", "192.0.2.7", false);
        m_fake.ForgetCalls();
        m_fake.created = 0;
        m_fake.presetNonRepeaters = preset;
        m_fake.response = m_fake.MakePDU("response", SNMP_MSG_RESPONSE);

        snmp_pdu* const response = session.GetBulk(m_oid);

        EXPECT_EQ(response, m_fake.response);
        EXPECT_THAT(m_fake.TakeCalls(),
                    ElementsAre("snmp_pdu_create(165)", "snmp_pdu_create(161)",
                                "snmp_add_null_var(request2, 1.3.6.1.2.1.1.3.0)",
                                "snmp_sess_synch_response(request2)", "snmp_free_pdu(request1)"))
            << preset;
        session.ReleasePDU(response);
        m_fake.ForgetCalls();
    }
}

TEST_F(SNMPSessionGetBulk, PresetToZeroIsSent)
{
    OpenBook session(SNMP_VERSION_2c, "public", "192.0.2.7", false);
    m_fake.ForgetCalls();
    m_fake.presetNonRepeaters = 0;
    m_fake.response = m_fake.MakePDU("response", SNMP_MSG_RESPONSE);

    snmp_pdu* const response = session.GetBulk(m_oid);

    EXPECT_EQ(response, m_fake.response);
    EXPECT_THAT(m_fake.TakeCalls(), ElementsAre("snmp_pdu_create(165)",
                                                "snmp_add_null_var(request1, 1.3.6.1.2.1.1.3.0)",
                                                "snmp_sess_synch_response(request1)"));
    ASSERT_EQ(m_fake.sent.size(), 1U);
    EXPECT_EQ(m_fake.sent[0].errorStatus, 0);
    EXPECT_EQ(m_fake.sent[0].errorIndex, 10);
    session.ReleasePDU(response);
    m_fake.ForgetCalls();
}

TEST_F(SNMPSessionGetBulk, AsksTheTemplateForTheVersion)
{
    OpenBook session(SNMP_VERSION_1, "public", "192.0.2.7", false);
    m_fake.ForgetCalls();
    m_fake.live.version = SNMP_VERSION_2c;

    session.GetBulk(m_oid);

    EXPECT_EQ(m_fake.TakeCalls().front(), "snmp_pdu_create(161)");
}

} // namespace
