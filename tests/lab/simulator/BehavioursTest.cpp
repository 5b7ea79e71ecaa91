// The payloads of every behaviour: what each promises, looked at octet by octet.

#include "lab/simulator/Behaviours.h"

#include <gtest/gtest.h>

#include <set>

namespace {

using namespace Simulator;

Message answer()
{
    Message request;
    request.community = "public";
    request.pduType = pduGet;
    request.requestId = 0x12345678;
    request.bindings = binding(sysUpTime, element(tagNull, ""));
    return plainAnswer(request);
}

Octets payload(const char* name, unsigned agent)
{
    std::mt19937 random(agent);
    return findBehaviour(name)->payload(answer(), agent, random);
}

/// The same octets as an answer with one member changed by `change`.
template <typename Change>
void expectOnlyChange(const char* name, unsigned agent, Change change)
{
    Message expected = answer();
    change(expected);
    EXPECT_EQ(payload(name, agent), expected.encode()) << name << agent;
}

TEST(Behaviours, PlainIsTheAnswerToTheOctet)
{
    const Octets expected("\x30\x2a\x02\x01\x00\x04\x06public\xa2\x1d\x02\x04\x12\x34\x56\x78"
                          "\x02\x01\x00\x02\x01\x00\x30\x0f\x30\x0d\x06\x08"
                          "\x2b\x06\x01\x02\x01\x01\x03\x00\x43\x01\x2a",
                          44);
    Message made = answer();
    made.bindings = binding(sysUpTime, integer(42, tagTimeTicks));
    EXPECT_EQ(made.encode(), expected);
}

TEST(Behaviours, NamesAreUniqueAndFound)
{
    std::set<std::string> names;
    for (const Behaviour& each : behaviours()) {
        EXPECT_TRUE(names.insert(each.name).second) << each.name;
        EXPECT_EQ(findBehaviour(each.name), &each);
    }
    EXPECT_EQ(findBehaviour("nothing"), nullptr);
}

TEST(Behaviours, TruncatedTakesEveryLengthButTheWhole)
{
    const Octets whole = payload("plain", 0);
    std::set<std::size_t> sizes;
    for (unsigned agent = 0; agent < 2 * whole.size(); ++agent) {
        const Octets part = payload("truncated", agent);
        EXPECT_EQ(part, whole.substr(0, part.size()));
        sizes.insert(part.size());
    }
    EXPECT_EQ(sizes.size(), whole.size());
    EXPECT_EQ(*sizes.rbegin(), whole.size() - 1);
}

TEST(Behaviours, RandomTakesEveryLengthUpToAFrame)
{
    for (const unsigned size : {0U, 1U, 2U, 700U, 1472U}) {
        EXPECT_EQ(payload("random", size).size(), size);
    }
    EXPECT_EQ(payload("random", 1473).size(), 0U);
    EXPECT_NE(payload("random", 700), Octets(700, payload("random", 700)[0]));
}

TEST(Behaviours, MutatedKeepsTheLength)
{
    EXPECT_EQ(payload("mutated", 1).size(), payload("plain", 1).size());
}

TEST(Behaviours, NoWrongRequestIdentifierIsTheRightOne)
{
    for (unsigned agent = 0; agent < 12; ++agent) {
        const Octets made = payload("request-id", agent);
        EXPECT_NE(made, payload("plain", agent));
        EXPECT_EQ(made.find(integer(0x12345678)), Octets::npos);
    }
    expectOnlyChange("request-id", 0, [](Message& m) { m.requestId = 0x12345679; });
}

TEST(Behaviours, VersionCommunityStatusAndTypeChangeNothingElse)
{
    expectOnlyChange("version", 0, [](Message& m) { m.version = 1; });
    expectOnlyChange("version", 2, [](Message& m) { m.version = 3; });
    expectOnlyChange("community", 1, [](Message& m) { m.community = "other"; });
    expectOnlyChange("long-community", 7, [](Message& m) { m.community = Octets(250, 'c'); });
    expectOnlyChange("error-status", 1, [](Message& m) {
        m.errorStatus = 2;
        m.errorIndex = 1;
    });
    expectOnlyChange("pdu-type", 8, [](Message& m) { m.pduType = 0xa8; });
}

TEST(Behaviours, LargeIsARightAnswerOf60000Octets)
{
    const Octets made = payload("large", 0);
    EXPECT_GT(made.size(), 59900U);
    EXPECT_LT(made.size(), 60100U);
    Reader outer(made);
    Reader body(outer.content(tagSequence));
    EXPECT_EQ(body.number(), 0);
    EXPECT_EQ(body.content(tagOctetString), "public");
    Reader pdu(body.content(pduResponse));
    EXPECT_EQ(pdu.number(), 0x12345678);
    pdu.number();
    pdu.number();
    Reader list(pdu.content(tagSequence));
    unsigned bindings = 0;
    while (!list.failed()) {
        list.content(tagSequence);
        bindings += list.failed() ? 0U : 1U;
    }
    EXPECT_EQ(bindings, 4285U);
    EXPECT_FALSE(outer.failed() || body.failed() || pdu.failed());
}

TEST(Behaviours, DeepNestsAsManySequencesAsTheAgentsNumber)
{
    const Octets made = payload("deep", 13998); // 13999 levels, nothing around them
    EXPECT_EQ(made.size(), 13999U * 4);
    std::size_t levels = 0;
    std::string_view rest = made;
    while (!rest.empty()) {
        Reader reader(rest);
        rest = reader.content(tagSequence);
        ASSERT_FALSE(reader.failed());
        ++levels;
    }
    EXPECT_EQ(levels, 13999U);
}

TEST(Behaviours, IndefiniteHasItsLengthInFourPlaces)
{
    std::set<std::size_t> places;
    for (unsigned agent = 0; agent < 4; ++agent) {
        places.insert(payload("indefinite", agent).find('\x80'));
    }
    EXPECT_EQ(places.size(), 4U);
    EXPECT_EQ(places.count(Octets::npos), 0U);
}

TEST(Behaviours, OverlongPromisesMoreThanThereIs)
{
    for (unsigned agent = 0; agent < 7; ++agent) {
        const Octets made = payload("overlong", agent);
        Reader reader(made);
        reader.content(tagSequence);
        EXPECT_TRUE(reader.failed()) << agent;
    }
}

TEST(Behaviours, TrailingBeginsWithTheAnswer)
{
    EXPECT_EQ(payload("trailing", 9).find(payload("plain", 9)), 0U);
    EXPECT_EQ(payload("trailing", 9).size(), payload("plain", 9).size() + 10);
    EXPECT_EQ(payload("empty", 9), "");
}

} // namespace
