// The headers that this is compiled with do give the handle of a session a type of its own: else
// the library beside it would be compiled with nothing new.

#include "snmp/SNMPSession.h"

#include <type_traits>

static_assert(std::is_same_v<UVARNETSNMP::SessionHandle, session_list*>);
