#pragma once

#include <Poco/Path.h>

#include <string>

/// The folder in which Net-SNMP keeps persistent data. Net-SNMP reads configuration from it as
/// well, and a line of configuration can make it open files ("logOption") or follow a link that
/// lies where it saves its state: whoever can write to the folder acts with the user's rights.
///
/// A folder that the user names is used as given. The default lies in the temporary directory under
/// a fixed name, where another user may have been first, so it is used only while nobody else can
/// have put anything into it; otherwise Net-SNMP is given no folder, and keeps its own default.
///
/// Threads: the main thread's, while no other thread runs.
class PersistentFolder
{
public:
    /// What lies in a place where only this process's user should have been.
    enum class Standing
    {
        absent,  ///< nothing
        own,     ///< a directory of the effective user, closed to group and others (0700 or less)
        foreign, ///< anything else: a link, a file, another owner, open to others, not to be told
    };

    /// `choice` is the user's, empty for the default. The default is judged here, once: neither it
    /// nor its parent may be foreign. Nothing is created; that is left to Net-SNMP, which makes
    /// what is missing with mode 0700.
    explicit PersistentFolder(const std::string& choice);

    /// What Net-SNMP is to be handed: native form, ending with a separator; empty for none.
    std::string directory() const;

    /// To be called before Net-SNMP is set up. Net-SNMP first reads the folder and makes it later,
    /// so a default that was absent could be slipped in between. There is nothing to read in a
    /// folder that is yet to be made: this names Net-SNMP the rest of its search path (environment
    /// variable SNMPCONFPATH, see snmp_config(5)), so that it does not look there at all. Does
    /// nothing where that variable is set already, or the folder was there, or is the user's.
    void keepUnread() const;

    /// To be called before Net-SNMP is shut down, which is when it saves its state. Judges the
    /// default again and has nothing saved if it has become foreign: somebody else made it before
    /// Net-SNMP did.
    void keepUnwritten() const;

    /// Judges `path`, which must not end with a separator. Links are not followed.
    static Standing standing(const std::string& path);

private:
    static Standing standingOfBoth(const Poco::Path& folder);

    Poco::Path m_path;
    bool m_isDefault = false;
    Standing m_standing = Standing::own; ///< of a default, when it was judged
};
