// The operations that change an OID in place: dup, assignment, trim, append.

#include "tests/snmp/OIDTestHelpers.h"

#include <gmock/gmock.h>

#include <limits>
#include <numeric>
#include <vector>

using OIDFakes::Allocations;
using testing::ElementsAre;
using testing::IsEmpty;
using UVARNETSNMP::OID;

namespace {

struct Replacement
{
    const char* name;
    std::size_t held;     // capacity before; 0: empty
    std::size_t length;   // of the new contents
    std::size_t capacity; // asked for
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

} // namespace
