#pragma once

#include "snmp/OID.h"
#include "tests/snmp/OIDFakes.h"

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

/// The sub-identifiers as the calls of Net-SNMP see them.
inline std::vector<oid> idsOf(const UVARNETSNMP::OID& id)
{
    return std::vector<oid>(id.oidptr(), id.oidptr() + id.oidsize());
}

/// The capacity, which a copy takes over and therefore asks memory for; 0 for one without
/// sub-identifiers.
inline std::size_t capacityOf(const UVARNETSNMP::OID& id)
{
    const OIDFakes::Allocations watch;
    const UVARNETSNMP::OID copy(id); // NOLINT(performance-unnecessary-copy-initialization): watched
    return watch.counts().empty() ? 0 : watch.counts().front();
}

/// Whether some other thread than the calling one could not take the lock now. (The lock is
/// recursive: the thread that holds it could take it again.)
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
