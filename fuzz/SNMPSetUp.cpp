#include "fuzz/SNMPSetUp.h"

#include "snmp/SNMPSession.h"

#include <net-snmp/net-snmp-config.h>

#include <net-snmp/net-snmp-includes.h>

#include <cstdlib>

void fuzzing::setUpSNMP(const std::string& mibs, const std::string& module)
{
    // Before there is another thread.
    setenv("SNMPCONFPATH", "/nonexistent", 1);        // NOLINT(concurrency-mt-unsafe)
    setenv("SNMP_PERSISTENT_DIR", "/nonexistent", 1); // NOLINT(concurrency-mt-unsafe)
    netsnmp_register_loghandler(NETSNMP_LOGHANDLER_NONE, LOG_DEBUG);
    netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DONT_PERSIST_STATE, 1);
    UVARNETSNMP::SNMPSession::Initialize("Fuzz", "", mibs, module);
}
