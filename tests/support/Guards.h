#pragma once

#include <sys/resource.h>

#include <filesystem>
#include <list>
#include <optional>
#include <string>
#include <vector>

/// State that a test takes over for a scope and gives back at its end, also when the test fails.
/// Threads: all of it is the process's own state; use it while no other thread runs.
namespace TestSupport {

/// Gives an environment variable another value, or none, and puts the former state back.
class EnvironmentGuard
{
public:
    /// nullopt takes the variable out of the environment.
    EnvironmentGuard(std::string name, const std::optional<std::string>& value);
    ~EnvironmentGuard();
    EnvironmentGuard(const EnvironmentGuard&) = delete;
    EnvironmentGuard& operator=(const EnvironmentGuard&) = delete;

private:
    std::string m_name;
    std::optional<std::string> m_former;
};

/// A new, empty directory under the system's folder for temporary files, removed with all that it
/// holds. Throws std::system_error when it cannot be made.
class TemporaryDirectory
{
public:
    TemporaryDirectory();
    ~TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    const std::filesystem::path& path() const noexcept { return m_path; }

private:
    std::filesystem::path m_path;
};

/// Another limit to the number of descriptors for a scope; 0 lets nothing more be opened.
class DescriptorLimit
{
public:
    /// Throws std::system_error when it may not be set.
    explicit DescriptorLimit(rlim_t limit);
    ~DescriptorLimit();
    DescriptorLimit(const DescriptorLimit&) = delete;
    DescriptorLimit& operator=(const DescriptorLimit&) = delete;

private:
    rlimit m_former = {};
};

/// Keeps descriptors in use, so that those opened while it lives have higher numbers.
class OccupiedDescriptors
{
public:
    /// Occupies all below `first` and sets the limit so that `more` can be opened above them.
    /// Throws std::system_error when that may not be.
    OccupiedDescriptors(int first, int more);
    ~OccupiedDescriptors();
    OccupiedDescriptors(const OccupiedDescriptors&) = delete;
    OccupiedDescriptors& operator=(const OccupiedDescriptors&) = delete;

private:
    DescriptorLimit m_limit;
    std::vector<int> m_descriptors;
};

/// An environment in which Net-SNMP neither reads nor writes a file of the host's: configuration,
/// home and persistent state in a temporary directory, and no variable that names MIBs.
class SNMPEnvironment
{
public:
    SNMPEnvironment();

    /// The directory that holds everything, for a test's own files too.
    const std::filesystem::path& directory() const noexcept { return m_directory.path(); }

private:
    TemporaryDirectory m_directory;
    std::list<EnvironmentGuard> m_variables;
};

/// Net-SNMP in such an environment, set up with modules of one MIB folder and shut down again. At
/// most one lives at a time. For tests of what needs loaded MIBs, not of the set-up itself.
class NetSNMPLibrary
{
public:
    /// `modules` as in the environment variable MIBS: names joined by colons.
    NetSNMPLibrary(const std::string& mibDirectory, const std::string& modules);
    ~NetSNMPLibrary();
    NetSNMPLibrary(const NetSNMPLibrary&) = delete;
    NetSNMPLibrary& operator=(const NetSNMPLibrary&) = delete;

private:
    SNMPEnvironment m_environment;
    EnvironmentGuard m_mibs;
};

} // namespace TestSupport
