// Checks the changed headers: without this, the library could be compiled with unchanged ones.

#include "snmp/SNMPSession.h"

#include <type_traits>

static_assert(std::is_same_v<UVARNETSNMP::SessionHandle, session_list*>);
