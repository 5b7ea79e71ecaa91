#pragma once

#include <net-snmp/net-snmp-config.h>

#include <net-snmp/net-snmp-includes.h>

#include <gtest/gtest.h>

#include <cstddef>

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

/// A stand-in for sprint_realloc_by_type where nothing may be printed.
inline int unexpectedPrint(u_char** /*buffer*/, std::size_t* /*size*/, std::size_t* /*length*/,
                           int /*mayGrow*/, const netsnmp_variable_list* /*var*/,
                           const enum_list* /*enums*/, const char* /*hint*/, const char* /*units*/)
{
    ADD_FAILURE() << "Net-SNMP's printer was called";
    return 0;
}
