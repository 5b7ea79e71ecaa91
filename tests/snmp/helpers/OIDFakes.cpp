#include "tests/snmp/helpers/OIDFakes.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <algorithm>

namespace OIDFakes {

namespace {

thread_local Allocations* watching = nullptr;

/// The function of the shared library that this program's own hides.
template <class Function>
Function* real(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

template <class Function, class... Arguments>
auto call(const std::function<Function>& slot, const char* name, Arguments... arguments)
{
    return slot ? slot(arguments...) : real<Function>(name)(arguments...);
}

} // namespace

Slots& slots()
{
    static Slots instance;
    return instance;
}

Allocations::Allocations(std::size_t refused) : m_refused(refused)
{
    EXPECT_EQ(watching, nullptr) << "one watch at a time";
    watching = this;
}

Allocations::~Allocations()
{
    watching = nullptr;
    EXPECT_LE(m_refused, m_counts.size()) << "the allocation to refuse was never asked for";
}

void* Allocations::allocate(std::size_t bytes)
{
    EXPECT_EQ(bytes % sizeof(oid), 0U) << "not a whole number of sub-identifiers";
    m_counts.push_back(bytes / sizeof(oid));
    if (m_counts.size() == m_refused) {
        return nullptr;
    }
    void* const array = real<decltype(netsnmp_malloc)>("netsnmp_malloc")(bytes);
    m_arrays.push_back(array);
    return array;
}

void Allocations::release(void* array)
{
    // An array from before this watch is released too, without being in the list.
    m_arrays.erase(std::remove(m_arrays.begin(), m_arrays.end(), array), m_arrays.end());
    real<decltype(netsnmp_free)>("netsnmp_free")(array);
}

} // namespace OIDFakes

using OIDFakes::call;
using OIDFakes::real;
using OIDFakes::slots;

extern "C" {

void* netsnmp_malloc(size_t size)
{
    return OIDFakes::watching != nullptr ? OIDFakes::watching->allocate(size)
                                         : real<decltype(netsnmp_malloc)>("netsnmp_malloc")(size);
}

void netsnmp_free(void* ptr)
{
    if (OIDFakes::watching != nullptr) {
        OIDFakes::watching->release(ptr);
    } else {
        real<decltype(netsnmp_free)>("netsnmp_free")(ptr);
    }
}

oid* snmp_parse_oid(const char* text, oid* ids, size_t* count)
{
    return call(slots().parse, "snmp_parse_oid", text, ids, count);
}

struct tree* get_tree(const oid* ids, size_t length, struct tree* from)
{
    return call(slots().tree, "get_tree", ids, length, from);
}

int sprint_realloc_by_type(u_char** text, size_t* size, size_t* length, int mayGrow,
                           const netsnmp_variable_list* var, const struct enum_list* enums,
                           const char* hint, const char* units)
{
    return call(slots().printValue, "sprint_realloc_by_type", text, size, length, mayGrow, var,
                enums, hint, units);
}

int sprint_realloc_objid(u_char** text, size_t* size, size_t* length, int mayGrow, const oid* ids,
                         size_t count)
{
    return call(slots().printName, "sprint_realloc_objid", text, size, length, mayGrow, ids, count);
}

int netsnmp_ds_get_boolean(int store, int which)
{
    return call(slots().getBoolean, "netsnmp_ds_get_boolean", store, which);
}

int netsnmp_ds_set_boolean(int store, int which, int value)
{
    return call(slots().setBoolean, "netsnmp_ds_set_boolean", store, which, value);
}

int netsnmp_ds_get_int(int store, int which)
{
    return call(slots().getInt, "netsnmp_ds_get_int", store, which);
}

int netsnmp_ds_set_int(int store, int which, int value)
{
    return call(slots().setInt, "netsnmp_ds_set_int", store, which, value);
}

} // extern "C"
