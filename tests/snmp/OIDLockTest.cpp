// An OID when the lock of the print settings fails.

#include "snmp/OID.h"
#include "tests/snmp/OIDValueHelpers.h"
#include "tests/support/FailingMutex.h"

#include <gtest/gtest.h>

using UVARNETSNMP::OID;

namespace {

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
    EXPECT_EQ(failureToLock([&] { m_id.toValue(var.get()); }), "cannot lock mutex");
    EXPECT_FALSE(quickPrint());
    EXPECT_FALSE(numericTicks());
}

TEST_F(OIDLockFailure, PassesOutOfToStringWithTheFormatAsItWas)
{
    const int before = netsnmp_ds_get_int(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_OID_OUTPUT_FORMAT);
    EXPECT_EQ(failureToLock([&] { m_id.toString(NETSNMP_OID_OUTPUT_NONE); }), "cannot lock mutex");
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

} // namespace
