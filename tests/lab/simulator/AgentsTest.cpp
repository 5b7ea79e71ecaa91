// What the simulated agents send for a request, frame by frame, without a socket.

#include "lab/simulator/Agents.h"
#include "lab/simulator/Behaviours.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace {

using namespace Simulator;

const Mac host = {2, 0, 0, 0, 0, 1};
const Mac own = {2, 0, 0, 0, 0, 2};
constexpr std::uint32_t hostAddress = 0xc6120001;  // 198.18.0.1
constexpr std::uint32_t firstAddress = 0xc6120100; // 198.18.1.0
constexpr std::uint16_t hostPort = 40000;

/// A frame with a request as the host broadcasts it.
Octets request(std::int64_t identifier, const Octets& community = "public",
               std::uint32_t destination = 0xc6127fff)
{
    Message message;
    message.community = community;
    message.pduType = pduGet;
    message.requestId = identifier;
    message.errorIndex = 10;
    message.bindings = binding(sysUpTime, element(tagNull, ""));

    // The maker speaks from port 161 to the asker; asker and agents swap places here.
    Arrival reversed;
    reversed.sender = own;
    reversed.source = destination;
    reversed.sourcePort = 161;
    reversed.destinationPort = hostPort;
    std::vector<Octets> frames;
    FrameMaker(host, 0).datagram(reversed, hostAddress, message.encode(), frames);
    return frames.at(0);
}

Options plainOptions(unsigned agents)
{
    Options options;
    options.first = firstAddress;
    options.agents = agents;
    options.behaviour = findBehaviour("plain");
    return options;
}

TEST(Agents, EachAnswersOnceFromItsOwnAddress)
{
    Agents agents(plainOptions(300), own);
    const std::vector<Planned> planned = agents.answer(request(7));
    ASSERT_EQ(planned.size(), 300U);
    std::set<std::uint32_t> sources;
    for (const Planned& each : planned) {
        EXPECT_EQ(each.due, 0);
        ASSERT_EQ(each.frames.size(), 1U);
        const auto answer = readFrame(each.frames[0]);
        ASSERT_TRUE(answer);
        EXPECT_EQ(answer->sender, own);
        EXPECT_EQ(answer->destination, hostAddress);
        EXPECT_EQ(answer->sourcePort, 161);
        EXPECT_EQ(answer->destinationPort, hostPort);
        sources.insert(answer->source);
    }
    EXPECT_EQ(sources.size(), 300U);
    EXPECT_EQ(*sources.begin(), firstAddress);
    EXPECT_EQ(*sources.rbegin(), firstAddress + 299);
}

TEST(Agents, OnlyTheOneThatIsAddressedAnswers)
{
    Agents agents(plainOptions(300), own);
    const std::vector<Planned> planned = agents.answer(request(7, "public", firstAddress + 299));
    ASSERT_EQ(planned.size(), 1U);
    EXPECT_EQ(readFrame(planned[0].frames.at(0))->source, firstAddress + 299);
}

TEST(Agents, TellTheirHardwareAddress)
{
    const Agents agents(plainOptions(300), own);
    const auto question = [](unsigned char lastOctets) {
        return Octets("\xff\xff\xff\xff\xff\xff\x02\0\0\0\0\x01\x08\x06" // to all, from the host
                      "\0\x01\x08\0\x06\x04\0\x01"                       // an ARP request
                      "\x02\0\0\0\0\x01\xc6\x12\0\x01"                   // host, 198.18.0.1
                      "\0\0\0\0\0\0\xc6\x12",
                      40) +
               Octets({static_cast<char>(lastOctets), '\x2b'}); // asks for 198.18.X.43
    };
    EXPECT_EQ(agents.resolve(question(2)),
              Octets("\x02\0\0\0\0\x01\x02\0\0\0\0\x02\x08\x06" // to the host
                     "\0\x01\x08\0\x06\x04\0\x02"               // an ARP reply
                     "\x02\0\0\0\0\x02\xc6\x12\x02\x2b"         // agent, 198.18.2.43
                     "\x02\0\0\0\0\x01\xc6\x12\0\x01",
                     42));
    EXPECT_EQ(agents.resolve(question(0)), "") << "the address below is another's";
    EXPECT_EQ(agents.resolve(question(3)), "") << "and so is the one above";
    EXPECT_EQ(agents.resolve(question(2).substr(0, 41)), "");
    EXPECT_EQ(agents.resolve(request(7)), "");
}

