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

/// A stand-in for sprint_realloc_by_type where nothing may be printed.
inline int unexpectedPrint(u_char** /*buffer*/, std::size_t* /*size*/, std::size_t* /*length*/,
                           int /*mayGrow*/, const netsnmp_variable_list* /*var*/,
                           const enum_list* /*enums*/, const char* /*hint*/, const char* /*units*/)
{
    ADD_FAILURE() << "Net-SNMP's printer was called";
    return 0;
}
