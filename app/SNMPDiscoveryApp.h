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

    /// Processes the command line. Hides the framework's function of this name on purpose: a wrong
    /// option throws nothing. It prints the help to standard output and makes `main` return at
    /// once, so that the process ends with EXIT_USAGE as after a document. Arguments that are not
    /// options are ignored. Showing the help can still throw: a `Poco::Exception` if POCO cannot
    /// determine the command's name, as without PATH in the environment.
    void init(int argc, char** argv);

    /// Writes the help text to standard output.
    void displayHelp();

    /// Callback of the option "help": shows the help and stops option processing, so that the
    /// options after it are ignored, wrong ones too. Both arguments are ignored.
    void handleHelp(const std::string& name, const std::string& value);

    /// Stores `def`, of the form name=value, in the configuration. `def` is split at the first "=",
    /// so the value may contain further ones. Without "=" the value is empty. No option of the tool
    /// calls this: it is kept for an option that defines properties.
    void defineProperty(const std::string& def);

    /// A `UVARNETSNMP::ResponseCallback`: adds the sender of a response to the responders of the
    /// application that `context` points to. Does nothing if `context` or `pdu` is null, or if the
    /// response has no sender. `session` is not used.
    ///
    /// `pdu` is never released, on purpose: it stays allocated until the process ends. Only its
    /// variable bindings and community are released, once the sender is known, because a hostile
    /// agent can make them large.
    static void SNMPCallback(UVARNETSNMP::SNMPSession& session, void* context, snmp_pdu* pdu);

    /// Adds an agent's address (dotted-quad text) to the responders, which are a set: an agent that
    /// answers several times is listed once.
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
    /// Returns EXIT_USAGE (64) whenever it returns, also after a successful discovery: the document
    /// on standard output, not the exit code, tells callers that the run succeeded.
    /// A `Poco::Exception` passes through, and the framework ends the process with EXIT_SOFTWARE
    /// (70). Then no document has been written, all workers are joined, and Net-SNMP stays set up
    /// if it was. This can happen after the help too, because the community is read even then, and
    /// POCO cannot expand one that refers to itself.
    int main(const std::vector<std::string>& args) override;

    Poco::Mutex m_mutex;                ///< guards `m_responders` while workers run
    bool m_helpRequested = false;       ///< the help was shown; there is nothing to run
    std::string m_community = "public"; ///< SNMP community of every probe
    std::set<std::string> m_responders; ///< dotted-quad text of every agent that answered

private:
    /// Throws `Poco::OpenFileException` if a folder stands where a configuration file would be.
    /// POCO would read such a `.properties` or `.ini` for ever. (Container programs make such a
    /// folder for a file that they are to mount and do not find.) The framework logs the exception
    /// and ends the run with EXIT_CONFIG (78).
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
