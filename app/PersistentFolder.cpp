#include "app/PersistentFolder.h"

#include <Poco/Path.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

using Poco::Path;

namespace {

/// What a path that only this process's user should have created leads to.
enum class Standing
{
    absent,
    own,     ///< a directory of the effective user, closed to group and others
    foreign, ///< anything else, or cannot be determined
};

/// The path without a separator at its end, which would make lstat follow a link.
std::string withoutSeparator(Path folder)
{
    return folder.makeFile().toString();
}

/// `path` must not end with a separator. Links are not followed.
Standing standing(const std::string& path)
{
    struct stat status;
    if (lstat(path.c_str(), &status) != 0) {
        return errno == ENOENT ? Standing::absent : Standing::foreign;
    }
    const bool closed = (status.st_mode & (S_IRWXG | S_IRWXO)) == 0;
    return S_ISDIR(status.st_mode) && status.st_uid == geteuid() && closed ? Standing::own
                                                                           : Standing::foreign;
}

/// Whether nobody else has been able to put anything into `folder`, or will be.
bool isSafe(const Path& folder)
{
    const std::string parent = withoutSeparator(folder.parent());
    // Made before it is checked: otherwise another user could create the parent in between. The
    // result of mkdir does not matter: the check accepts only a directory of our own.
    mkdir(parent.c_str(), S_IRWXU);
    return standing(parent) == Standing::own &&
           standing(withoutSeparator(folder)) != Standing::foreign;
}

} // namespace

std::string persistentFolder(const std::string& choice)
{
    Path folder;
    if (!choice.empty()) {
        folder.parseDirectory(choice);
        return folder.toString();
    }
    folder.parseDirectory(Path::temp());
    folder.pushDirectory("SNMPDiscoveryApp");
    folder.pushDirectory("snmp-persist");
    return isSafe(folder) ? folder.toString() : std::string();
}
