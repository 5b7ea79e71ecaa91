#pragma once

#include "tests/support/Guards.h"

#include <net-snmp/net-snmp-config.h>

#include <net-snmp/net-snmp-includes.h>

#include <net-snmp/library/parse.h>

#include <filesystem>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

/// The project's `mibs` folder as Net-SNMP knows it after loading Printer-MIB from there, and from
/// nowhere else: no module, configuration or state of the machine takes part.
///
/// Net-SNMP keeps one tree a process, hence one object a process. For one thread.
class LoadedMibFolder
{
public:
    /// Loads on the first call; the object lives until the process ends.
    static LoadedMibFolder& Get();

    LoadedMibFolder(const LoadedMibFolder&) = delete;
    LoadedMibFolder& operator=(const LoadedMibFolder&) = delete;

    /// Nodes right after loading, in the tree's order; Net-SNMP owns them.
    const std::vector<const tree*>& Nodes() const { return m_nodes; }
    /// The node with this label, or null.
    const tree* Find(const std::string& label) const;

    /// Modules that Net-SNMP found, by name, each with its file.
    const std::map<std::string, std::string>& Found() const { return m_found; }
    /// Those of them that it read, because Printer-MIB imports them, directly or not.
    const std::set<std::string>& Read() const { return m_read; }
    /// Textual conventions of all modules, in the order of reading.
    const std::vector<std::string>& TextualConventions() const { return m_conventions; }
    /// What Net-SNMP logged while loading, notices and worse, with its warnings about MIBs on.
    const std::vector<std::string>& Complaints() const { return m_complaints; }

    /// What Net-SNMP logs during `action`, notices and worse.
    std::vector<std::string> ComplaintsDuring(const std::function<void()>& action);

    /// A directory for files that a test writes.
    const std::filesystem::path& ScratchDirectory() const { return m_environment.directory(); }

    /// The name of the module that `node` belongs to; empty for the roots, which have none.
    static std::string ModuleOf(const tree& node);

private:
    LoadedMibFolder();
    ~LoadedMibFolder();

    void Collect(const tree* node);

    TestSupport::SNMPEnvironment m_environment;
    TestSupport::EnvironmentGuard m_mibs;
    std::vector<std::string> m_logged;
    std::vector<std::string> m_complaints;
    std::vector<const tree*> m_nodes;
    std::map<std::string, std::string> m_found;
    std::set<std::string> m_read;
    std::vector<std::string> m_conventions;
};
