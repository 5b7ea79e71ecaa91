// What a session makes of the protocols and pass phrases among its security parameters.

#include "tests/snmp/OpenedSession.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using ::testing::ElementsAre;
using UVARNETSNMP::SNMPSecurity;

// The object identifiers of the protocols (RFC 3414, 6 to 8; RFC 3826, 3.1). One that Net-SNMP was
// built without is unknown.
#ifdef NETSNMP_DISABLE_MD5
const std::vector<oid> md5Protocol;
#else
const std::vector<oid> md5Protocol = {1, 3, 6, 1, 6, 3, 10, 1, 1, 2};
#endif
#ifdef NETSNMP_DISABLE_DES
const std::vector<oid> desProtocol;
#else
const std::vector<oid> desProtocol = {1, 3, 6, 1, 6, 3, 10, 1, 2, 2};
#endif
const std::vector<oid> shaProtocol = {1, 3, 6, 1, 6, 3, 10, 1, 1, 3};
const std::vector<oid> aesProtocol = {1, 3, 6, 1, 6, 3, 10, 1, 2, 4};

// RFC 3414, A.3: the keys of the pass phrase "maplesyrup".
constexpr const char* maplesyrupMD5 = "9faf3283884e92834ebc9847d8edd963";
constexpr const char* maplesyrupSHA = "9fb5cc0381497b3793528939ff788d5d79145211";

class SNMPSessionSecurity : public OpenedSession
{};

TEST_F(SNMPSessionSecurity, EveryStepOfAFullSessionInOrder)
{
    const OpenBook session(SNMP_VERSION_3,
                           SNMPSecurity(Texts{{"authprotocol", "SHA"},
                                              {"privprotocol", "DES"},
                                              {"authpassphrase", "maplesyrup"},
                                              {"privpassphrase", "pancakes"},
                                              {"securityengid", "8000000001"},
                                              {"contextengid", "8000000002"},
                                              {"securitylevel", "AuthPriv"},
                                              {"securityname", "operator"},
                                              {"contextname", "tray"},
                                              {"community", "public"}}),
                           "192.0.2.7", true);

    const std::string room = ", room " + std::to_string(USM_AUTH_KU_LEN) + ")";
    std::vector<std::string> expected = {
        "snmp_duplicate_objid(1.3.6.1.6.3.10.1.1.3)",
        "generate_Ku(1.3.6.1.6.3.10.1.1.3, \"maplesyrup\"" + room,
        "snmp_hex_to_binary(room 32, 0, 1, \"8000000001\")",
        "snmp_hex_to_binary(room 32, 0, 1, \"8000000002\")",
        "snmp_duplicate_objid(1.3.6.1.6.3.10.1.2.2)",
        "generate_Ku(1.3.6.1.6.3.10.1.1.3, \"pancakes\"" + room,
        "snmp_sess_open",
        "snmp_sess_session",
    };
    if (desProtocol.empty()) {
        expected.erase(expected.begin() + 4);
    }
    EXPECT_EQ(m_fake.TakeCalls(), expected);
    ASSERT_EQ(m_fake.opened.size(), 1U);
    const FakeNetSNMP::Template& opened = m_fake.opened[0];
    EXPECT_EQ(opened.raw.version, SNMP_VERSION_3);
    EXPECT_EQ(opened.raw.securityLevel, SNMP_SEC_LEVEL_AUTHPRIV);
    EXPECT_EQ(FakeNetSNMP::Hex(opened.securityEngineID.value()), "8000000001");
    EXPECT_EQ(FakeNetSNMP::Hex(opened.contextEngineID.value()), "8000000002");
    EXPECT_EQ(FakeNetSNMP::Hex(opened.authKey), maplesyrupSHA);
    EXPECT_EQ(opened.privKey.size(), 20U);
    EXPECT_EQ(opened.community, "public");

    // Afterwards the template has given back every copy; the peer's text is the session's own.
    EXPECT_EQ(session.m_session.community, nullptr);
    EXPECT_EQ(session.m_session.contextEngineID, nullptr);
    EXPECT_EQ(session.m_session.contextName, nullptr);
    EXPECT_EQ(session.m_session.securityEngineID, nullptr);
    EXPECT_EQ(session.m_session.securityName, nullptr);
    EXPECT_EQ(session.m_session.securityAuthProto, nullptr);
    EXPECT_EQ(session.m_session.securityPrivProto, nullptr);
    EXPECT_STREQ(session.m_session.peername, "192.0.2.7");
}

