// One turn of the wait for answers. An fd_set holds the descriptors below FD_SETSIZE (1,024 nearly
// everywhere) and nothing tells when a larger one is put into it: the bit lands in whatever lies
// behind. A process with many sessions, or whose parent left it many open files, gets such
// descriptors; Net-SNMP has calls with a set of its own kind for them.

#include "snmp/SNMPSession.h"

#include <net-snmp/library/large_fd_set.h>

#include <sys/select.h>

namespace UVARNETSNMP {

namespace {

constexpr suseconds_t turnMicroseconds = 5000; // the longest wait of one turn

/// Net-SNMP's set of descriptors, with room for those from 0 to a given one from the start: growing
/// it later does not end while memory is exhausted.
class LargeSet
{
public:
    explicit LargeSet(int largest) { netsnmp_large_fd_set_init(&m_set, largest + 1); }
    ~LargeSet() { netsnmp_large_fd_set_cleanup(&m_set); }
    LargeSet(const LargeSet&) = delete;
    LargeSet& operator=(const LargeSet&) = delete;

    /// Null when there was no memory.
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

/// One turn of the wait: until a response is read, a resend is due, or 5 ms have passed.
void SNMPSession::ServeOnce()
{
    const timeval wait = {0, turnMicroseconds};
    const netsnmp_transport* const transport = snmp_sess_transport(m_sessionHandle);
    if (transport == nullptr || transport->sock < 0) {
        // A stream whose peer hung up ("tcp:" hosts) has no descriptor left, and
        // snmp_sess_select_info answers that by freeing the session, which is the destructor's to
        // close.
        JustWait(wait);
    } else if (transport->sock < FD_SETSIZE) {
        ServeOrdinary(m_sessionHandle, wait);
    } else {
        ServeLarge(m_sessionHandle, transport->sock, wait);
    }
}

} // namespace UVARNETSNMP
