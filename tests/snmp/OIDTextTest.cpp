// OIDText.cpp: OIDs and the values that they name, into text.

#include "tests/snmp/helpers/OIDTestHelpers.h"
#include "tests/support/CountedNew.h"
#include "tests/support/FailingMutex.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstring>
#include <future>
#include <limits>
#include <utility>

using OIDFakes::Replace;
using OIDFakes::slots;
using testing::ElementsAre;
using testing::Pair;
using testing::StartsWith;
using UVARNETSNMP::OID;

namespace {

// Names into text, with the project's own MIB modules loaded.

struct Format
{
    const char* name;
    int format;
    const char* expected;
};
class OIDFormat : public WithMIBs, public testing::WithParamInterface<Format>
{};
TEST_P(OIDFormat, PrintsTheNameAndLeavesTheSettingAsItWas)
{
    const OutputFormatGuard before(NETSNMP_OID_OUTPUT_FULL);
    EXPECT_EQ(OID("sysUpTime.0").toString(GetParam().format), GetParam().expected);
    EXPECT_EQ(outputFormat(), NETSNMP_OID_OUTPUT_FULL);
}
TEST_P(OIDFormat, OfTheProcessIsUsedWithoutAnArgument)
{
    const OutputFormatGuard before(GetParam().format);
    EXPECT_EQ(OID("sysUpTime.0").toString(), GetParam().expected);
    EXPECT_EQ(outputFormat(), GetParam().format);
}
INSTANTIATE_TEST_SUITE_P(
    Table, OIDFormat,
    testing::Values(Format{"Suffix", 1, "sysUpTime.0"},
                    Format{"Module", 2, "SNMPv2-MIB::sysUpTime.0"},
                    Format{"Full", 3, ".iso.org.dod.internet.mgmt.mib-2.system.sysUpTime.0"},
                    Format{"Numeric", 4, ".1.3.6.1.2.1.1.3.0"},
                    Format{"UCD", 5, "system.sysUpTime.0"}, Format{"None", 6, ""}),
    RowName());

/// A printer that prints `text`, or fails if it is null.
auto printing(const char* text)
{
    return [text](u_char** buffer, std::size_t* size, std::size_t* length, int mayGrow, const oid*,
                  std::size_t) {
        EXPECT_EQ(*buffer, nullptr);
        EXPECT_EQ(*size, 0U);
        EXPECT_EQ(*length, 0U);
        EXPECT_EQ(mayGrow, 1);
        *buffer = reinterpret_cast<u_char*>(strdup(text == nullptr ? "half a na" : text));
        return text == nullptr ? 0 : 1;
    };
}

TEST(OIDToString, SetsTheFormatOnlyIfItDiffersAndHoldsTheLockMeanwhile)
{
    const OutputFormatGuard before(NETSNMP_OID_OUTPUT_MODULE);
    const Replace reader(slots().getInt, [](int storeID, int which) {
        EXPECT_EQ(storeID, NETSNMP_DS_LIBRARY_ID);
        EXPECT_EQ(which, NETSNMP_DS_LIB_OID_OUTPUT_FORMAT);
        EXPECT_TRUE(lockIsHeld());
        return NETSNMP_OID_OUTPUT_MODULE;
    });
    std::vector<int> set;
    const Replace store(slots().setInt, [&set](int storeID, int which, int value) {
        EXPECT_EQ(storeID, NETSNMP_DS_LIBRARY_ID);
        EXPECT_EQ(which, NETSNMP_DS_LIB_OID_OUTPUT_FORMAT);
        EXPECT_TRUE(lockIsHeld());
        set.push_back(value);
        return SNMPERR_SUCCESS;
    });
    const Replace printer(slots().printName,
                          [&set](u_char** buffer, std::size_t* size, std::size_t* length,
                                 int mayGrow, const oid* ids, std::size_t count) {
                              EXPECT_TRUE(lockIsHeld());
                              set.push_back(0);
                              return printing("text")(buffer, size, length, mayGrow, ids, count);
                          });
    const OID id = makeOID({1, 3});
    EXPECT_EQ(id.toString(NETSNMP_OID_OUTPUT_MODULE), "text");
    EXPECT_THAT(set, ElementsAre(0));
    EXPECT_EQ(id.toString(99), "text");
    EXPECT_THAT(set, ElementsAre(0, 99, 0, 2)) << "unchecked, and put back";
    EXPECT_FALSE(lockIsHeld());
}

TEST(OIDToString, FailureIsEmptyAndPutsTheFormatBack)
{
    const OutputFormatGuard before(NETSNMP_OID_OUTPUT_MODULE);
    const Replace printer(slots().printName, printing(nullptr));
    EXPECT_EQ(makeOID({1, 3}).toString(NETSNMP_OID_OUTPUT_NUMERIC), "");
    EXPECT_EQ(makeOID({1, 3}).toString(), "");
    EXPECT_EQ(outputFormat(), NETSNMP_OID_OUTPUT_MODULE);
    EXPECT_FALSE(lockIsHeld());
}

TEST(OIDToString, SuccessWithoutABufferIsEmpty)
{
    const Replace printer(slots().printName, [](u_char**, std::size_t*, std::size_t*, int,
                                                const oid*, std::size_t) { return 1; });
    EXPECT_EQ(makeOID({1, 3}).toString(NETSNMP_OID_OUTPUT_NUMERIC), "");
    EXPECT_EQ(makeOID({1, 3}).toString(), "");
}

TEST(OIDToString, OfAnInvalidOIDPrintsNothing)
{
    const Replace printer(slots().printName,
                          [](u_char**, std::size_t*, std::size_t*, int, const oid*, std::size_t) {
                              ADD_FAILURE() << "printed";
                              return 0;
                          });
    const Replace store(slots().setInt, [](int, int, int) {
        ADD_FAILURE() << "set";
        return SNMPERR_GENERR;
    });
    OID emptied = makeOID({1, 3});
    ASSERT_TRUE(emptied.trim(emptied, 0));
    for (const OID& id : {OID(), emptied}) {
        EXPECT_EQ(id.toString(NETSNMP_OID_OUTPUT_NUMERIC), "");
        EXPECT_EQ(id.toString(), "");
        EXPECT_EQ(id.toDottedNotation(), "");
    }
    EXPECT_EQ(emptied.toDottedNotation(), "");
}

TEST(OIDDottedNotation, PrintsTheLowHalfOfEachAsASignedNumber)
{
    EXPECT_EQ(makeOID({1, 3, 6, 1, 2, 1, 1, 3, 0}).toDottedNotation(), "1.3.6.1.2.1.1.3.0");
    EXPECT_EQ(makeOID({0}).toDottedNotation(), "0");
    EXPECT_EQ(makeOID({1, 3, 4294967295}).toDottedNotation(), "1.3.-1");
    EXPECT_EQ(makeOID({2147483647, 2147483648}).toDottedNotation(), "2147483647.-2147483648");
    EXPECT_EQ(makeOID({static_cast<oid>(0x100000007)}).toDottedNotation(), "7");
    EXPECT_EQ(OID().toDottedNotation(), "");
}

TEST(OIDLock, IsNotTakenByWhatChangesNoSetting)
{
    const Replace parser(slots().parse, [](const char*, oid* ids, std::size_t* count) {
        std::fill_n(ids, 3, 7);
        *count = 3;
        return ids;
    });
    const Replace printer(slots().printName, printing("name"));
    const Poco::Mutex::ScopedLock held(OID::s_mutex);
    auto texts = std::async(std::launch::async, [] {
        const OID id("parsed");
        return std::vector<std::string>{id.toString(), id.toDottedNotation()};
    });
    ASSERT_EQ(texts.wait_for(std::chrono::seconds(20)), std::future_status::ready);
    EXPECT_THAT(texts.get(), ElementsAre("name", "7.7.7"));
}

// OID::toValue by the type of the variable binding.

const OID& someOID()
{
    static const OID id = makeOID({1, 3, 6, 1});
    return id;
}

class OctetString : public testing::Test
{
protected:
    /// The value of an octet string with these bytes that claims to have `length`.
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
    EXPECT_EQ(valueOf("abc", static_cast<std::size_t>(0x100000002)), "ab");
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
    constexpr long half = 1L << (4 * sizeof(long)); // 2^32 where long has 64 bits
    EXPECT_EQ(valueOf(half - 1), std::to_string(half - 1)) << "the bits of -1 in the low half";
    EXPECT_EQ(valueOf(half + 1), std::to_string(half + 1)) << "1 in the low half";
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

// What OID::toValue does to Net-SNMP's process-wide print settings, and under which lock.

/// A printer that checks that the settings are on and the lock is held. It prints `text`, or, if
/// that is null, fails with half a text in the buffer.
auto checkedPrinter(const variable_list* expected, const char* text)
{
    return [expected, text](u_char** buffer, std::size_t* size, std::size_t* length, int mayGrow,
                            const netsnmp_variable_list* var, const enum_list* enums,
                            const char* hint, const char* units) {
        EXPECT_TRUE(quickPrint());
        EXPECT_TRUE(numericTicks());
        EXPECT_TRUE(lockIsHeld());
        EXPECT_EQ(*buffer, nullptr);
        EXPECT_EQ(*size, 0U);
        EXPECT_EQ(*length, 0U);
        EXPECT_EQ(mayGrow, 1);
        EXPECT_EQ(var, expected);
        EXPECT_EQ(enums, nullptr);
        EXPECT_EQ(hint, nullptr);
        EXPECT_EQ(units, nullptr);
        *buffer = reinterpret_cast<u_char*>(strdup(text == nullptr ? "half a te" : text));
        return text == nullptr ? 0 : 1;
    };
}

struct Before
{
    const char* name;
    bool quick;
    bool ticks;
};
class OIDValueSettings : public testing::TestWithParam<Before>
{
protected:
    void expectPutBack() const
    {
        EXPECT_EQ(quickPrint(), GetParam().quick);
        EXPECT_EQ(numericTicks(), GetParam().ticks);
        EXPECT_FALSE(lockIsHeld());
    }
    OID m_id = makeOID({1, 3, 6, 1});
    IntegerBinding m_var{1};

private:
    PrintSettings m_settings{GetParam().quick, GetParam().ticks};
};

TEST_P(OIDValueSettings, ArePutBackAfterPrinting)
{
    const Replace printer(slots().printValue, checkedPrinter(m_var.get(), "printed"));
    EXPECT_EQ(m_id.toValue(m_var.get()), "printed");
    expectPutBack();
}

TEST_P(OIDValueSettings, ArePutBackAfterAPrintWithoutABuffer)
{
    const Replace printer(slots().printValue, [](u_char**, std::size_t*, std::size_t*, int,
                                                 const netsnmp_variable_list*, const enum_list*,
                                                 const char*, const char*) { return 1; });
    EXPECT_EQ(m_id.toValue(m_var.get()), "");
    expectPutBack();
}

TEST_P(OIDValueSettings, ArePutBackAfterAnOctetString)
{
    u_char bytes[] = {'a', 'b', 0};
    m_var.get()->type = ASN_OCTET_STR;
    m_var.get()->val.string = bytes;
    m_var.get()->val_len = sizeof bytes;
    EXPECT_EQ(m_id.toValue(m_var.get()), "ab");
    expectPutBack();
}

TEST_P(OIDValueSettings, ArePutBackAfterAnEnumeration)
{
    char label[] = "running";
    enum_list entry{};
    entry.value = 1;
    entry.label = label;
    struct tree node
    {};
    node.enums = &entry;
    const Replace look(slots().tree, [&node](const oid*, std::size_t, struct tree*) {
        EXPECT_TRUE(lockIsHeld());
        return &node;
    });
    EXPECT_EQ(m_id.toValue(m_var.get()), "running");
    expectPutBack();
}

TEST_P(OIDValueSettings, StayOnAfterAFailedPrint)
{
    const Replace printer(slots().printValue, checkedPrinter(m_var.get(), nullptr));
    EXPECT_EQ(m_id.toValue(m_var.get()), "");
    EXPECT_TRUE(quickPrint());
    EXPECT_TRUE(numericTicks());
    EXPECT_FALSE(lockIsHeld());
}

INSTANTIATE_TEST_SUITE_P(Table, OIDValueSettings,
                         testing::Values(Before{"BothOff", false, false},
                                         Before{"QuickOn", true, false},
                                         Before{"TicksOn", false, true},
                                         Before{"BothOn", true, true}),
                         RowName());

TEST(OIDValueLock, CoversEveryReadingAndChangeAndTheOrderIsKept)
{
    const PrintSettings before(false, false);
    std::vector<int> read;
    const Replace reader(slots().getBoolean, [&read](int storeID, int which) {
        // Net-SNMP's printer reads settings too; only ours count.
        if (which == NETSNMP_DS_LIB_QUICK_PRINT || which == NETSNMP_DS_LIB_NUMERIC_TIMETICKS) {
            EXPECT_EQ(storeID, NETSNMP_DS_LIBRARY_ID);
            EXPECT_TRUE(lockIsHeld());
            read.push_back(which);
        }
        return 0;
    });
    std::vector<std::pair<int, int>> changes;
    const Replace store(slots().setBoolean, [&changes](int storeID, int which, int value) {
        EXPECT_EQ(storeID, NETSNMP_DS_LIBRARY_ID);
        EXPECT_TRUE(lockIsHeld());
        changes.emplace_back(which, value);
        return SNMPERR_SUCCESS;
    });
    IntegerBinding var(1);
    EXPECT_EQ(makeOID({1, 3}).toValue(var.get()), "INTEGER: 1") << "the settings are recorded only";
    EXPECT_THAT(changes, ElementsAre(Pair(13, 1), Pair(18, 1), Pair(13, 0), Pair(18, 0)));
    ASSERT_GE(read.size(), 2U);
    read.resize(2); // the rest is the printer's
    EXPECT_THAT(read, ElementsAre(18, 13));
}

TEST(OIDValueOf, NothingOrOfAnInvalidOIDTouchesNothing)
{
    const Replace store(slots().setBoolean, [](int, int, int) {
        ADD_FAILURE() << "set";
        return SNMPERR_GENERR;
    });
    const Replace printer(slots().printValue, unexpectedPrint);
    IntegerBinding var(1);
    OID emptied = makeOID({1, 3});
    ASSERT_TRUE(emptied.trim(emptied, 0));
    EXPECT_EQ(makeOID({1, 3}).toValue(nullptr), "");
    EXPECT_EQ(OID().toValue(var.get()), "");
    EXPECT_EQ(emptied.toValue(var.get()), "");
}

TEST(OIDLock, KeepsThreadsApartWhilePrinting)
{
    const PrintSettings before(false, false);
    const OutputFormatGuard format(NETSNMP_OID_OUTPUT_MODULE);
    std::atomic<int> inside{0};
    std::atomic<int> prints{0};
    const auto enter = [&inside, &prints] {
        EXPECT_EQ(inside.fetch_add(1), 0) << "two threads print at once";
        std::this_thread::yield();
        inside.fetch_sub(1);
        prints.fetch_add(1);
        return 1;
    };
    const Replace value(slots().printValue, [&enter](u_char**, std::size_t*, std::size_t*, int,
                                                     const netsnmp_variable_list*, const enum_list*,
                                                     const char*, const char*) { return enter(); });
    const Replace name(slots().printName, [&enter](u_char**, std::size_t*, std::size_t*, int,
                                                   const oid*, std::size_t) { return enter(); });
    constexpr int threads = 4;
    constexpr int rounds = 200;
    std::vector<std::thread> running;
    running.reserve(threads);
    for (int i = 0; i < threads; ++i) {
        running.emplace_back([] {
            const OID id = makeOID({1, 3});
            IntegerBinding var(1);
            for (int round = 0; round < rounds; ++round) {
                id.toValue(var.get());
                id.toString(NETSNMP_OID_OUTPUT_NUMERIC);
            }
        });
    }
    for (std::thread& thread : running) {
        thread.join();
    }
    EXPECT_EQ(prints, threads * rounds * 2);
    EXPECT_FALSE(quickPrint()) << "a thread took another's setting for the former one";
    EXPECT_FALSE(numericTicks());
    EXPECT_EQ(outputFormat(), NETSNMP_OID_OUTPUT_MODULE);
}

// The lock of the print settings cannot be taken.

class OIDLockFailure : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!FailingMutex::supported()) {
            GTEST_SKIP() << "NOT TESTED: mutexes cannot be replaced beside this sanitizer";
        }
    }

    static constexpr oid m_ids[] = {1, 3, 6, 1};
    const OID m_id{m_ids, 4, 4};
};

