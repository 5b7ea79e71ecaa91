// The process-wide set-up and tear-down of Net-SNMP.

#include "snmp/SNMPSession.h"

#include <stdlib.h> // setenv is POSIX: <cstdlib> does not promise it

namespace UVARNETSNMP {

std::string SNMPSession::m_SNMPName;

bool SNMPSession::Initialize(const std::string& name, const std::string& persistentDir,
                             const std::string& mibDir, const std::string& mib)
{
    Initialize(name, persistentDir, mibDir, std::vector<std::string>{mib});
    return true;
}

bool SNMPSession::Initialize(const std::string& name, const std::string& persistentDir,
                             const std::string& mibDir, const std::vector<std::string>& mibs)
{
    if (!m_SNMPName.empty()) {
        return true;
    }
    if (!persistentDir.empty()) {
        set_persistent_directory(persistentDir.c_str());
    }
    InitializeMIBS(mibDir, mibs);
    init_snmp(name.c_str());
    // Otherwise opening a session reads a configuration file of its peer, and so changes the
    // process's settings without a lock while other threads use them.
    netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DONT_LOAD_HOST_FILES, 1);
    m_SNMPName = name;
    return true;
}

bool SNMPSession::InitializeMIBS(const std::string& mibDir, const std::vector<std::string>& mibs)
{
    std::string directory = mibDir;
    // Called for its side effect: the first call sets Net-SNMP's default directory.
    netsnmp_get_mib_directory();
    if (!directory.empty() && directory.back() == '/') {
        directory.pop_back();
    }
    netsnmp_set_mib_directory(directory.c_str());

    static const std::string separator = ":";
    if (directory.find(separator) != std::string::npos) {
        // Net-SNMP takes that text for several directories. So the directory is added whole, before
        // init_snmp searches the pieces.
        netsnmp_init_mib_internals();
        add_mibdir(directory.c_str());
    }
    std::string joined;
    for (const std::string& mib : mibs) {
        if (mib.empty()) {
            continue;
        }
        if (!joined.empty()) {
            joined += separator;
        }
        joined += mib;
    }
    if (!joined.empty()) {
        // No other thread reads the environment meanwhile: see Initialize.
        setenv("MIBS", joined.c_str(), 1); // NOLINT(concurrency-mt-unsafe)
    }
    return true;
}

void SNMPSession::AskForReceiveBuffer(int octets)
{
    if (netsnmp_ds_get_int(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_CLIENTRECVBUF) == 0) {
        netsnmp_ds_set_int(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_CLIENTRECVBUF, octets);
    }
}

void SNMPSession::Terminate()
{
    if (!m_SNMPName.empty()) {
        snmp_shutdown(m_SNMPName.c_str());
    }
}

} // namespace UVARNETSNMP
