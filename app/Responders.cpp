// The end of an answer's road: from the response PDU to the set of responders.

#include "app/SNMPDiscoveryApp.h"
#include "snmp/Sender.h"

#include <Poco/ScopedLock.h>

#include <arpa/inet.h>

#include <optional>

namespace {

/// Dotted-quad text of `address`, valid until this thread's next call; null on failure.
const char* addressText(in_addr address)
{
#ifdef __GLIBC__
    // NOLINTNEXTLINE(concurrency-mt-unsafe): the C library here keeps the text per thread
    return inet_ntoa(address);
#else
    // Elsewhere all threads may share the text of inet_ntoa, and workers convert at the same time.
    static thread_local char text[INET_ADDRSTRLEN];
    return inet_ntop(AF_INET, &address, text, sizeof text);
#endif
}

} // namespace

void SNMPDiscoveryApp::SNMPCallback(UVARNETSNMP::SNMPSession& /*session*/, void* context,
                                    snmp_pdu* pdu)
{
    if (context == nullptr || pdu == nullptr) {
        return;
    }
    const std::optional<in_addr> sender = UVARNETSNMP::SenderOf(*pdu);
    if (!sender) {
        return;
    }
    // The PDU is kept, but an agent decides how large its contents are: up to 5 MB for one
    // datagram.
    UVARNETSNMP::ReleaseUnread(*pdu);

    const char* text = addressText(*sender);
    if (text == nullptr) {
        return;
    }
    static_cast<SNMPDiscoveryApp*>(context)->AddIP(text);
}

void SNMPDiscoveryApp::AddIP(const std::string& ip)
{
    const Poco::ScopedLock<Poco::Mutex> lock(m_mutex);
    m_responders.insert(ip);
}
