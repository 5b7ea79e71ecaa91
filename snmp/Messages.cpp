#include "snmp/Messages.h"

#include <net-snmp/net-snmp-config.h>

#include <net-snmp/net-snmp-includes.h>

#include <syslog.h>

namespace UVARNETSNMP {

namespace {

using Writer = void (*)(int target, const char* text);

/// Net-SNMP's call for each message. Writes only while this is the sole handler: a second one means
/// that the configuration redirects messages.
int Handle(netsnmp_log_handler* handler, int /*priority*/, const char* text)
{
    if (handler->next == nullptr && handler->prev == nullptr) {
        reinterpret_cast<Writer>(handler->magic)(handler->imagic, text);
    }
    return 1;
}

} // namespace

void RouteMessages(Writer write, int target) noexcept
{
    netsnmp_log_handler* const handler =
        netsnmp_register_loghandler(NETSNMP_LOGHANDLER_STDERR, LOG_DEBUG);
    if (handler != nullptr) {
        handler->magic = reinterpret_cast<void*>(write);
        handler->imagic = target;
        handler->handler = &Handle;
    }
}

void DiscardMessages() noexcept
{
    netsnmp_register_loghandler(NETSNMP_LOGHANDLER_NONE, LOG_DEBUG);
}

} // namespace UVARNETSNMP
