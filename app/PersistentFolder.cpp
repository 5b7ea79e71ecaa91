#include "app/PersistentFolder.h"

#include <Poco/Path.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

using Poco::Path;

namespace {

/// What lies in a place where only this process's user should have been.
enum class Standing
{
    absent,
    own,     ///< a directory of the effective user, closed to group and others
    foreign, ///< anything else, or cannot be determined
};

/// The path of a folder as a file's: a separator at its end would make lstat follow a link.
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

/// Whether nobody else can have put anything into `folder`, or can from now on.
bool isSafe(const Path& folder)
{
    const std::string parent = withoutSeparator(folder.parent());
    // First made, then judged: a parent that is judged first could be slipped in before it is made.
    // A failure needs no question of its own: nothing that is not our own passes the judgement.
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
