// OID::toValue by the type of the variable binding.

#include "tests/snmp/OIDTestHelpers.h"
#include "tests/snmp/OIDValueHelpers.h"
#include "tests/snmp/WithMIBs.h"

#include <gtest/gtest.h>

#include <limits>

using OIDFakes::Replace;
using OIDFakes::slots;
using UVARNETSNMP::OID;

namespace {

const OID& someOID()
{
    static const OID id = makeOID({1, 3, 6, 1});
    return id;
}

class OctetString : public testing::Test
{
protected:
    /// The value of an octet string whose bytes are these and whose length is said to be `length`.
    static std::string valueOf(const std::string& bytes, std::size_t length)
    {
        std::vector<u_char> copy(bytes.begin(), bytes.end());
        copy.push_back('!'); // so that reading too far shows
        variable_list var{};
        var.type = ASN_OCTET_STR;
        var.val.string = copy.data();
        var.val_len = length;
        return someOID().toValue(&var);
    }
    static std::string valueOf(const std::string& bytes) { return valueOf(bytes, bytes.size()); }

private:
    Replace<decltype(sprint_realloc_by_type)> m_noPrinter{slots().printValue, unexpectedPrint};
};

TEST_F(OctetString, LosesTheZeroBytesAtItsEnd)
{
    using namespace std::string_literals;
    EXPECT_EQ(valueOf("abc\0\0"s), "abc");
    EXPECT_EQ(valueOf("abc\0"s), "abc");
    EXPECT_EQ(valueOf("abc"), "abc");
    EXPECT_EQ(valueOf("\0\0\0"s), "");
    EXPECT_EQ(valueOf(""), "");
}

TEST_F(OctetString, KeepsZeroBytesWithin)
{
    using namespace std::string_literals;
    EXPECT_EQ(valueOf("\0a\0b\0"s), "\0a\0b"s);
}

TEST_F(OctetString, KeepsEveryOctet)
{
    EXPECT_EQ(valueOf("\xff\x80\n\""), "\xff\x80\n\"");
}

TEST_F(OctetString, LengthIsASigned32BitCount)
{
    EXPECT_EQ(valueOf("abc", 0xffffffff), "") << "-1";
    EXPECT_EQ(valueOf("abc", 0x80000000), "") << "the most negative count";
    EXPECT_EQ(valueOf("abc", std::numeric_limits<std::size_t>::max()), "");
    EXPECT_EQ(valueOf("abc", 0x100000002), "ab");
}

TEST_F(OctetString, WithoutBytesIsEmptyWhateverItsLength)
{
    variable_list var{};
    var.type = ASN_OCTET_STR;
    var.val_len = 5;
    EXPECT_EQ(someOID().toValue(&var), "");
}

/// A node whose enumeration holds a label twice, with the tree look-up that finds it.
class Enumeration : public testing::Test
{
protected:
    std::string valueOf(long value)
    {
        IntegerBinding var(value);
        return someOID().toValue(var.get());
    }
    struct tree* lookUp(const oid* ids, std::size_t length, struct tree* from)
    {
        EXPECT_EQ(ids, someOID().oidptr());
        EXPECT_EQ(length, someOID().oidsize());
        EXPECT_EQ(from, get_tree_head());
        return m_found;
    }
    /// Set by name: later releases of Net-SNMP 5.9 have a member more.
    static enum_list entry(enum_list* next, int value, char* label)
    {
        enum_list made{};
        made.next = next;
        made.value = value;
        made.label = label;
        return made;
    }

