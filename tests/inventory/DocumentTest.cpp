#include "inventory/Document.h"
#include "inventory/Failure.h"
#include "tests/support/Guards.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

namespace {

using inventory::Address;
using inventory::Agent;
using inventory::Failure;
using testing::ElementsAre;

std::vector<std::string> addresses(const std::string& document)
{
    std::vector<std::string> texts;
    for (const Address address : inventory::readAddresses(document, "it")) {
        texts.push_back(address.text());
    }
    return texts;
}

std::string array(std::size_t count, const std::string& entry)
{
    std::string text = "[";
    for (std::size_t i = 0; i < count; ++i) {
        text += (i == 0 ? "" : ",") + entry;
    }
    return text + "]";
}

TEST(DocumentTest, AddressesInNumericOrderEachOnce)
{
    EXPECT_THAT(addresses(R"([{"hostname":"192.0.2.10"},{"hostname":"192.0.2.9"},
                              {"hostname":"192.0.2.10"}])"),
                ElementsAre("192.0.2.9", "192.0.2.10"));
    EXPECT_THAT(addresses("[]"), ElementsAre());
    EXPECT_THAT(addresses("[]\r\n\t "), ElementsAre());
}

TEST(DocumentTest, OtherMembersAreIgnored)
{
    EXPECT_THAT(
        addresses(R"([{"answers":null,"hostname":"192.0.2.9","supplies":[{"level":1e9}]}])"),
        ElementsAre("192.0.2.9"));
}

TEST(DocumentTest, ADocumentThatIsNoArrayOfAddressesIsRefused)
{
    for (const char* const document : {"",
                                       " ",
                                       "null",
                                       "{}",
                                       "\"192.0.2.9\"",
                                       "64",
                                       "usage: SNMPDiscovery OPTIONS",
                                       "[",
                                       R"([{"hostname":"192.0.2.9"})",
                                       R"([{"hostname":"192.0.2.9"},])",
                                       R"([{"hostname":"192.0.2.9"}]])",
                                       R"([{"hostname":"192.0.2.9"}] x)",
                                       "[] []",
                                       "[[]]",
                                       "[{}]",
                                       "[null]",
                                       R"(["192.0.2.9"])",
                                       R"([{"hostname":9}])",
                                       R"([{"hostname":null}])",
                                       R"([{"hostname":["192.0.2.9"]}])",
                                       R"([{"hostname":"192.0.2.256"}])",
                                       R"([{"hostname":"192.0.2.09"}])",
                                       R"([{"hostname":"printer"}])",
                                       R"([{"Hostname":"192.0.2.9"}])",
                                       "\xef\xbb\xbf[]",
                                       R"([{"hostname":"192.0.2.9"},{"hostname":"192.0.2"}])"}) {
        EXPECT_THROW(addresses(document), Failure) << document;
    }
}

TEST(DocumentTest, ACutDocumentIsRefusedWhereverItIsCut)
{
    const std::string whole = R"([{"hostname":"192.0.2.10"},{"hostname":"192.0.2.9"}])";
    for (std::size_t length = 0; length < whole.size(); ++length) {
        EXPECT_THROW(addresses(whole.substr(0, length)), Failure) << length;
    }
}

TEST(DocumentTest, AtMost65536Entries)
{
    const std::string entry = R"({"hostname":"192.0.2.9"})";
    EXPECT_EQ(addresses(array(65536, entry)).size(), 1U);
    EXPECT_THROW(addresses(array(65537, entry)), Failure);
}

TEST(DocumentTest, AtMost16MiB)
{
    const std::size_t limit = std::size_t{16} * 1024 * 1024;
    EXPECT_THAT(addresses("[]" + std::string(limit - 2, ' ')), ElementsAre());
    EXPECT_THROW(addresses("[]" + std::string(limit - 1, ' ')), Failure);
}

TEST(DocumentTest, ThousandsOfBracketsAreRefused)
{
    EXPECT_THROW(addresses(std::string(1000000, '[')), Failure);
}

TEST(DocumentTest, TheFailureNamesTheDocument)
{
    try {
        inventory::readAddresses("{}", "printers.json");
        FAIL();
    } catch (const Failure& failure) {
        EXPECT_STREQ(failure.what(), "printers.json: no JSON array");
    }
}

TEST(DocumentTest, AReport)
{
    const std::vector<Agent> agents = inventory::readReport(
        R"([{"hostname":"192.0.2.10","answers":false},
            {"hostname":"192.0.2.9","answers":true,"printer":true,"name":"n","model":"m",
             "serial":"s","pages":1},
            {"hostname":"192.0.2.9","name":"again"},
            {"hostname":"192.0.2.11","answers":1,"printer":"yes","name":5}])",
        "it");
    ASSERT_EQ(agents.size(), 3U);
    EXPECT_EQ(agents[0].address.text(), "192.0.2.9");
    EXPECT_EQ(agents[0].answers, true);
    EXPECT_EQ(agents[0].printer, true);
    EXPECT_EQ(agents[0].name, "n");
    EXPECT_EQ(agents[0].model, "m");
    EXPECT_EQ(agents[0].serial, "s");
    EXPECT_EQ(agents[1].answers, false);
    EXPECT_FALSE(agents[2].answers || agents[2].printer || agents[2].name);
    EXPECT_THROW(inventory::readReport("[{}]", "it"), Failure);
}

TEST(DocumentTest, TextsOfAReportAreMended)
{
    const std::vector<Agent> agents = inventory::readReport(
        "[{\"hostname\":\"192.0.2.9\",\"name\":\"a\xff\xed\xa0\x80\",\"model\":\"\","
        "\"serial\":\"\xc3\xa9\"}]",
        "it");
    ASSERT_EQ(agents.size(), 1U);
    EXPECT_EQ(agents[0].name, "a\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd");
    EXPECT_FALSE(agents[0].model);
    EXPECT_EQ(agents[0].serial, "\xc3\xa9");
}

TEST(DocumentTest, TheReaderTakesBareMemberNamesAndControlCharactersInTexts)
{
    EXPECT_THAT(addresses("[{\"hostname\":\"192.0.2.9\",\"name\"}]"), ElementsAre("192.0.2.9"));
    EXPECT_THAT(addresses("[{\"hostname\":\"192.0.2.9\",\"name\":\"a\nb\x01\"}]"),
                ElementsAre("192.0.2.9"));
}

TEST(DocumentTest, Files)
{
    const TestSupport::TemporaryDirectory folder;
    const std::string file = (folder.path() / "document").string();
    std::ofstream(file, std::ios::binary) << std::string("a\0\r\n", 4);
    EXPECT_EQ(inventory::readFile(file), std::string("a\0\r\n", 4));
    EXPECT_THROW(inventory::readFile((folder.path() / "absent").string()), Failure);
    EXPECT_THROW(inventory::readFile(folder.path().string()), Failure);
    EXPECT_THROW(inventory::readFile("/dev/zero"), Failure);
}

} // namespace
