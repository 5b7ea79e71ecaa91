// An OID when memory is exhausted: arrays that netsnmp_malloc refuses, texts that operator new
// refuses.

#include "tests/snmp/OIDTestHelpers.h"
#include "tests/snmp/OIDValueHelpers.h"
#include "tests/support/CountedNew.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstring>

using OIDFakes::Replace;
using OIDFakes::slots;
using testing::ElementsAre;
using UVARNETSNMP::OID;

namespace {

void expectEmpty(const OID& id)
{
    EXPECT_EQ(id.oidptr(), nullptr);
    EXPECT_EQ(id.oidsize(), 0U);
}

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

// Longer than what the standard libraries keep inside a string, so that each copy needs memory.
constexpr char longText[] = "a text that is too long to be kept inside of a string itself";

using WithoutMemoryForAText = NeedsCountedNew;

TEST_F(WithoutMemoryForAText, DottedNotationIsEmpty)
{
    const std::vector<oid> ids(sizeof longText, 1);
    const OID id(ids.data(), ids.size(), ids.size());
    ASSERT_TRUE(id.valid());
    std::string text = "before";
    {
        const AllocationLimit none(0);
        text = id.toDottedNotation();
    }
    EXPECT_EQ(text, "");
}

TEST_F(WithoutMemoryForAText, NameIsEmptyAndTheFormatAsBefore)
{
    const int before = netsnmp_ds_get_int(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_OID_OUTPUT_FORMAT);
    const OID id = makeOID({1, 3});
    const Replace printer(slots().printName, [](u_char** buffer, std::size_t*, std::size_t*, int,
                                                const oid*, std::size_t) {
        *buffer = reinterpret_cast<u_char*>(strdup(longText));
        return 1;
    });
    std::string inFormat = "before";
    std::string plain = "before";
    {
        const AllocationLimit none(0);
        inFormat = id.toString(NETSNMP_OID_OUTPUT_NUMERIC);
        plain = id.toString();
    }
    EXPECT_EQ(inFormat, "");
    EXPECT_EQ(plain, "");
    EXPECT_EQ(netsnmp_ds_get_int(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_OID_OUTPUT_FORMAT), before);
    EXPECT_FALSE(lockIsHeld());
}

class ValueWithoutMemoryForAText : public WithoutMemoryForAText
{
protected:
    void expectEmptyValue(variable_list* var)
    {
        std::string text = "before";
        {
            const AllocationLimit none(0);
            text = m_id.toValue(var);
        }
        EXPECT_EQ(text, "");
        for (const int which : {NETSNMP_DS_LIB_QUICK_PRINT, NETSNMP_DS_LIB_NUMERIC_TIMETICKS}) {
            EXPECT_EQ(netsnmp_ds_get_boolean(NETSNMP_DS_LIBRARY_ID, which), 0) << which;
        }
        EXPECT_FALSE(lockIsHeld());
    }

private:
    OID m_id = makeOID({1, 3});
};

TEST_F(ValueWithoutMemoryForAText, OfAnOctetString)
{
    std::vector<u_char> bytes(longText, longText + sizeof longText);
    variable_list var{};
    var.type = ASN_OCTET_STR;
    var.val.string = bytes.data();
    var.val_len = bytes.size();
    expectEmptyValue(&var);
}

TEST_F(ValueWithoutMemoryForAText, OfAnEnumeration)
{
    std::vector<char> label(longText, longText + sizeof longText);
    enum_list entry{};
    entry.value = 1;
    entry.label = label.data();
    struct tree node
    {};
    node.enums = &entry;
    const Replace look(slots().tree,
                       [&node](const oid*, std::size_t, struct tree*) { return &node; });
    IntegerBinding var(1);
    expectEmptyValue(var.get());
}

TEST_F(ValueWithoutMemoryForAText, OfAPrintedValue)
{
    const Replace printer(slots().printValue, [](u_char** buffer, std::size_t*, std::size_t*, int,
                                                 const netsnmp_variable_list*, const enum_list*,
                                                 const char*, const char*) {
        *buffer = reinterpret_cast<u_char*>(strdup(longText));
        return 1;
    });
    IntegerBinding var(1);
    expectEmptyValue(var.get());
}

} // namespace