TEST_F(OIDLockFailure, PassesOutOfToValueWithTheSettingsAsTheyWere)
{
    const PrintSettings before(false, false);
    IntegerBinding var(1);
    EXPECT_THAT(failureToLock([&] { m_id.toValue(var.get()); }), StartsWith("cannot lock mutex"));
    EXPECT_FALSE(quickPrint());
    EXPECT_FALSE(numericTicks());
}

TEST_F(OIDLockFailure, PassesOutOfToStringWithTheFormatAsItWas)
{
    const int before = netsnmp_ds_get_int(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_OID_OUTPUT_FORMAT);
    EXPECT_THAT(failureToLock([&] { m_id.toString(NETSNMP_OID_OUTPUT_NONE); }),
                StartsWith("cannot lock mutex"));
    EXPECT_EQ(netsnmp_ds_get_int(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_OID_OUTPUT_FORMAT), before);
}

TEST_F(OIDLockFailure, DoesNotReachWhatChangesNoSetting)
{
    EXPECT_EQ(failureToLock([&] {
                  IntegerBinding var(1);
                  OID().toValue(var.get());
                  m_id.toValue(nullptr);
                  OID().toString(NETSNMP_OID_OUTPUT_NONE);
                  m_id.toDottedNotation();
              }),
              "nothing thrown");
}

// operator new has no memory for a text.

// Longer than a short string, so that each copy allocates.
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
