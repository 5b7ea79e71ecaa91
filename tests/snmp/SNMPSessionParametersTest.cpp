// What a session makes of its other security parameters: level, names and community.

#include "tests/snmp/OpenedSession.h"

#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <string>

namespace {

using UVARNETSNMP::ByteString;
using UVARNETSNMP::SNMPSecurity;

using Bytes = std::map<std::string, ByteString>;

class SNMPSessionParameters : public OpenedSession
{};

TEST_F(SNMPSessionParameters, SecurityLevels)
{
    struct Case
    {
        const char* text;
        int level;
    };
    const Case cases[] = {
        {"NoAuthNoPriv", SNMP_SEC_LEVEL_NOAUTH},
        {"AuthNoPriv", SNMP_SEC_LEVEL_AUTHNOPRIV},
        {"AuthPriv", SNMP_SEC_LEVEL_AUTHPRIV},
        {"authPriv", 0},
        {"noAuthNoPriv", 0},
        {"AUTHPRIV", 0},
        {"3", 0},
        {"", 0},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(Opened(Texts{{"securitylevel", row.text}}).raw.securityLevel, row.level);
    }
    EXPECT_EQ(SNMP_SEC_LEVEL_NOAUTH, 1);
    EXPECT_EQ(SNMP_SEC_LEVEL_AUTHNOPRIV, 2);
    EXPECT_EQ(SNMP_SEC_LEVEL_AUTHPRIV, 3);
}

TEST_F(SNMPSessionParameters, TextsAreHandedOverWithAllTheirBytes)
{
    const std::string bytes("a\0b", 3);
    const FakeNetSNMP::Template opened = Opened(SNMPSecurity(
        Bytes{{"community", Octets(bytes)}, {"securityname", Octets(bytes)}, {"contextname", {}}}));

    EXPECT_EQ(opened.community, bytes);
    EXPECT_EQ(opened.securityName, bytes);
    EXPECT_EQ(opened.contextName, "") << "present, though empty";
}

TEST_F(SNMPSessionParameters, TextsThatChooseEndAtTheirFirstNul)
{
    const auto cut = [](const std::string& text) { return Octets(text + std::string("\0x", 2)); };
    const FakeNetSNMP::Template opened =
        Opened(SNMPSecurity(Bytes{{"authprotocol", cut("SHA")},
                                  {"privprotocol", cut("AES")},
                                  {"securitylevel", cut("AuthPriv")},
                                  {"securityengid", cut("8000000001")},
                                  {"contextengid", cut("8000000002")}}));

    EXPECT_EQ(opened.raw.securityAuthProtoLen, size_t{USM_AUTH_PROTO_SHA_LEN});
    EXPECT_NE(opened.raw.securityPrivProto, nullptr);
    EXPECT_EQ(opened.raw.securityLevel, SNMP_SEC_LEVEL_AUTHPRIV);
    EXPECT_EQ(FakeNetSNMP::Hex(opened.securityEngineID.value()), "8000000001");
    EXPECT_EQ(FakeNetSNMP::Hex(opened.contextEngineID.value()), "8000000002");
}

TEST_F(SNMPSessionParameters, NamesGoToTheirFields)
{
    const FakeNetSNMP::Template opened =
        Opened(Texts{{"securityname", "operator"}, {"contextname", "tray"}});

    EXPECT_EQ(opened.securityName, "operator");
    EXPECT_EQ(opened.contextName, "tray");
}

TEST_F(SNMPSessionParameters, OtherKeysAreIgnored)
{
    const FakeNetSNMP::Template opened =
        Opened(Texts{{"Community", "public"}, {"SecurityName", "operator"}, {"timeout", "1"}});

    EXPECT_EQ(opened.community, std::nullopt);
    EXPECT_EQ(opened.securityName, std::nullopt);
    EXPECT_EQ(opened.raw.timeout, 3000000);
}

} // namespace
