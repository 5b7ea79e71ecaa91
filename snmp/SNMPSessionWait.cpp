// One turn of the wait for answers, by select(). An fd_set has room for the descriptors below
// FD_SETSIZE, nearly everywhere 1,024. A larger one would silently set a bit in the memory after
// it. A process gets such descriptors when it has many sessions or inherits many open files. For
// these Net-SNMP has a growable set and calls that take it.

#include "snmp/SNMPSession.h"

#include <net-snmp/library/large_fd_set.h>

#include <sys/select.h>

namespace UVARNETSNMP {

namespace {

constexpr suseconds_t turnMicroseconds = 5000; // the longest wait of one turn

/// Net-SNMP's growable set of descriptors. Sized up front for the largest one: growing it later
/// loops for ever when memory runs out.
class LargeSet
{
public:
    explicit LargeSet(int largest) { netsnmp_large_fd_set_init(&m_set, largest + 1); }
    ~LargeSet() { netsnmp_large_fd_set_cleanup(&m_set); }
    LargeSet(const LargeSet&) = delete;
    LargeSet& operator=(const LargeSet&) = delete;

    /// Null if there is no memory.
    netsnmp_large_fd_set* get() { return m_set.lfs_setsize == 0 ? nullptr : &m_set; }

private:
    netsnmp_large_fd_set m_set = {};
};

void JustWait(timeval wait)
{
    select(0, nullptr, nullptr, nullptr, &wait);
}

void ServeOrdinary(SessionHandle handle, timeval wait)
{
    int count = 0;
    int block = 0;
    fd_set ready;
    FD_ZERO(&ready);
    snmp_sess_select_info(handle, &count, &ready, &wait, &block);
    if (select(count, &ready, nullptr, nullptr, &wait) > 0) {
        snmp_sess_read(handle, &ready);
    } else {
        snmp_sess_timeout(handle);
    }
}

void ServeLarge(SessionHandle handle, int descriptor, timeval wait)
{
    LargeSet ready(descriptor);
    if (ready.get() == nullptr) {
        JustWait(wait);
        return;
    }
    int count = 0;
    int block = 0;
    snmp_sess_select_info2(handle, &count, ready.get(), &wait, &block);
    if (netsnmp_large_fd_set_select(count, ready.get(), nullptr, nullptr, &wait) > 0) {
        snmp_sess_read2(handle, ready.get());
    } else {
        snmp_sess_timeout(handle);
    }
}

} // namespace

/// Waits until a response can be read, a resend is due, or 5 ms have passed, and lets Net-SNMP read
/// or resend.
void SNMPSession::ServeOnce()
{
    const timeval wait = {0, turnMicroseconds};
    const netsnmp_transport* const transport = snmp_sess_transport(m_sessionHandle);
    if (transport == nullptr || transport->sock < 0) {
        // A stream ("tcp:" host) has no descriptor once its peer has closed it.
        // snmp_sess_select_info would then free the session, and the destructor would free it
        // again.
        JustWait(wait);
    } else if (transport->sock < FD_SETSIZE) {
        ServeOrdinary(m_sessionHandle, wait);
    } else {
        ServeLarge(m_sessionHandle, transport->sock, wait);
    }
}

} // namespace UVARNETSNMP