TEST(Agents, AnswerInAnotherOrderEachTime)
{
    Agents agents(plainOptions(50), own);
    const auto order = [&](std::int64_t identifier) {
        std::vector<std::uint32_t> sources;
        for (const Planned& each : agents.answer(request(identifier))) {
            sources.push_back(readFrame(each.frames.at(0))->source);
        }
        return sources;
    };
    EXPECT_NE(order(1), order(2));
}

TEST(Agents, SpreadAndDelayTellWhen)
{
    Options options = plainOptions(5);
    options.delay = 100;
    options.spread = 40;
    Agents agents(options, own);
    std::vector<double> due;
    for (const Planned& each : agents.answer(request(7))) {
        due.push_back(each.due);
    }
    EXPECT_EQ(due, (std::vector<double>{100, 110, 120, 130, 140}));
}

TEST(Agents, OneAgentNeedsNoSpread)
{
    Options options = plainOptions(1);
    options.spread = 40;
    EXPECT_EQ(Agents(options, own).answer(request(7)).at(0).due, 0);
}

TEST(Agents, CopiesAreSentTogether)
{
    Options options = plainOptions(1);
    options.copies = 3;
    Agents agents(options, own);
    const std::vector<Octets> frames = agents.answer(request(7)).at(0).frames;
    EXPECT_EQ(frames, std::vector<Octets>(3, frames.at(0)));
}

TEST(Agents, IgnoreLeavesThatManyOfARequestUnanswered)
{
    Options options = plainOptions(1);
    options.ignore = 1;
    Agents agents(options, own);
    EXPECT_TRUE(agents.answer(request(7)).empty());
    EXPECT_TRUE(agents.answer(request(8)).empty()) << "another request counts for itself";
    EXPECT_EQ(agents.answer(request(7)).size(), 1U);
    EXPECT_EQ(agents.answer(request(7)).size(), 1U);
}

TEST(Agents, OnlyTheirCommunityIsAnswered)
{
    Agents agents(plainOptions(1), own);
    for (const char* other : {"private", "publi", "publicc", ""}) {
        EXPECT_TRUE(agents.answer(request(7, other)).empty()) << other;
    }
}

TEST(Agents, WhatIsNoRequestIsLeftAlone)
{
    Agents agents(plainOptions(1), own);
    const Octets whole = request(7);
    for (std::size_t size = 0; size < whole.size(); ++size) {
        EXPECT_TRUE(agents.answer(whole.substr(0, size)).empty()) << size;
    }
    const Octets answer = agents.answer(whole).at(0).frames.at(0);
    EXPECT_TRUE(agents.answer(answer).empty()) << "an answer is no request";
}

TEST(Agents, TheFloodWaitsForTheFirstRequest)
{
    Options options = plainOptions(10);
    options.behaviour = findBehaviour("random");
    Agents agents(options, own);
    std::vector<Octets> frames;
    agents.flood(frames);
    EXPECT_TRUE(frames.empty());
    agents.answer(request(7));
    agents.flood(frames);
    agents.flood(frames);
    ASSERT_EQ(frames.size(), 2U);
    EXPECT_EQ(readFrame(frames[0])->destination, hostAddress);
    EXPECT_EQ(readFrame(frames[1])->destination, hostAddress);
}

TEST(Agents, UnreachableQuotesTheRequest)
{
    Options options = plainOptions(1);
    options.behaviour = findBehaviour("unreachable");
    const Octets asked = request(7);
    const Octets frame = Agents(options, own).answer(asked).at(0).frames.at(0);
    ASSERT_GT(frame.size(), 42U);
    EXPECT_EQ(frame[14 + 9], 1); // ICMP
    EXPECT_EQ(frame.substr(14 + 20, 2), Octets("\x03\x03"));
    EXPECT_EQ(checksum(frame.substr(14 + 20)), 0);
    EXPECT_EQ(frame.substr(14 + 28), asked.substr(14));
}

} // namespace
