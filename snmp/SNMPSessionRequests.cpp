// Requests: one exchange, or one GET whose answers are gathered until a deadline.

#include "snmp/SNMPSession.h"

#include <Poco/Timestamp.h>

#include <algorithm>

namespace UVARNETSNMP {

namespace {

constexpr long maxRepetitions = 10;

/// Asks for oid's value. Non-repeaters and max-repetitions are the error-status and error-index of
/// the other request types: those too go out with 0 and 10, on purpose.
void FillRequest(snmp_pdu& request, const OID& oid)
{
    request.non_repeaters = 0;
    request.max_repetitions = maxRepetitions;
    snmp_add_null_var(&request, oid.oidptr(), oid.oidsize());
}

/// Now plus timeout, or the last time that a Timestamp holds if that is earlier.
Poco::Timestamp After(const Poco::Timespan& timeout)
{
    const Poco::Timestamp now;
    const Poco::Timestamp::TimeDiff room = Poco::Timestamp::TIMEVAL_MAX - now.epochMicroseconds();
    return now + std::min(timeout.totalMicroseconds(), room);
}

} // namespace

snmp_pdu* SNMPSession::Get(const OID& oid)
{
    return Request(SNMP_MSG_GET, oid);
}

snmp_pdu* SNMPSession::GetNext(const OID& oid)
{
    return Request(SNMP_MSG_GETNEXT, oid);
}

snmp_pdu* SNMPSession::GetBulk(const OID& oid)
{
    if (!m_initialized || m_sessionPtr == nullptr) {
        return nullptr;
    }
    if (m_session.version == SNMP_VERSION_1) {
        return GetNext(oid);
    }
    snmp_pdu* const request = snmp_pdu_create(SNMP_MSG_GETBULK);
    if (request == nullptr) {
        return nullptr;
    }
    if (request->non_repeaters != 0) {
        snmp_pdu* const response = GetNext(oid);
        snmp_free_pdu(request);
        return response;
    }
    return Exchange(request, oid);
}

snmp_pdu* SNMPSession::Request(int type, const OID& oid)
{
    if (!m_initialized || m_sessionPtr == nullptr) {
        return nullptr;
    }
    snmp_pdu* const request = snmp_pdu_create(type);
    return request == nullptr ? nullptr : Exchange(request, oid);
}

/// Takes request over, whatever comes of it: Net-SNMP frees it in every case.
snmp_pdu* SNMPSession::Exchange(snmp_pdu* request, const OID& oid)
{
    FillRequest(*request, oid);
    snmp_pdu* response = nullptr;
    if (snmp_sess_synch_response(m_sessionHandle, request, &response) != STAT_SUCCESS) {
        ReleasePDU(response);
        return nullptr;
    }
    return response;
}

bool SNMPSession::Get(const OID& oid, ResponseCallback callback, void* userData,
                      Poco::Timespan timeout)
{
    if (!m_initialized || m_sessionPtr == nullptr || callback == nullptr) {
        return false;
    }
    RequestContext context = {this, 0, callback, userData};
    const Poco::Timestamp deadline = After(timeout);
    m_sessionPtr->callback = &SNMPSession::Callback;
    m_sessionPtr->callback_magic = &context;

    snmp_pdu* const request = snmp_pdu_create(SNMP_MSG_GET);
    if (request == nullptr) {
        return false;
    }
    FillRequest(*request, oid);
    context.reqid = snmp_sess_send(m_sessionHandle, request);
    if (context.reqid == 0) {
        snmp_free_pdu(request);
        return false;
    }
    // The request is still there: Net-SNMP keeps one that expects a response, as every GET does, in
    // the session's list for its resends, and nothing has run since that could take it out.
    request->flags &= ~static_cast<u_long>(UCD_MSG_FLAG_RESPONSE_PDU);

    while (timeout.totalMicroseconds() > 0) {
        ServeOnce();
        timeout = Poco::Timespan(deadline - Poco::Timestamp());
    }
    return true;
}

void SNMPSession::ReleasePDU(snmp_pdu* pdu)
{
    if (pdu != nullptr) {
        snmp_free_pdu(pdu);
    }
}

} // namespace UVARNETSNMP
