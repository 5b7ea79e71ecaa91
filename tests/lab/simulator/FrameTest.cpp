// Frames, the transfer syntax, the guard's addresses and the command line of the simulator.

#include "lab/simulator/Frame.h"
#include "lab/simulator/Guard.h"
#include "lab/simulator/Message.h"
#include "lab/simulator/Options.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <utility>

namespace {

using namespace Simulator;

Arrival asker()
{
    Arrival made;
    made.sender = {2, 0, 0, 0, 0, 1};
    made.source = 0xc6120001;
    made.sourcePort = 40000;
    made.destinationPort = 161;
    return made;
}

TEST(Ber, Integers)
{
    struct Row
    {
        std::int64_t value;
        Octets encoded;
    };
    const Row rows[] = {
        {0, Octets("\x02\x01\0", 3)},
        {127, "\x02\x01\x7f"},
        {128, Octets("\x02\x02\0\x80", 4)},
        {-1, "\x02\x01\xff"},
        {-128, "\x02\x01\x80"},
        {-129, "\x02\x02\xff\x7f"},
        {0x7fffffff, "\x02\x04\x7f\xff\xff\xff"},
        {std::numeric_limits<std::int64_t>::min(), Octets("\x02\x08\x80\0\0\0\0\0\0\0", 10)},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(integer(row.value), row.encoded) << row.value;
        Reader reader(row.encoded);
        EXPECT_EQ(reader.number(), row.value);
        EXPECT_FALSE(reader.failed());
    }
}

TEST(Ber, Lengths)
{
    EXPECT_EQ(element(4, Octets(127, 'x')).substr(0, 2), "\x04\x7f");
    EXPECT_EQ(element(4, Octets(128, 'x')).substr(0, 3), "\x04\x81\x80");
    EXPECT_EQ(element(4, Octets(256, 'x')).substr(0, 4), Octets("\x04\x82\x01\0", 4));
    for (const std::size_t size : {0U, 127U, 128U, 255U, 256U, 65535U, 65536U}) {
        const Octets made = element(4, Octets(size, 'x'));
        EXPECT_EQ(Reader(made).content(4).size(), size);
    }
}

TEST(Ber, AReaderFailsForGood)
{
    for (const Octets& bad : {Octets(), Octets("\x30"), Octets("\x30\x01"), Octets("\x30\x80", 2),
                              Octets("\x30\x85\0\0\0\0\x01", 7), Octets("\x31\0", 2)}) {
        Reader reader(bad);
        EXPECT_EQ(reader.content(0x30), "");
        EXPECT_TRUE(reader.failed());
        EXPECT_EQ(reader.number(), 0);
    }
}

TEST(Frame, IsReadAsItWasMade)
{
    std::vector<Octets> frames;
    FrameMaker({2, 0, 0, 0, 0, 2}, 0).datagram(asker(), 0xc6120009, "hello", frames);
    ASSERT_EQ(frames.size(), 1U);
    EXPECT_EQ(frames[0].size(), 14U + 20 + 8 + 5);
    EXPECT_EQ(checksum(frames[0].substr(14, 20)), 0);
    const auto found = readFrame(frames[0]);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->payload, "hello");
    EXPECT_EQ(found->source, 0xc6120009);
    EXPECT_EQ(found->destination, 0xc6120001);
    EXPECT_EQ(found->destinationPort, 40000);
}

TEST(Frame, IsFilledUpBehindThePacket)
{
    std::vector<Octets> frames;
    FrameMaker({}, 1514).datagram(asker(), 0xc6120009, "hello", frames);
    EXPECT_EQ(frames.at(0).size(), 1514U);
    EXPECT_EQ(readFrame(frames[0])->payload, "hello");
}

TEST(Frame, AnEmptyDatagramIsOneFrame)
{
    std::vector<Octets> frames;
    FrameMaker({}, 0).datagram(asker(), 0xc6120009, "", frames);
    ASSERT_EQ(frames.size(), 1U);
    EXPECT_EQ(readFrame(frames[0])->payload, "");
}

TEST(Frame, FragmentsHoldTheDatagramInOrder)
{
    Octets payload(60000, 'x');
    payload.back() = 'y';
    std::vector<Octets> frames;
    FrameMaker({}, 0).datagram(asker(), 0xc6120009, payload, frames);
    ASSERT_EQ(frames.size(), 41U); // 60,008 octets in pieces of 1,480
    Octets whole;
    for (const Octets& frame : frames) {
        const unsigned field =
            static_cast<unsigned char>(frame[20]) * 256U + static_cast<unsigned char>(frame[21]);
        EXPECT_EQ((field & 0x1fffU) * 8, whole.size());
        EXPECT_EQ((field & 0x2000U) != 0, &frame != &frames.back());
        EXPECT_EQ(frame.substr(18, 2), frames[0].substr(18, 2)); // one identification
        EXPECT_EQ(checksum(frame.substr(14, 20)), 0);
        EXPECT_FALSE(readFrame(frame));
        whole += frame.substr(34);
    }
    EXPECT_EQ(whole.substr(8), payload);
}