TEST_F(SNMPSessionSecurity, AuthenticationProtocols)
{
    struct Case
    {
        const char* text;
        std::vector<oid> protocol;
    };
    const Case cases[] = {
        {"MD5", md5Protocol}, {"SHA", shaProtocol}, {"md5", {}}, {"sha", {}}, {"Sha", {}},
        {"SHA1", {}},         {"SHA-256", {}},      {"SH", {}},  {"", {}},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.text);
        const FakeNetSNMP::Template opened = Opened(Texts{{"authprotocol", row.text}});
        EXPECT_EQ(opened.authProtocol, row.protocol);
        EXPECT_EQ(opened.raw.securityAuthProtoLen, row.protocol.size());
        EXPECT_EQ(opened.raw.securityAuthProto == nullptr, row.protocol.empty());
        EXPECT_EQ(opened.raw.securityPrivProto, nullptr);
    }
}

TEST_F(SNMPSessionSecurity, PrivacyProtocols)
{
    struct Case
    {
        const char* text;
        std::vector<oid> protocol;
    };
    const Case cases[] = {
        {"DES", desProtocol}, {"des", {}}, {"aes", {}}, {"AES128", {}}, {"3DES", {}}, {"", {}},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.text);
        const FakeNetSNMP::Template opened = Opened(Texts{{"privprotocol", row.text}});
        EXPECT_EQ(opened.privProtocol, row.protocol);
        EXPECT_EQ(opened.raw.securityPrivProtoLen, row.protocol.size());
        EXPECT_EQ(opened.raw.securityPrivProto == nullptr, row.protocol.empty());
        EXPECT_EQ(opened.raw.securityAuthProto, nullptr);
    }
}

TEST_F(SNMPSessionSecurity, AESPointsAtNetSNMPsOwnArrayAndGivesItNoLength)
{
    const oid* const own = usmAESPrivProtocol;
    const OpenBook session(SNMP_VERSION_3, SNMPSecurity(Texts{{"privprotocol", "AES"}}),
                           "192.0.2.7", false);

    EXPECT_THAT(m_fake.TakeCalls(), ElementsAre("snmp_duplicate_objid(1.3.6.1.6.3.10.1.2.4)",
                                                "snmp_sess_open", "snmp_sess_session"));
    ASSERT_EQ(m_fake.opened.size(), 1U);
    EXPECT_EQ(m_fake.opened[0].raw.securityPrivProto, own);
    EXPECT_EQ(m_fake.opened[0].raw.securityPrivProtoLen, 0U);
    EXPECT_EQ(session.m_session.securityPrivProto, nullptr);
    EXPECT_EQ(std::vector<oid>(own, own + aesProtocol.size()), aesProtocol)
        << "not freed with the copies";
}

TEST_F(SNMPSessionSecurity, PassPhrasesBecomeKeysByTheAuthenticationProtocol)
{
    struct Case
    {
        const char* name;
        const char* protocol;
        const char* key;
    };
    const Case cases[] = {
#ifndef NETSNMP_DISABLE_MD5
        {"MD5", "MD5", maplesyrupMD5},
#endif
        {"SHA", "SHA", maplesyrupSHA},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        const Texts authOnly = {{"authprotocol", row.protocol}, {"authpassphrase", "maplesyrup"}};
        const FakeNetSNMP::Template auth = Opened(authOnly);
        EXPECT_EQ(FakeNetSNMP::Hex(auth.authKey), row.key);
        EXPECT_EQ(auth.privKey, "");

        const Texts privOnly = {{"authprotocol", row.protocol}, {"privpassphrase", "maplesyrup"}};
        const FakeNetSNMP::Template priv = Opened(privOnly);
        EXPECT_EQ(priv.authKey, "");
        EXPECT_EQ(FakeNetSNMP::Hex(priv.privKey), row.key);
    }
}

