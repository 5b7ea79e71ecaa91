#include "inventory/Community.h"
#include "inventory/Failure.h"
#include "tests/support/Guards.h"

#include <Poco/AutoPtr.h>
#include <Poco/Util/PropertyFileConfiguration.h>

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace {

using inventory::Credentials;
using inventory::Failure;
using TestSupport::EnvironmentGuard;
using UVARNETSNMP::ByteString;

class CommunityTest : public testing::Test
{
protected:
    std::string file(const std::string& content) const
    {
        std::ofstream(m_file, std::ios::binary) << content;
        return m_file;
    }
    Credentials credentials(const std::string& content) const
    {
        return inventory::readCredentials(file(content), "secret");
    }

private:
    const TestSupport::TemporaryDirectory m_folder;
    const std::string m_file = (m_folder.path() / "file").string();
};

ByteString bytes(const std::string& text)
{
    return {text.begin(), text.end()};
}

TEST_F(CommunityTest, TheFirstLineOfAFile)
{
    const EnvironmentGuard variable("SNMP_COMMUNITY", "other");
    for (const char* const content :
         {"secret", "secret\n", "secret\r\n", "secret\nsecond line\n"}) {
        EXPECT_EQ(inventory::readCommunity(file(content)), "secret") << content;
    }
}

TEST_F(CommunityTest, WithoutAFileTheEnvironmentAndElsePublic)
{
    {
        const EnvironmentGuard variable("SNMP_COMMUNITY", "secret");
        EXPECT_EQ(inventory::readCommunity({}), "secret");
    }
    {
        const EnvironmentGuard variable("SNMP_COMMUNITY", "");
        EXPECT_EQ(inventory::readCommunity({}), "public");
    }
    const EnvironmentGuard variable("SNMP_COMMUNITY", std::nullopt);
    EXPECT_EQ(inventory::readCommunity({}), "public");
}

TEST_F(CommunityTest, WhatCannotBeCarriedIsRefused)
{
    for (const std::string& content :
         {std::string(), std::string("\nsecond"), std::string("\r\n"), std::string(" secret"),
          std::string("secret "), std::string("secret\t"), std::string("\vsecret"),
          std::string("a\0b", 3), std::string("secret\r\r\n")}) {
        EXPECT_THROW(inventory::readCommunity(file(content)), Failure)
            << testing::PrintToString(content);
    }
    EXPECT_THROW(inventory::readCommunity("/nonexistent/file"), Failure);
    const EnvironmentGuard variable("SNMP_COMMUNITY", "secret ");
    EXPECT_THROW(inventory::readCommunity({}), Failure);
}

TEST_F(CommunityTest, POCOReadsBackTheSameBytes)
{
    std::string all;
    for (int c = 1; c < 256; ++c) {
        all += static_cast<char>(c);
    }
    for (const std::string& community :
         {std::string("secret"), std::string("a b"), std::string("back\\slash\\"),
          std::string("\\n\\t\\\\"), std::string("${HOME}"), std::string("${system.osName}"),
          std::string("$${dollar}{"), std::string("${"), std::string("$"), std::string("$$"),
          std::string("a$"), std::string("#!=:;'\""), std::string("=x"), std::string("a=b:c"),
          std::string("${${a}}"), std::string("\xc3\xa9\xff"), std::string("a\rb\nc"),
          "x" + all + "x"}) {
        std::istringstream in(inventory::communityProperties(community));
        const Poco::AutoPtr<Poco::Util::PropertyFileConfiguration> read(
            new Poco::Util::PropertyFileConfiguration(in));
        EXPECT_EQ(read->getString("Community"), community) << testing::PrintToString(community);
    }
}

TEST_F(CommunityTest, CredentialsOfSNMPv3)
{
    const Credentials read = credentials("# a comment\r\n\r\nversion = 3\n"
                                         "securityname=user\n  securitylevel =  AuthPriv  \n"
                                         "authprotocol = SHA\nauthpassphrase = a = b c d\n"
                                         "privprotocol = DES\nprivpassphrase = a phrase\n"
                                         "contextname =\nsecurityengid = 8000000001020304\n");
    EXPECT_EQ(read.version, SNMP_VERSION_3);
    EXPECT_EQ(read.parameters.at("securityname"), bytes("user"));
    EXPECT_EQ(read.parameters.at("securitylevel"), bytes("AuthPriv"));
    EXPECT_EQ(read.parameters.at("authpassphrase"), bytes("a = b c d"));
    EXPECT_EQ(read.parameters.at("contextname"), bytes(""));
    EXPECT_EQ(read.parameters.count("community"), 0U);
}

TEST_F(CommunityTest, CredentialsWithACommunity)
{
    EXPECT_EQ(credentials("version = 1").version, SNMP_VERSION_1);
    EXPECT_EQ(credentials("version = 2c").version, SNMP_VERSION_2c);
    EXPECT_EQ(credentials("version = 2c").parameters.at("community"), bytes("secret"));
    EXPECT_EQ(credentials("version = 2c\ncommunity = own").parameters.at("community"),
              bytes("own"));
    const Credentials standard = inventory::credentialsFor("secret");
    EXPECT_EQ(standard.version, SNMP_VERSION_1);
    EXPECT_EQ(standard.parameters.at("community"), bytes("secret"));
}

TEST_F(CommunityTest, WrongCredentialsAreRefused)
{
    for (const char* const content :
         {"", "securityname = user", "version = 2", "version = 4", "version =", "version",
          "version = 3\nversion = 3", "version = 3\nuser = x", "version = 3\nSecurityName = x",
          "version = 3\nsecurityname = a\nsecurityname = b",
          "version = 3\nsecuritylevel = authPriv", "version = 3\nauthprotocol = SHA256",
          "version = 3\nprivprotocol = AES256", "version = 3\nsecurityengid = 80",
          "version = 3\nauthpassphrase = 7 octet",
          "version = 3\nprivpassphrase =", "version = 3\n= x"}) {
        EXPECT_THROW(credentials(content), Failure) << content;
    }
    EXPECT_THROW(inventory::readCredentials("/nonexistent/file", "x"), Failure);
}

TEST_F(CommunityTest, WhatASecurityLevelNeeds)
{
    const std::string name = "version = 3\nsecurityname = u\n";
    const std::string authNoPriv = "securitylevel = AuthNoPriv\n";
    const std::string authPriv = "securitylevel = AuthPriv\n";
    const std::string authProtocol = "authprotocol = SHA\n";
    const std::string authPhrase = "authpassphrase = a long phrase\n";
    const std::string privProtocol = "privprotocol = DES\n";
    const std::string privPhrase = "privpassphrase = a long phrase\n";
    const std::string authentic = authProtocol + authPhrase;
    const std::string noAuth = "securitylevel = NoAuthNoPriv\n";

    const std::string right[] = {name, name + noAuth, name + noAuth + authPhrase,
                                 name + authNoPriv + authentic,
                                 name + authPriv + authentic + privProtocol + privPhrase};
    for (const std::string& content : right) {
        EXPECT_NO_THROW(credentials(content)) << content;
    }
    const std::string wrong[] = {std::string("version = 3"),
                                 std::string("version = 3\nsecurityname ="),
                                 std::string("version = 3\n") + noAuth,
                                 name + authPhrase,
                                 name + authentic,
                                 name + privPhrase,
                                 name + authNoPriv,
                                 name + authNoPriv + authProtocol,
                                 name + authNoPriv + authPhrase,
                                 name + authPriv + authentic,
                                 name + authPriv + privProtocol + privPhrase,
                                 name + authPriv + authProtocol + privProtocol + privPhrase,
                                 name + authPriv + authPhrase + privProtocol + privPhrase,
                                 name + authPriv + authentic + privProtocol,
                                 name + authPriv + authentic + privPhrase};
    for (const std::string& content : wrong) {
        EXPECT_THROW(credentials(content), Failure) << content;
    }
    EXPECT_NO_THROW(credentials("version = 2c\n" + authPhrase)) << "only version 3 needs a user";
}

} // namespace