    char m_first[6] = "first";
    char m_second[7] = "second";
    char m_negative[9] = "negative";
    enum_list m_third = entry(nullptr, -1, m_negative);
    enum_list m_duplicate = entry(&m_third, 1, m_second);
    enum_list m_entries = entry(&m_duplicate, 1, m_first);
    struct tree m_node = [this] {
        struct tree node
        {};
        node.enums = &m_entries;
        return node;
    }();
    struct tree* m_found = &m_node;

private:
    Replace<decltype(get_tree)> m_fake{
        slots().tree, [this](const oid* ids, std::size_t length, struct tree* from) {
            return lookUp(ids, length, from);
        }};
};

TEST_F(Enumeration, GivesTheLabelOfTheFirstMatchWithoutPrinting)
{
    const Replace printer(slots().printValue, unexpectedPrint);
    EXPECT_EQ(valueOf(1), "first");
}

TEST_F(Enumeration, ComparesTheEntryWithItsSignWithTheWholeInteger)
{
    EXPECT_EQ(valueOf(-1), "negative");
    EXPECT_EQ(valueOf(4294967295), "4294967295") << "the bits of -1 in 32";
    EXPECT_EQ(valueOf(4294967297), "4294967297") << "1 in its low half";
}

TEST_F(Enumeration, WithoutAMatchThePrinterPrints)
{
    EXPECT_EQ(valueOf(2), "2");
}

TEST_F(Enumeration, WithoutAListThePrinterPrints)
{
    m_node.enums = nullptr;
    EXPECT_EQ(valueOf(1), "1");
}

TEST_F(Enumeration, WithoutANodeThePrinterPrints)
{
    m_found = nullptr;
    EXPECT_EQ(valueOf(1), "1");
}

TEST_F(Enumeration, WithoutAnIntegerThePrinterDecides)
{
    variable_list var{};
    var.type = ASN_INTEGER;
    bool printed = false;
    const Replace printer(slots().printValue, [&](u_char**, std::size_t*, std::size_t*, int,
                                                  const netsnmp_variable_list* given,
                                                  const enum_list*, const char*, const char*) {
        printed = true;
        EXPECT_EQ(given, &var);
        return 1;
    });
    EXPECT_EQ(someOID().toValue(&var), "");
    EXPECT_TRUE(printed);
}

TEST_F(Enumeration, IsForIntegersAlone)
{
    IntegerBinding var(1);
    var.get()->type = ASN_GAUGE;
    EXPECT_EQ(someOID().toValue(var.get()), "1");
}

class EnumerationOfTheMIBs : public WithMIBs
{
protected:
    static std::string valueOf(const char* name, long value)
    {
        IntegerBinding var(value);
        return OID(name).toValue(var.get());
    }
};

TEST_F(EnumerationOfTheMIBs, GivesTheLabelOfAnInstance)
{
    EXPECT_EQ(valueOf("hrDeviceStatus.1", 2), "running");
    EXPECT_EQ(valueOf("hrDeviceStatus.1", 77), "77");
    EXPECT_EQ(valueOf("sysServices.0", 72), "72") << "has no enumeration";
}

class PrintedValue : public WithMIBs
{};

TEST_F(PrintedValue, IsShortForEveryOtherType)
{
    u_char address[] = {192, 0, 2, 1};
    counter64 big{1, 2}; // high, low
    oid name[] = {1, 3, 6, 1, 2, 1, 1, 3};
    long number = 123456;

    variable_list var{};
    var.type = ASN_TIMETICKS;
    var.val.integer = &number;
    var.val_len = sizeof number;
    EXPECT_EQ(someOID().toValue(&var), "123456") << "hundredths of a second, not days";
    var.type = ASN_COUNTER;
    EXPECT_EQ(someOID().toValue(&var), "123456");
    var.type = ASN_GAUGE;
    EXPECT_EQ(someOID().toValue(&var), "123456");

    var.type = ASN_IPADDRESS;
    var.val.string = address;
    var.val_len = sizeof address;
    EXPECT_EQ(someOID().toValue(&var), "192.0.2.1");

    var.type = ASN_COUNTER64;
    var.val.counter64 = &big;
    var.val_len = sizeof big;
    EXPECT_EQ(someOID().toValue(&var), "4294967298");

    var.type = ASN_OBJECT_ID;
    var.val.objid = name;
    var.val_len = sizeof name;
    EXPECT_EQ(someOID().toValue(&var), "SNMPv2-MIB::sysUpTime");

    var.type = ASN_NULL;
    var.val.string = nullptr;
    var.val_len = 0;
    EXPECT_EQ(someOID().toValue(&var), "NULL");
}

} // namespace
