// What OID::toValue does to Net-SNMP's process-wide print settings, and under which lock.

#include "tests/snmp/OIDTestHelpers.h"
#include "tests/snmp/OIDValueHelpers.h"

#include <gmock/gmock.h>

#include <atomic>
#include <cstring>
#include <utility>

using OIDFakes::Replace;
using OIDFakes::slots;
using testing::ElementsAre;
using testing::Pair;
using UVARNETSNMP::OID;

namespace {

/// A printer that sees the settings on and the lock held, and hands out `text`, or reports a
/// failure with half a text in the buffer.
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
        // Net-SNMP's printer asks for settings too, of which only ours are looked at.
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

} // namespace
