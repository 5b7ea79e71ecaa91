#pragma once

#include "snmp/SNMPSession.h"

#include <Poco/Mutex.h>
#include <Poco/Runnable.h>
#include <Poco/Thread.h>
#include <Poco/Util/Application.h>
#include <Poco/Util/OptionSet.h>

#include <set>
#include <string>
#include <vector>

/// The discovery tool as an application of POCO's framework: one object a process, created, run and
/// destroyed by the process entry on the main thread.
///
/// Threads: everything belongs to the main thread except `SNMPCallback` and `AddIP`, which the
/// workers call on their own threads, several at a time.
class SNMPDiscoveryApp : public Poco::Util::Application
{
public:
    class SubnetDiscovery;

    SNMPDiscoveryApp() = default;
    ~SNMPDiscoveryApp() override = default;
    SNMPDiscoveryApp(const SNMPDiscoveryApp&) = delete;
    SNMPDiscoveryApp& operator=(const SNMPDiscoveryApp&) = delete;

    /// Processes the command line. It hides the framework's function of this name on purpose: a
    /// command line that is wrong in any way throws nothing, but prints the help to standard output
    /// and makes `main` return at once, so that it ends like every run with EXIT_USAGE.
    /// Only showing the help can still throw (a `Poco::Exception` where POCO does not know the
    /// command's name, as without PATH in the environment).
    void init(int argc, char** argv);

    /// Writes the help text to standard output.
    void displayHelp();

    /// Callback of the option "help": shows the help and stops option processing, so that the
    /// options behind it are not even looked at. Both arguments are ignored.
    void handleHelp(const std::string& name, const std::string& value);

    /// Stores `def`, of the form name=value, in the configuration. It is split at the first "=", so
    /// a value may contain more of them; without any, the value is empty. No option of the tool
    /// calls it: it is kept for an option that defines properties.
    void defineProperty(const std::string& def);

    /// A `UVARNETSNMP::ResponseCallback`: adds the sender of a response to the responders of the
    /// application that `context` points to. Does nothing if `context` or `pdu` is null, or if the
    /// response does not tell its sender. `session` is not used.
    ///
    /// `pdu` is deliberately never released: it stays allocated until the process ends. Once the
    /// sender has been taken, its variable bindings and community are released: they are what makes
    /// a response large, and an agent that means harm fills them.
    static void SNMPCallback(UVARNETSNMP::SNMPSession& session, void* context, snmp_pdu* pdu);

    /// Adds an agent's address (dotted-quad text) to the responders. One that is there already
    /// stays as it is, so an agent that answers again is still listed once.
    /// Throws `Poco::SystemException` if the lock cannot be taken.
    void AddIP(const std::string& ip);

protected:
    void initialize(Poco::Util::Application& self) override;
    void uninitialize() override;
    void reinitialize(Poco::Util::Application& self) override;
    void defineOptions(Poco::Util::OptionSet& options) override;
    void handleOption(const std::string& name, const std::string& value) override;

    /// One whole discovery run; blocks for about seven seconds and writes the document to standard
    /// output, unless the help was shown. `args` are not used.
    /// Returns EXIT_USAGE (64) on every path, also after a successful discovery: callers tell
    /// success by the document on standard output, not by the exit code.
    /// A `Poco::Exception` passes through; nothing has been written then, the workers are gone,
    /// and Net-SNMP is left set up.
    int main(const std::vector<std::string>& args) override;

    Poco::Mutex m_mutex;                ///< guards `m_responders` while workers run
    bool m_helpRequested = false;       ///< the help was shown; there is nothing to run
    std::string m_community = "public"; ///< SNMP community of every probe
    std::set<std::string> m_responders; ///< dotted-quad text of every agent that answered

private:
    /// Throws `Poco::OpenFileException` if a folder has the name and place of a configuration file
    /// (container programs make one for a file that they are to mount and do not find): POCO's
    /// reader of `.properties` and `.ini` would never come to its end. The framework logs the
    /// exception and ends the run with EXIT_CONFIG (78).
    void refuseFolderAsConfiguration() const;
};

/// The probe of one subnet: sends one GET of sysUpTime.0 to the subnet's broadcast address and
/// listens for answers for five seconds, on a thread of its own.
///
/// Threads: constructed and destroyed on the main thread; `run` belongs to the worker's own.
class SNMPDiscoveryApp::SubnetDiscovery : public Poco::Runnable
{
public:
    /// Starts the thread at once, before the creator has stored the worker anywhere.
    /// `app` must outlive the worker; the two texts are copied.
    /// Throws `Poco::SystemException` if no thread can be started.
    SubnetDiscovery(SNMPDiscoveryApp& app, const std::string& address,
                    const std::string& community);

    /// Blocks until `run` has returned. A failure to join ends the process.
    ~SubnetDiscovery() override;

    SubnetDiscovery(const SubnetDiscovery&) = delete;
    SubnetDiscovery& operator=(const SubnetDiscovery&) = delete;

    /// The probe. A session that does not open or a request that cannot be sent is no error: the
    /// subnet contributes no responder then.
    void run() override;

private:
    SNMPDiscoveryApp& m_app;
    Poco::Thread m_thread;
    std::string m_address; ///< broadcast address of the subnet, dotted-quad
    std::string m_community;
};