TEST(Frame, NothingShorterIsRead)
{
    std::vector<Octets> frames;
    FrameMaker({}, 0).datagram(asker(), 0xc6120009, "hello", frames);
    for (std::size_t size = 0; size < frames.at(0).size(); ++size) {
        EXPECT_FALSE(readFrame(frames[0].substr(0, size))) << size;
    }
}

TEST(Guard, DocumentationAddresses)
{
    struct Row
    {
        std::uint32_t address;
        bool allowed;
    };
    const Row rows[] = {
        {0xc0000200, true},  {0xc00002ff, true},  {0xc0000300, false}, {0xc00001ff, false},
        {0xc6336400, true},  {0xc6336500, false}, {0xcb007100, true},  {0xcb0070ff, false},
        {0xc6120000, true},  {0xc613ffff, true},  {0xc6140000, false}, {0xc611ffff, false},
        {0x7f000001, false}, {0xffffffff, false}, {0, false},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(isDocumentationAddress(row.address), row.allowed) << std::hex << row.address;
    }
}

TEST(Guard, RefusesOutsideALab)
{
    EXPECT_NE(refusal(), "");
}

TEST(Options, DefaultsAndValues)
{
    std::string error;
    const auto plain = readOptions({"--first", "192.0.2.9"}, error);
    ASSERT_TRUE(plain) << error;
    EXPECT_EQ(plain->first, 0xc0000209);
    EXPECT_EQ(plain->agents, 1U);
    EXPECT_EQ(plain->community, "public");
    EXPECT_STREQ(plain->behaviour->name, "plain");
    const auto all =
        readOptions({"--first",     "198.18.1.0", "--agents",    "20000",  "--behaviour", "deep",
                     "--interface", "eth1",       "--community", "secret", "--copies",    "2",
                     "--ignore",    "1",          "--delay",     "5",      "--spread",    "6",
                     "--frame",     "1514",       "--flood",     "7",      "--seed",      "8",
                     "--seconds",   "9"},
                    error);
    ASSERT_TRUE(all) << error;
    EXPECT_EQ(all->agents, 20000U);
    EXPECT_STREQ(all->behaviour->name, "deep");
    EXPECT_EQ(all->interface, "eth1");
    EXPECT_EQ(all->community, "secret");
    EXPECT_EQ(all->copies + all->ignore * 10 + all->delay * 100, 512U);
    EXPECT_EQ(all->spread + all->flood * 10 + all->seed * 100 + all->seconds * 1000, 9876U);
    EXPECT_EQ(all->frame, 1514U);
}

TEST(Options, WhatIsRefused)
{
    const std::vector<std::string> rows[] = {
        {},
        {"--first"},
        {"--first", "192.0.2"},
        {"--first", "127.0.0.1"},
        {"--first", "224.0.0.1"},
        {"--first", "198.51.100.250", "--agents", "7"}, // the last one is outside
        {"--first", "192.0.2.1", "--agents", "0"},
        {"--first", "198.18.0.1", "--agents", "100001"},
        {"--first", "192.0.2.1", "--agents", "-1"},
        {"--first", "192.0.2.1", "--agents", "1x"},
        {"--first", "192.0.2.1", "--seconds", "301"},
        {"--first", "192.0.2.1", "--frame", "1515"},
        {"--first", "192.0.2.1", "--behaviour", "good"},
        {"--first", "192.0.2.1", "--magic", "1"},
    };
    for (const std::vector<std::string>& row : rows) {
        std::string error;
        EXPECT_FALSE(readOptions(row, error));
        EXPECT_NE(error, "");
    }
}

TEST(Message, AnswersWithTheObjectAskedFor)
{
    const Octets sysDescr("\x2b\x06\x01\x02\x01\x01\x01\0", 8);
    const Octets deviceType("\x2b\x06\x01\x02\x01\x19\x03\x02\x01\x02\x01");
    const Octets printer("\x2b\x06\x01\x02\x01\x19\x03\x01\x05");
    const std::pair<Octets, Octets> rows[] = {
        {sysUpTime, integer(4200, tagTimeTicks)},
        {sysDescr, element(tagOctetString, "simulated")},
        {deviceType, element(tagObjectIdentifier, printer)},
    };
    for (const auto& [name, value] : rows) {
        Message request;
        request.pduType = pduGet;
        request.errorIndex = 10;
        request.bindings = binding(name, element(tagNull, ""));
        const Message answer = plainAnswer(request);
        EXPECT_EQ(answer.bindings, binding(name, value));
        EXPECT_EQ(answer.pduType, pduResponse);
        EXPECT_EQ(answer.errorIndex, 0);
    }
    EXPECT_EQ(plainAnswer(Message()).bindings, binding(sysUpTime, integer(4200, tagTimeTicks)));
}

TEST(Message, WhatIsNoRequest)
{
    Message message;
    message.community = "public";
    for (const unsigned type : {0xa2U, 0xa3U, 0xa5U, 0xa7U, 0x30U}) {
        message.pduType = static_cast<unsigned char>(type);
        EXPECT_FALSE(readRequest(message.encode()));
    }
    message.pduType = pduGet;
    EXPECT_TRUE(readRequest(message.encode()));
    message.pduType = pduGetNext;
    EXPECT_TRUE(readRequest(message.encode()));
}

} // namespace
