// The trampoline: Net-SNMP has read a response, and the caller's function gets a copy of it.

#include "snmp/SNMPSession.h"

namespace UVARNETSNMP {

int SNMPSession::Callback(int operation, snmp_session* /*session*/, int reqid, snmp_pdu* pdu,
                          void* magic)
{
    const auto* const context = static_cast<const RequestContext*>(magic);
    if (context == nullptr || context->reqid != reqid || pdu == nullptr ||
        operation != NETSNMP_CALLBACK_OP_RECEIVED_MESSAGE || context->callback == nullptr) {
        return 0;
    }
    snmp_pdu* const response = snmp_clone_pdu(pdu);
    if (response != nullptr) {
        context->callback(*context->session, context->userData, response);
    }
    return 0;
}

} // namespace UVARNETSNMP
