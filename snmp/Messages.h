#pragma once

namespace UVARNETSNMP {

// Where Net-SNMP's messages go. Each function is called once, on the main thread, before Net-SNMP
// is set up, and holds until it is shut down. Without memory it changes nothing.

/// Hands each message to `write`, with `target` unchanged. `write` is called on the thread that
/// causes the message, so on several at a time, and the text is valid during the call. Messages go
/// elsewhere if Net-SNMP's configuration says so (logOption, see snmp.conf(5)); logTimestamp has no
/// effect.
void RouteMessages(void (*write)(int target, const char* text), int target) noexcept;

/// Discards the messages. What agents send can cause thousands of them.
void DiscardMessages() noexcept;

} // namespace UVARNETSNMP
