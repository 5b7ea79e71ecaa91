#include "app/PersistentFolder.h"

#include <net-snmp/net-snmp-config.h>

#include <net-snmp/net-snmp-includes.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <stdlib.h> // setenv is POSIX: <cstdlib> does not promise it

using Poco::Path;

namespace {

/// The path of a folder as a file's: a separator at its end would make lstat follow a link.
std::string withoutSeparator(Path folder)
{
    return folder.makeFile().toString();
}

} // namespace

PersistentFolder::PersistentFolder(const std::string& choice) : m_isDefault(choice.empty())
{
    if (!m_isDefault) {
        m_path.parseDirectory(choice);
        return;
    }
    m_path.parseDirectory(Path::temp());
    m_path.pushDirectory("SNMPDiscoveryApp");
    m_path.pushDirectory("snmp-persist");
    m_standing = standingOfBoth(m_path);
}

std::string PersistentFolder::directory() const
{
    return m_standing == Standing::foreign ? std::string() : m_path.toString();
}

void PersistentFolder::keepUnread() const
{
    if (m_isDefault && m_standing == Standing::absent) {
        // No other thread reads the environment meanwhile: see the class.
        setenv("SNMPCONFPATH", get_configuration_directory(), 0); // NOLINT(concurrency-mt-unsafe)
    }
}

void PersistentFolder::keepUnwritten() const
{
    if (m_isDefault && m_standing != Standing::foreign &&
        standingOfBoth(m_path) == Standing::foreign) {
        netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DONT_PERSIST_STATE, 1);
    }
}

PersistentFolder::Standing PersistentFolder::standing(const std::string& path)
{
    struct stat status;
    if (lstat(path.c_str(), &status) != 0) {
        return errno == ENOENT ? Standing::absent : Standing::foreign;
    }
    const bool closed = (status.st_mode & (S_IRWXG | S_IRWXO)) == 0;
    return S_ISDIR(status.st_mode) && status.st_uid == geteuid() && closed ? Standing::own
                                                                           : Standing::foreign;
}

/// The worse of the folder's standing and its parent's: who owns the parent can replace the folder.
PersistentFolder::Standing PersistentFolder::standingOfBoth(const Path& folder)
{
    const Standing parent = standing(withoutSeparator(folder.parent()));
    return parent == Standing::own ? standing(withoutSeparator(folder)) : parent;
}
