#pragma once

#include <net-snmp/net-snmp-config.h>

#include <net-snmp/net-snmp-includes.h>

#include <cstddef>
#include <functional>
#include <utility>
#include <vector>

/// The test program defines the functions of Net-SNMP that an OID calls. Each definition calls the
/// real function unless the test has replaced it.
namespace OIDFakes {

/// The replacement of each function; empty: the real one.
struct Slots
{
    std::function<decltype(snmp_parse_oid)> parse;
    std::function<decltype(get_tree)> tree;
    std::function<decltype(sprint_realloc_by_type)> printValue;
    std::function<decltype(sprint_realloc_objid)> printName;
    std::function<decltype(netsnmp_ds_get_boolean)> getBoolean;
    std::function<decltype(netsnmp_ds_set_boolean)> setBoolean;
    std::function<decltype(netsnmp_ds_get_int)> getInt;
    std::function<decltype(netsnmp_ds_set_int)> setInt;
};
Slots& slots();

/// Replaces a function for a scope.
template <class Function>
class Replace
{
public:
    template <class Body>
    Replace(std::function<Function>& slot, Body&& body) : m_slot(slot)
    {
        m_slot = std::forward<Body>(body);
    }
    ~Replace() { m_slot = nullptr; }
    Replace(const Replace&) = delete;
    Replace& operator=(const Replace&) = delete;

private:
    std::function<Function>& m_slot;
};
template <class Function, class Body>
Replace(std::function<Function>&, Body&&) -> Replace<Function>;

/// Records netsnmp_malloc and netsnmp_free for a scope, on the thread that made it; at most one at
/// a time. It can refuse one allocation, and fails the test if that allocation never came.
class Allocations
{
public:
    /// `refused` is the number of the allocation that returns null, counted from 1; 0: none.
    explicit Allocations(std::size_t refused = 0);
    ~Allocations();
    Allocations(const Allocations&) = delete;
    Allocations& operator=(const Allocations&) = delete;

    /// The number of sub-identifiers that each allocation asked for, refused ones included.
    const std::vector<std::size_t>& counts() const noexcept { return m_counts; }
    /// How many arrays allocated since are not yet released.
    std::size_t unreleased() const noexcept { return m_arrays.size(); }

    void* allocate(std::size_t bytes);
    void release(void* array);

private:
    std::size_t m_refused;
    std::vector<std::size_t> m_counts;
    std::vector<void*> m_arrays;
};

} // namespace OIDFakes