TEST_F(SNMPSessionSecurity, TheKeysHaveTheRoomThatNetSNMPsHeadersGiveThem)
{
    EXPECT_EQ(sizeof(netsnmp_session::securityAuthKey), size_t{USM_AUTH_KU_LEN});
    EXPECT_EQ(sizeof(netsnmp_session::securityPrivKey), size_t{USM_PRIV_KU_LEN});
}

TEST_F(SNMPSessionSecurity, AKeyThatCannotBeDerivedDoesNotStopTheOpening)
{
    m_fake.keysAreDerived = false;
    const OpenBook session(SNMP_VERSION_3,
                           SNMPSecurity(Texts{{"authprotocol", "SHA"},
                                              {"authpassphrase", "maplesyrup"},
                                              {"privpassphrase", "maplesyrup"}}),
                           "192.0.2.7", false);

    EXPECT_TRUE(session.m_initialized);
    EXPECT_EQ(session.m_sessionPtr, &m_fake.live);
    EXPECT_EQ(m_fake.opened.at(0).raw.securityAuthKeyLen, size_t{USM_AUTH_KU_LEN})
        << "as the derivation was told and left it";
    EXPECT_EQ(m_fake.opened.at(0).raw.securityPrivKeyLen, size_t{USM_PRIV_KU_LEN});
}

TEST_F(SNMPSessionSecurity, APassPhraseUnderEightCharactersGivesAKeyOfZeros)
{
    const std::string zeros(2 * size_t{USM_AUTH_KU_LEN}, '0');
    const FakeNetSNMP::Template tooShort = Opened(Texts{
        {"authprotocol", "SHA"}, {"authpassphrase", "7-signs"}, {"privpassphrase", "private"}});
    EXPECT_EQ(FakeNetSNMP::Hex(tooShort.authKey), zeros);
    EXPECT_EQ(FakeNetSNMP::Hex(tooShort.privKey), zeros);

    const FakeNetSNMP::Template longEnough = Opened(Texts{
        {"authprotocol", "SHA"}, {"authpassphrase", "8-signs!"}, {"privpassphrase", "private!"}});
    EXPECT_EQ(longEnough.authKey.size(), 20U);
    EXPECT_EQ(longEnough.authKey.find('\0'), std::string::npos);
    EXPECT_EQ(longEnough.privKey.size(), 20U);
    EXPECT_EQ(longEnough.privKey.find('\0'), std::string::npos);
}

TEST_F(SNMPSessionSecurity, PassPhrasesGoToTheDerivationWithAllTheirBytes)
{
    const UVARNETSNMP::ByteString passPhrase = Octets(std::string("maple\0syrup", 11));
    const OpenBook session(SNMP_VERSION_3,
                           SNMPSecurity(std::map<std::string, UVARNETSNMP::ByteString>{
                               {"authpassphrase", passPhrase}, {"privpassphrase", passPhrase}}),
                           "192.0.2.7", false);

    const std::string derivation = "generate_Ku(none, \"" + std::string("maple\0syrup", 11) +
                                   "\", room " + std::to_string(USM_AUTH_KU_LEN) + ")";
    EXPECT_THAT(m_fake.TakeCalls(),
                ElementsAre(derivation, derivation, "snmp_sess_open", "snmp_sess_session"));
}

TEST_F(SNMPSessionSecurity, APassPhraseWithoutAProtocolIsStillHandedOver)
{
    const OpenBook session(SNMP_VERSION_3, SNMPSecurity(Texts{{"authpassphrase", "maplesyrup"}}),
                           "192.0.2.7", false);

    EXPECT_THAT(m_fake.TakeCalls(), ElementsAre("generate_Ku(none, \"maplesyrup\", room " +
                                                    std::to_string(USM_AUTH_KU_LEN) + ")",
                                                "snmp_sess_open", "snmp_sess_session"));
    m_fake.ForgetCalls();
    EXPECT_EQ(m_fake.opened.at(0).raw.securityAuthProto, nullptr);
}

} // namespace
