// The two conversions of a session, and the engine IDs that it gets from one of them.

#include "tests/snmp/OpenedSession.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <optional>
#include <string>

namespace {

using UVARNETSNMP::ByteString;
using UVARNETSNMP::SNMPSession;

struct EngineIDCase
{
    const char* name;
    std::string text;
    std::optional<std::string> octets; ///< in hexadecimal; none: refused
};

const EngineIDCase engineIDs[] = {
    {"empty", "", std::nullopt},
    {"4 octets", "80000000", std::nullopt},
    {"5 octets", "8000000001", "8000000001"},
    {"32 octets", std::string(64, 'a'), std::string(64, 'a')},
    {"33 octets", std::string(66, 'a'), std::nullopt},
    {"far more than the first buffer", std::string(2000, 'a'), std::nullopt},
    {"an odd digit at the end", "80000000011", std::nullopt},
    {"both cases", "80AbCdEf01", "80abcdef01"},
    {"prefix 0x", "0x8000000001", "8000000001"},
    {"prefix 0X", "0X8000000001", "8000000001"},
    {"prefix, 4 octets", "0x80000000", std::nullopt},
    {"blanks between octets", "80 00  00 00 01 ", "8000000001"},
    {"a blank inside an octet", "8 0000000010", std::nullopt},
    {"colons", "80:00:00:00:01", std::nullopt},
    {"not hexadecimal", "80000000zz", std::nullopt},
    {"not hexadecimal after enough octets", "800000000102zz", std::nullopt},
    {"not hexadecimal after too many", std::string(80, 'a') + "zz", std::nullopt},
    {"cut at a NUL", std::string("8000000001\0zz", 13), "8000000001"},
};

class SNMPSessionConversion : public OpenedSession
{};

TEST_F(SNMPSessionConversion, EngineIDTexts)
{
    for (const EngineIDCase& row : engineIDs) {
        SCOPED_TRACE(row.name);
        unsigned char untouched = 0;
        unsigned char* engineID = &untouched;
        size_t length = 4711;
        const bool made = SNMPSession::MakeEngineID(row.text, &engineID, &length);
        EXPECT_EQ(made, row.octets.has_value());
        if (made) {
            const std::unique_ptr<unsigned char, void (*)(void*)> owner(engineID, &std::free);
            EXPECT_EQ(FakeNetSNMP::Hex(std::string(engineID, engineID + length)), row.octets);
        } else {
            EXPECT_EQ(engineID, &untouched);
            EXPECT_EQ(length, 4711U);
        }
    }
}

TEST_F(SNMPSessionConversion, MakeEngineIDWithoutAPlaceForItsResult)
{
    unsigned char* engineID = nullptr;
    size_t length = 4711;

    EXPECT_FALSE(SNMPSession::MakeEngineID("8000000001", nullptr, &length));
    EXPECT_FALSE(SNMPSession::MakeEngineID("8000000001", &engineID, nullptr));
    EXPECT_FALSE(SNMPSession::MakeEngineID("8000000001", nullptr, nullptr));
    EXPECT_EQ(engineID, nullptr);
    EXPECT_EQ(length, 4711U);
}

TEST_F(SNMPSessionConversion, EngineIDsOfASession)
{
    for (const EngineIDCase& row : engineIDs) {
        SCOPED_TRACE(row.name);
        const FakeNetSNMP::Template security = Opened(Texts{{"securityengid", row.text}});
        EXPECT_EQ(security.raw.securityEngineIDLen, row.octets.value_or("").size() / 2);
        EXPECT_EQ(security.securityEngineID.has_value(), row.octets.has_value());
        EXPECT_EQ(FakeNetSNMP::Hex(security.securityEngineID.value_or("")),
                  row.octets.value_or(""));
        EXPECT_EQ(security.contextEngineID, std::nullopt);

        const FakeNetSNMP::Template context = Opened(Texts{{"contextengid", row.text}});
        EXPECT_EQ(context.raw.contextEngineIDLen, row.octets.value_or("").size() / 2);
        EXPECT_EQ(FakeNetSNMP::Hex(context.contextEngineID.value_or("")), row.octets.value_or(""));
        EXPECT_EQ(context.securityEngineID, std::nullopt);
    }
}

TEST_F(SNMPSessionConversion, SnmpstringEndsAtTheFirstNul)
{
    EXPECT_EQ(SNMPSession::snmpstring("public"), Octets("public"));
    EXPECT_EQ(SNMPSession::snmpstring(std::string("ab\0cd", 5)), Octets("ab"));
    EXPECT_EQ(SNMPSession::snmpstring(std::string("\0cd", 3)), ByteString());
    EXPECT_EQ(SNMPSession::snmpstring(""), ByteString());
    EXPECT_EQ(SNMPSession::snmpstring("\xff\x80"), (ByteString{0xff, 0x80}));
}

} // namespace
