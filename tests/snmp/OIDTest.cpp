#include "tests/snmp/OIDTestHelpers.h"

#include <gmock/gmock.h>

#include <limits>
#include <type_traits>

using OIDFakes::Allocations;
using testing::ElementsAre;
using testing::IsEmpty;
using UVARNETSNMP::OID;

namespace {

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
    // So large that the number of its bytes would wrap around to that of 8 sub-identifiers.
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
                                         Pair{"HighHalfDiffers", {1}, {0x100000001}, false}),
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

} // namespace
