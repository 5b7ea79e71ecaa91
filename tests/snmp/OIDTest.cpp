// OID.cpp: what an OID holds, what changes it, names into OIDs.

#include "tests/snmp/helpers/OIDTestHelpers.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <numeric>
#include <type_traits>
#include <vector>

using OIDFakes::Allocations;
using OIDFakes::Replace;
using OIDFakes::slots;
using testing::ElementsAre;
using testing::IsEmpty;
using UVARNETSNMP::OID;

namespace {

constexpr oid highestBit = ~(std::numeric_limits<oid>::max() >> 1);

void expectEmpty(const OID& id)
{
    EXPECT_EQ(id.oidptr(), nullptr);
    EXPECT_EQ(id.oidsize(), 0U);
    EXPECT_FALSE(id.valid());
}

/// An OID that has an array and no sub-identifiers.
OID trimmedToNothing(std::size_t capacity)
{
    OID id(nullptr);
    const oid one = 1;
    id.dup(&one, 1, capacity);
    EXPECT_TRUE(id.trim(id, 0));
    return id;
}

/// Programs that were compiled with the header find the fields by their places, so the order is
/// part of the interface.
TEST(OIDFields, StandInOrder)
{
    static_assert(sizeof(OID) == 3 * sizeof(std::size_t) && sizeof(oid*) == sizeof(std::size_t));
    const OID id = makeOID({1, 3, 6}, 10);
    std::array<std::size_t, 3> fields = {};
    std::memcpy(fields.data(), static_cast<const void*>(&id), sizeof id);
    const oid* const array = id.oidptr();
    EXPECT_EQ(std::memcmp(fields.data(), &array, sizeof array), 0);
    EXPECT_EQ(fields[1], 3U);
    EXPECT_EQ(fields[2], 10U);
}

TEST(OIDConstructor, DefaultIsEmpty)
{
    const Allocations watch;
    expectEmpty(OID());
    EXPECT_THAT(watch.counts(), IsEmpty());
}

TEST(OIDConstructor, LengthZeroIsEmptyWhateverTheCapacity)
{
    const Allocations watch;
    const oid ids[] = {1, 3, 6};
    OID id(ids, 0, 10);
    expectEmpty(id);
    EXPECT_THAT(watch.counts(), IsEmpty());
    EXPECT_FALSE(id.append(OID(ids, 3, 3))) << "the capacity is 0";
    expectEmpty(id);
}

TEST(OIDConstructor, NullArrayIsEmpty)
{
    const oid* const none = nullptr;
    expectEmpty(OID(none, 3, 3));
}

TEST(OIDConstructor, CapacityBeyondAllMemoryIsEmpty)
{
    const oid ids[] = {1, 3, 6};
    const std::size_t most = std::numeric_limits<std::size_t>::max();
    expectEmpty(OID(ids, 3, most));
    // Its size in bytes would overflow to that of 8 sub-identifiers.
    expectEmpty(OID(ids, 3, most / sizeof(oid) + 9));
}

struct Room
{
    const char* name;
    std::size_t length;
    std::size_t capacity;
    std::size_t expected;
};
class OIDRoom : public testing::TestWithParam<Room>
{};
TEST_P(OIDRoom, IsTheLargerOfLengthAndCapacity)
{
    const oid ids[] = {1, 3, 6, 1};
    const OID id(ids, GetParam().length, GetParam().capacity);
    EXPECT_EQ(id.oidsize(), GetParam().length);
    EXPECT_EQ(capacityOf(id), GetParam().expected);
    EXPECT_NE(id.oidptr(), ids);
}
INSTANTIATE_TEST_SUITE_P(Table, OIDRoom,
                         testing::Values(Room{"NoCapacity", 3, 0, 3}, Room{"Smaller", 3, 2, 3},
                                         Room{"Equal", 3, 3, 3}, Room{"OneMore", 3, 4, 4},
                                         Room{"Larger", 3, 10, 10}, Room{"Single", 1, 1, 1}),
                         RowName());

TEST(OIDCopy, OwnsAnArrayOfItsOwn)
{
    OID original = makeOID({1, 3, 6}, 10);
    const OID copy(original);
    EXPECT_NE(copy.oidptr(), original.oidptr());
    original.clear();
    EXPECT_THAT(idsOf(copy), ElementsAre(1, 3, 6));
    EXPECT_EQ(capacityOf(copy), 10U);
}

TEST(OIDCopy, OfAnOIDWithoutSubIdentifiersIsEmpty)
{
    const OID nothing;
    const OID emptied = trimmedToNothing(4);
    const Allocations watch;
    for (const OID* const original : {&nothing, &emptied}) {
        const OID copy(*original);
        expectEmpty(copy);
    }
    EXPECT_THAT(watch.counts(), IsEmpty());
}

TEST(OIDCopy, StandsInForMoves)
{
    static_assert(std::is_nothrow_move_constructible_v<OID>);
    static_assert(std::is_nothrow_move_assignable_v<OID>);
    OID original = makeOID({1, 3, 6});
    const OID copy(std::move(original)); // NOLINT(performance-move-const-arg): what is tested
    EXPECT_THAT(idsOf(copy), ElementsAre(1, 3, 6));
    EXPECT_THAT(idsOf(original), ElementsAre(1, 3, 6)); // NOLINT(bugprone-use-after-move): as above
}

TEST(OIDLifetime, EveryArrayGoesBackToNetSNMP)
{
    const Allocations watch;
    {
        OID id = makeOID({1, 3, 6});
        OID other(id);
        EXPECT_EQ(watch.unreleased(), 2U);
        EXPECT_TRUE(other.append(id));
        EXPECT_EQ(id.dup(other.oidptr(), 6, 20), 0);
        other = id;
        other.clear();
    }
    EXPECT_FALSE(watch.counts().empty());
    EXPECT_EQ(watch.unreleased(), 0U);
}

TEST(OIDClear, ReturnsToTheEmptyState)
{
    const Allocations watch;
    OID id = makeOID({1, 3, 6}, 10);
    id.clear();
    expectEmpty(id);
    EXPECT_EQ(watch.unreleased(), 0U);
    EXPECT_FALSE(id.append(makeOID({1}))) << "the capacity is 0";
    id.clear();
    expectEmpty(id);
}

TEST(OIDIndex, ReadsEverySubIdentifierAndZeroBeyond)
{
    const OID id = makeOID({1, 3, 6}, 10);
    EXPECT_EQ(id[0], 1U);
    EXPECT_EQ(id[2], 6U);
    EXPECT_EQ(&id[2], id.oidptr() + 2);
    EXPECT_EQ(id[3], 0U) << "within the capacity, beyond the length";
    EXPECT_EQ(id[std::numeric_limits<std::size_t>::max()], 0U);
    EXPECT_EQ(trimmedToNothing(4)[0], 0U);
}

TEST(OIDIndex, ZeroOutlivesTheOID)
{
    const oid* zero = nullptr;
    {
        const OID id;
        zero = &id[0];
    }
    EXPECT_EQ(*zero, 0U);
    EXPECT_EQ(zero, &makeOID({1})[1]) << "one zero for all";
}

TEST(OIDValid, NeedsASubIdentifier)
{
    EXPECT_FALSE(OID().valid());
    EXPECT_TRUE(makeOID({0}).valid());
    const OID emptied = trimmedToNothing(4);
    EXPECT_NE(emptied.oidptr(), nullptr);
    EXPECT_FALSE(emptied.valid());
}

struct Pair
{
    const char* name;
    std::vector<oid> left;
    std::vector<oid> right;
    bool expected;
};
OID fromVector(const std::vector<oid>& ids)
{
    return OID(ids.data(), ids.size(), ids.size());
}

class OIDEquality : public testing::TestWithParam<Pair>
{};
TEST_P(OIDEquality, HoldsBothWays)
{
    const OID left = fromVector(GetParam().left);
    const OID right = fromVector(GetParam().right);
    EXPECT_EQ(left == right, GetParam().expected);
    EXPECT_EQ(right == left, GetParam().expected);
}
INSTANTIATE_TEST_SUITE_P(Table, OIDEquality,
                         testing::Values(Pair{"BothEmpty", {}, {}, false},
                                         Pair{"OneEmpty", {}, {1}, false},
                                         Pair{"Same", {1, 3, 6}, {1, 3, 6}, true},
                                         Pair{"Prefix", {1, 3}, {1, 3, 6}, false},
                                         Pair{"FirstDiffers", {2, 3, 6}, {1, 3, 6}, false},
                                         Pair{"LastDiffers", {1, 3, 6}, {1, 3, 7}, false},
                                         Pair{"HighestBitDiffers", {1}, {highestBit | 1}, false}),
                         RowName());

TEST(OIDEqualityOf, TheCapacityDoesNotCount)
{
    EXPECT_TRUE(makeOID({1, 3}, 10) == makeOID({1, 3}));
    const OID empty;
    EXPECT_FALSE(empty == empty) << "not even equal to itself";
    EXPECT_FALSE(trimmedToNothing(4) == trimmedToNothing(4)) << "nor is one that still has room";
}

class OIDSubnode : public testing::TestWithParam<Pair>
{};
TEST_P(OIDSubnode, IsStrictlyBelow)
{
    EXPECT_EQ(fromVector(GetParam().left).subnode(fromVector(GetParam().right)),
              GetParam().expected);
}
INSTANTIATE_TEST_SUITE_P(Table, OIDSubnode,
                         testing::Values(Pair{"Child", {1, 3, 6}, {1, 3, 6, 1}, true},
                                         Pair{"Descendant", {1}, {1, 3, 6, 1}, true},
                                         Pair{"Itself", {1, 3, 6}, {1, 3, 6}, false},
                                         Pair{"OtherBranch", {1, 3, 6}, {1, 3, 7, 1}, false},
                                         Pair{"FirstDiffers", {1, 3, 6}, {2, 3, 6, 1}, false},
                                         Pair{"Above", {1, 3, 6, 1}, {1, 3, 6}, false},
                                         Pair{"OfNothing", {}, {1, 3}, false},
                                         Pair{"Nothing", {1, 3}, {}, false}),
                         RowName());

TEST(OIDSubnodeOf, OneThatIsTrimmedToNothingThereIsNone)
{
    EXPECT_FALSE(trimmedToNothing(4).subnode(makeOID({1, 3})));
    EXPECT_FALSE(makeOID({1, 3}).subnode(trimmedToNothing(4)));
}

// Changes in place: dup, assignment, trim, append.

struct Replacement
{
    const char* name;
    std::size_t held;     // capacity before; 0: empty
    std::size_t length;   // of the new contents
    std::size_t capacity; // requested
    std::size_t expected; // capacity afterwards
    bool allocates;
};
class OIDReplacement : public testing::TestWithParam<Replacement>
{
protected:
    static constexpr oid m_ids[] = {1, 3, 6, 1, 2, 1, 1, 3};

