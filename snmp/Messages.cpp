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

/// The same for one message, of which it notes that it came.
int Note(netsnmp_log_handler* handler, int /*priority*/, const char* /*text*/)
{
    *static_cast<bool*>(handler->magic) = true;
    return 1;
}

/// Has all messages handed to the handler. Net-SNMP 5.9.5 takes pri_max, 0 at first, for the
/// greatest priority that a handler is for, as the name says; those before it, for the least. So
/// ask it.
void TakeAll(netsnmp_log_handler* handler)
{
    bool came = false;
    handler->magic = &came;
    handler->handler = &Note;
    snmp_log(LOG_DEBUG, "\n");
    if (!came) {
        handler->pri_max = LOG_DEBUG;
    }
}

} // namespace

void RouteMessages(Writer write, int target) noexcept
{
    netsnmp_log_handler* const handler =
        netsnmp_register_loghandler(NETSNMP_LOGHANDLER_STDERR, LOG_DEBUG);
    if (handler != nullptr) {
        TakeAll(handler);
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
