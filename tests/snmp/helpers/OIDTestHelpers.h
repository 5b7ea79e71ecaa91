#pragma once

#include "snmp/OID.h"
#include "tests/snmp/helpers/OIDFakes.h"
#include "tests/support/Guards.h"

#include <net-snmp/net-snmp-config.h>

#include <net-snmp/net-snmp-includes.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <initializer_list>
#include <string>
#include <thread>
#include <vector>

/// An OID of these sub-identifiers, with room for at least as many as `capacity` says.
inline UVARNETSNMP::OID makeOID(std::initializer_list<oid> ids, std::size_t capacity = 0)
{
    return UVARNETSNMP::OID(ids.begin(), ids.size(), capacity);
}

/// The sub-identifiers, as Net-SNMP's calls read them.
inline std::vector<oid> idsOf(const UVARNETSNMP::OID& id)
{
    return std::vector<oid>(id.oidptr(), id.oidptr() + id.oidsize());
}

/// The capacity, determined from what a copy allocates; 0 without sub-identifiers.
inline std::size_t capacityOf(const UVARNETSNMP::OID& id)
{
    const OIDFakes::Allocations watch;
    const UVARNETSNMP::OID copy(id); // NOLINT(performance-unnecessary-copy-initialization): watched
    return watch.counts().empty() ? 0 : watch.counts().front();
}

/// Whether another thread could not take the lock now. It must be another one, because the lock is
/// recursive.
inline bool lockIsHeld()
{
    bool held = true;
    std::thread([&held] {
        held = !UVARNETSNMP::OID::s_mutex.tryLock();
        if (!held) {
            UVARNETSNMP::OID::s_mutex.unlock();
        }
    }).join();
    return held;
}

/// Net-SNMP's process-wide setting that OID::toString(format) changes.
inline int outputFormat()
{
    return netsnmp_ds_get_int(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_OID_OUTPUT_FORMAT);
}

/// Gives it a value for a scope.
class OutputFormatGuard
{
public:
    explicit OutputFormatGuard(int format) : m_former(outputFormat()) { set(format); }
    ~OutputFormatGuard() { set(m_former); }
    OutputFormatGuard(const OutputFormatGuard&) = delete;
    OutputFormatGuard& operator=(const OutputFormatGuard&) = delete;

private:
    static void set(int format)
    {
        netsnmp_ds_set_int(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_OID_OUTPUT_FORMAT, format);
    }
    int m_former;
};

/// The name of a row of a table, for its test.
struct RowName
{
    template <class Info>
    std::string operator()(const Info& info) const
    {
        return info.param.name;
    }
};

/// A variable binding that holds an integer of its own.
class IntegerBinding
{
public:
    explicit IntegerBinding(long value) : m_value(value)
    {
        m_var.type = ASN_INTEGER;
        m_var.val.integer = &m_value;
        m_var.val_len = sizeof m_value;
    }
    IntegerBinding(const IntegerBinding&) = delete;
    IntegerBinding& operator=(const IntegerBinding&) = delete;

    variable_list* get() noexcept { return &m_var; }

private:
    long m_value;
    variable_list m_var{};
};

/// Net-SNMP's two process-wide settings that OID::toValue changes.
inline bool quickPrint()
{
    return netsnmp_ds_get_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_QUICK_PRINT) != 0;
}
inline bool numericTicks()
{
    return netsnmp_ds_get_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_NUMERIC_TIMETICKS) != 0;
}

/// Gives both settings values for a scope.
class PrintSettings
{
public:
    PrintSettings(bool quick, bool ticks) { set(quick, ticks); }
    ~PrintSettings() { set(m_quick, m_ticks); }
    PrintSettings(const PrintSettings&) = delete;
    PrintSettings& operator=(const PrintSettings&) = delete;

private:
    static void set(bool quick, bool ticks)
    {
        netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_QUICK_PRINT, quick);
        netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_NUMERIC_TIMETICKS, ticks);
    }
    bool m_quick = quickPrint();
    bool m_ticks = numericTicks();
};

/// A replacement of sprint_realloc_by_type that fails the test.
inline int unexpectedPrint(u_char** /*buffer*/, std::size_t* /*size*/, std::size_t* /*length*/,
                           int /*mayGrow*/, const netsnmp_variable_list* /*var*/,
                           const enum_list* /*enums*/, const char* /*hint*/, const char* /*units*/)
{
    ADD_FAILURE() << "Net-SNMP's printer was called";
    return 0;
}

/// A test suite with the project's Printer-MIB and its imports loaded. The first such suite loads
/// them, until the process exits: Net-SNMP 5.9 leaks when it is set up again, and LeakSanitizer
/// would report that.
class WithMIBs : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        static const TestSupport::NetSNMPLibrary library(SNMPDISCOVERY_MIBS_DIR, "Printer-MIB");
    }
};
