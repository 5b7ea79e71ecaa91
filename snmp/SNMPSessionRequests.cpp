// Requests: one exchange with one agent, or one GET whose answers are gathered until a deadline.

#include "snmp/SNMPSession.h"

#include <Poco/Timestamp.h>

#include <algorithm>

namespace UVARNETSNMP {

namespace {

constexpr long maxRepetitions = 10;

/// Adds oid with a null value. Net-SNMP keeps non-repeaters and max-repetitions where the other
/// request types have error-status and error-index, so a GET goes out with error-index 10. That is
/// deliberate and part of the wire format here.
void FillRequest(snmp_pdu& request, const OID& oid)
{
    request.non_repeaters = 0;
    request.max_repetitions = maxRepetitions;
    snmp_add_null_var(&request, oid.oidptr(), oid.oidsize());
}

/// Now plus timeout, limited to the last time that a Timestamp can hold.
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

/// Would send a GETBULK if snmp_pdu_create preset non-repeaters to 0 and the session did not speak
/// SNMPv1. Net-SNMP presets -1, its default error-status, in every PDU.
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

/// Takes ownership of request: Net-SNMP frees it in every case.
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
    // The request still exists: Net-SNMP keeps it in the session's list for resends, and nothing
    // has run since that could remove it.
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