    void SetUp() override
    {
        if (GetParam().held != 0) {
            m_target = OID(m_ids + 1, 1, GetParam().held);
        }
    }
    void expectReplaced(const Allocations& watch) const
    {
        EXPECT_EQ(watch.counts().size(), GetParam().allocates ? 1U : 0U);
        const auto length = static_cast<std::ptrdiff_t>(GetParam().length);
        EXPECT_EQ(idsOf(m_target), std::vector<oid>(m_ids, m_ids + length));
    }
    OID m_target;
};

TEST_P(OIDReplacement, ByDup)
{
    {
        const Allocations watch;
        EXPECT_EQ(m_target.dup(m_ids, GetParam().length, GetParam().capacity), 0);
        expectReplaced(watch);
    }
    EXPECT_EQ(capacityOf(m_target), GetParam().expected);
}

TEST_P(OIDReplacement, ByAssignment)
{
    const OID source(m_ids, GetParam().length, GetParam().capacity);
    {
        const Allocations watch;
        EXPECT_EQ(&(m_target = source), &m_target);
        expectReplaced(watch);
    }
    EXPECT_EQ(capacityOf(m_target), GetParam().expected);
    EXPECT_NE(m_target.oidptr(), source.oidptr());
}

INSTANTIATE_TEST_SUITE_P(Table, OIDReplacement,
                         testing::Values(Replacement{"OfNothing", 0, 3, 5, 5, true},
                                         Replacement{"LongerThanTheArray", 2, 3, 3, 3, true},
                                         Replacement{"MoreRoomThanTheArray", 4, 3, 5, 5, true},
                                         Replacement{"ExactlyTheArray", 5, 3, 5, 5, false},
                                         Replacement{"ShorterCapacityIsCut", 10, 2, 4, 4, false},
                                         Replacement{"NoCapacityAskedFor", 10, 3, 0, 3, false}),
                         RowName());

TEST(OIDDup, TheSourceMayLieInTheOwnArray)
{
    std::vector<oid> ids(MAX_OID_LEN);
    std::iota(ids.begin(), ids.end(), 1);
    OID id(ids.data(), ids.size(), ids.size());
    id.dup(id.oidptr() + 1, ids.size() - 1, 0);
    EXPECT_EQ(idsOf(id), std::vector<oid>(ids.begin() + 1, ids.end()));
}

TEST(OIDDup, AfterTheCapacityWasCutALargerOneReallocates)
{
    const oid ids[] = {1, 3, 6, 1};
    OID id(ids, 1, 10);
    id.dup(ids, 2, 3);
    const Allocations watch;
    id.dup(ids, 4, 4);
    EXPECT_THAT(watch.counts(), ElementsAre(4)) << "the array of 10 is known as one of 3";
    EXPECT_THAT(idsOf(id), ElementsAre(1, 3, 6, 1));
}

TEST(OIDDup, WithoutSubIdentifiersDoesNothing)
{
    OID id = makeOID({1, 3, 6}, 10);
    const oid other = 9;
    EXPECT_EQ(id.dup(&other, 0, 20), 0);
    EXPECT_EQ(id.dup(nullptr, 0, 0), 0);
    EXPECT_EQ(id.dup(nullptr, 3, 3), 0);
    EXPECT_THAT(idsOf(id), ElementsAre(1, 3, 6));
    EXPECT_EQ(capacityOf(id), 10U);
}

TEST(OIDDup, ReusesTheArrayOfAnOIDTrimmedToNothing)
{
    OID id = makeOID({1, 3}, 4);
    const oid* const array = id.oidptr();
    ASSERT_TRUE(id.trim(id, 0));
    const oid ids[] = {7, 8, 9};
    id.dup(ids, 3, 3);
    EXPECT_EQ(id.oidptr(), array);
    EXPECT_THAT(idsOf(id), ElementsAre(7, 8, 9));
}

TEST(OIDAssignment, OfAnEmptyOIDLeavesTheTargetUnchanged)
{
    OID target = makeOID({1, 3, 6}, 10);
    target = OID();
    OID emptied = makeOID({9}, 4);
    ASSERT_TRUE(emptied.trim(emptied, 0));
    target = emptied;
    EXPECT_THAT(idsOf(target), ElementsAre(1, 3, 6));
    EXPECT_EQ(capacityOf(target), 10U);
}

TEST(OIDAssignment, OfItselfChangesNothing)
{
    OID id = makeOID({1, 3, 6}, 10);
    const OID& same = id;
    const Allocations watch;
    id = same;
    EXPECT_THAT(watch.counts(), IsEmpty());
    EXPECT_THAT(idsOf(id), ElementsAre(1, 3, 6));
}

struct Trim
{
    const char* name;
    std::vector<oid> ids;
    std::vector<oid> base;
    std::size_t extra;
    bool expected;
    std::vector<oid> left;
};
class OIDTrim : public testing::TestWithParam<Trim>
{};
TEST_P(OIDTrim, RemovesWhatIsSharedAndTheExtra)
{
    const Trim& row = GetParam();
    OID id(row.ids.data(), row.ids.size(), row.ids.size());
    const oid* const array = id.oidptr();
    const Allocations watch;
    EXPECT_EQ(id.trim(OID(row.base.data(), row.base.size(), 0), row.extra), row.expected);
    EXPECT_EQ(id.oidptr(), array) << "in place, also when nothing is left";
    EXPECT_EQ(idsOf(id), row.left);
}
constexpr std::size_t most = std::numeric_limits<std::size_t>::max();
INSTANTIATE_TEST_SUITE_P(
    Table, OIDTrim,
    testing::Values(
        Trim{"NothingSharedNoExtra", {1, 3, 6}, {2, 3, 6}, 0, false, {1, 3, 6}},
        Trim{"NothingSharedWithExtra", {1, 3, 6}, {2}, 1, true, {3, 6}},
        Trim{"SharedAndOneExtra", {1, 3, 6, 1, 2}, {1, 3, 6}, 1, true, {2}},
        Trim{"SharedOnly", {1, 3, 6, 1}, {1, 3}, 0, true, {6, 1}},
        Trim{"StopsAtTheFirstDifference", {1, 3, 6, 1}, {1, 4, 6, 1}, 0, true, {3, 6, 1}},
        Trim{"ByALongerBase", {1, 3}, {1, 3, 6, 1}, 0, true, {}},
        Trim{"ByItsEqual", {1, 3, 6}, {1, 3, 6}, 0, true, {}},
        Trim{"ExtraIsCapped", {1, 3, 6}, {1}, 100, true, {}},
        Trim{"ExtraThatWouldWrapAround", {1, 3, 6}, {1, 3}, most, true, {}},
        Trim{"ByAnEmptyBase", {1, 3, 6}, {}, 0, false, {1, 3, 6}},
        Trim{"ByAnEmptyBaseWithExtra", {1, 3, 6}, {}, 2, true, {6}},
        Trim{"OfAnEmptyOID", {}, {1, 3}, 1, false, {}}),
    RowName());

TEST(OIDTrimmed, ToNothingKeepsItsArrayAndCapacity)
{
    OID id = makeOID({1, 3, 6});
    ASSERT_TRUE(id.trim(id, 0));
    EXPECT_NE(id.oidptr(), nullptr);
    EXPECT_EQ(id.oidsize(), 0U);
    EXPECT_FALSE(id.trim(makeOID({1}), 1)) << "nothing is left to remove";
    const Allocations watch;
    EXPECT_FALSE(id.append(makeOID({1, 2, 3, 4}))) << "an OID of length 0 does not grow";
    EXPECT_TRUE(id.append(makeOID({1, 2, 3}))) << "but its capacity is still 3";
    EXPECT_THAT(idsOf(id), ElementsAre(1, 2, 3));
    EXPECT_EQ(watch.counts().size(), 2U) << "the arguments' arrays alone";
}

TEST(OIDAppend, UsesSpareCapacityThenGrowsToTheExactSum)
{
    OID id = makeOID({1, 3, 6}, 10);
    const OID five = makeOID({11, 12, 13, 14, 15});
    const oid* const array = id.oidptr();
    {
        const Allocations watch;
        EXPECT_TRUE(id.append(five));
        EXPECT_THAT(watch.counts(), IsEmpty());
    }
    EXPECT_EQ(id.oidptr(), array);
    EXPECT_EQ(capacityOf(id), 10U);
    EXPECT_TRUE(id.append(five));
    EXPECT_EQ(capacityOf(id), 13U);
    EXPECT_THAT(idsOf(id), ElementsAre(1, 3, 6, 11, 12, 13, 14, 15, 11, 12, 13, 14, 15));
}

TEST(OIDAppend, FillsTheCapacityWithoutGrowing)
{
    OID id = makeOID({1, 3}, 4);
    const OID two = makeOID({6, 1});
    const Allocations watch;
    EXPECT_TRUE(id.append(two));
    EXPECT_THAT(watch.counts(), IsEmpty());
    EXPECT_THAT(idsOf(id), ElementsAre(1, 3, 6, 1));
}

TEST(OIDAppend, GrowthReleasesTheOldArrayAndTheTemporaryOne)
{
    OID id;
    const OID two = makeOID({6, 1});
    const Allocations watch;
    id = makeOID({1, 3});
    EXPECT_TRUE(id.append(two));
    EXPECT_EQ(watch.unreleased(), 1U) << "the OID's own";
}

TEST(OIDAppend, ToAnEmptyOIDFails)
{
    OID id;
    EXPECT_FALSE(id.append(makeOID({1, 3})));
    EXPECT_EQ(id.oidptr(), nullptr);
}

TEST(OIDAppend, OfNothingFails)
{
    OID id = makeOID({1, 3}, 10);
    OID emptied = makeOID({1}, 4);
    ASSERT_TRUE(emptied.trim(emptied, 0));
    EXPECT_FALSE(id.append(OID()));
    EXPECT_FALSE(id.append(emptied));
    EXPECT_THAT(idsOf(id), ElementsAre(1, 3));
}

TEST(OIDAppend, OfItselfIsRefused)
{
    OID id = makeOID({1, 3}, 10);
    EXPECT_FALSE(id.append(id));
    EXPECT_THAT(idsOf(id), ElementsAre(1, 3));
}

// Names into OIDs, with the project's own MIB modules loaded.

/// A dotted name of `count` sub-identifiers.
std::string dottedName(std::size_t count)
{
    std::string text = "1";
    for (std::size_t i = 1; i < count; ++i) {
        text += ".3";
    }
    return text;
}

class OIDParsing : public WithMIBs
{};

TEST_F(OIDParsing, ReadsTheFullNameOfAnInstance)
{
    const OID id("sysUpTime.0");
    EXPECT_THAT(idsOf(id), ElementsAre(1, 3, 6, 1, 2, 1, 1, 3, 0));
    EXPECT_EQ(capacityOf(id), 9U) << "exactly what was parsed";
    EXPECT_TRUE(OID("sysUpTime.0", false) == id);
}

TEST_F(OIDParsing, LastOnlyKeepsTheLastSubIdentifier)
{
    const OID id("sysUpTime.0", true);
    EXPECT_THAT(idsOf(id), ElementsAre(0));
    EXPECT_EQ(capacityOf(id), 1U);
    EXPECT_THAT(idsOf(OID("1.3.6.1.2", true)), ElementsAre(2));
}

TEST_F(OIDParsing, ATextStandsWhereAnOIDIsAskedFor)
{
    OID id = "1.3.6";
    EXPECT_TRUE(id.append("1.3"));
    EXPECT_THAT(idsOf(id), ElementsAre(1, 3, 6, 1, 3));
    EXPECT_TRUE(id == "1.3.6.1.3");
}

TEST_F(OIDParsing, ReadsWhatTheParserAccepts)
{
    EXPECT_TRUE(OID("SNMPv2-MIB::sysUpTime.0") == OID("sysUpTime.0"));
    EXPECT_TRUE(OID(".1.3.6.1") == makeOID({1, 3, 6, 1}));
    EXPECT_TRUE(OID("1.3.4294967295") == makeOID({1, 3, 4294967295}));
    EXPECT_TRUE(OID("1.3.18446744073709551617") ==
                makeOID({1, 3, std::numeric_limits<oid>::max()}));
    EXPECT_TRUE(OID("prtMarkerLifeCount.1.1") ==
                makeOID({1, 3, 6, 1, 2, 1, 43, 10, 2, 1, 4, 1, 1}));
}

TEST_F(OIDParsing, FailureLeavesItEmpty)
{
    struct Row
    {
        const char* name;
        const char* text;
    };
    const std::string tooLong = dottedName(MAX_OID_LEN + 1);
    const Row rows[] = {{"null", nullptr},
                        {"unknown name", "noSuchNameInAnyModule.0"},
                        {"unknown module", "NO-SUCH-MIB::sysUpTime.0"},
                        {"empty text", ""},
                        {"129 sub-identifiers", tooLong.c_str()}};
    for (const Row& row : rows) {
        for (const bool lastOnly : {false, true}) {
            const OID id(row.text, lastOnly);
            EXPECT_FALSE(id.valid()) << row.name;
            EXPECT_EQ(id.oidptr(), nullptr) << row.name;
        }
        EXPECT_FALSE(OID(row.text).valid()) << row.name;
    }
}

TEST_F(OIDParsing, AcceptsAsManySubIdentifiersAsNetSNMP)
{
    const OID id(dottedName(MAX_OID_LEN).c_str());
    EXPECT_EQ(id.oidsize(), 128U);
    EXPECT_EQ(OID(dottedName(MAX_OID_LEN).c_str(), true).oidsize(), 1U);
}

TEST(OIDParser, IsOfferedRoomFor128AndItsZeroCountIsAFailure)
{
    const Replace fake(slots().parse, [](const char* text, oid* ids, std::size_t* count) {
        EXPECT_STREQ(text, "name");
        EXPECT_EQ(*count, 128U);
        EXPECT_FALSE(lockIsHeld());
        *count = 0;
        return ids;
    });
    const OIDFakes::Allocations watch;
    EXPECT_EQ(OID("name").oidptr(), nullptr);
    EXPECT_EQ(OID("name", true).oidptr(), nullptr);
    EXPECT_TRUE(watch.counts().empty());
}

// netsnmp_malloc has no memory for an array.

TEST(WithoutMemoryForAnArray, ConstructorsLeaveItEmpty)
{
    const OID original = makeOID({1, 3, 6});
    {
        const OIDFakes::Allocations refusing(1);
        expectEmpty(makeOID({1, 3, 6}));
    }
    {
        const OIDFakes::Allocations refusing(1);
        const OID copy(original); // NOLINT(performance-unnecessary-copy-initialization): tested
        expectEmpty(copy);
    }
    const Replace parser(slots().parse, [](const char*, oid* ids, std::size_t* count) {
        return std::fill_n(ids, *count, 3) - *count; // a name as long as there is room for
    });
    for (const bool lastOnly : {false, true}) {
        const OIDFakes::Allocations refusing(1);
        expectEmpty(OID("parsed", lastOnly));
        EXPECT_EQ(refusing.counts(), std::vector<std::size_t>{lastOnly ? 1U : MAX_OID_LEN});
    }
}

TEST(WithoutMemoryForAnArray, DupLeavesItEmptyAndStillReturnsZero)
{
    OID id = makeOID({1, 3, 6});
    const oid ids[] = {1, 3, 6, 1};
    const OIDFakes::Allocations refusing(1);
    EXPECT_EQ(id.dup(ids, 4, 4), 0);
    expectEmpty(id);
    EXPECT_FALSE(id.append(makeOID({1}))) << "the capacity is 0";
}

TEST(WithoutMemoryForAnArray, AssignmentLeavesItEmpty)
{
    OID id = makeOID({1, 3, 6});
    const OID longer = makeOID({1, 3, 6, 1});
    const OIDFakes::Allocations refusing(1);
    id = longer;
    expectEmpty(id);
    EXPECT_FALSE(id.append(makeOID({1}))) << "the capacity is 0";
}

TEST(WithoutMemoryForAnArray, AppendWithoutTheTemporaryCopyChangesNothing)
{
    OID id = makeOID({1, 3});
    const OID other = makeOID({6, 1});
    const oid* const array = id.oidptr();
    const OIDFakes::Allocations refusing(1);
    EXPECT_FALSE(id.append(other));
    EXPECT_THAT(refusing.counts(), ElementsAre(4));
    EXPECT_EQ(id.oidptr(), array);
    EXPECT_THAT(idsOf(id), ElementsAre(1, 3));
}

TEST(WithoutMemoryForAnArray, AppendWithoutTheNewArrayLosesTheSubIdentifiers)
{
    OID id = makeOID({1, 3});
    const OID other = makeOID({6, 1});
    const OIDFakes::Allocations refusing(2);
    EXPECT_FALSE(id.append(other));
    EXPECT_THAT(refusing.counts(), ElementsAre(4, 4)) << "the temporary copy, then the new array";
    EXPECT_EQ(refusing.unreleased(), 0U) << "the temporary copy is released";
    expectEmpty(id);
    EXPECT_FALSE(id.append(makeOID({1}))) << "the capacity is 0";
}

} // namespace
