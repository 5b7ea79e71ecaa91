#include "tests/support/Guards.h"

#include <net-snmp/net-snmp-config.h>

#include <net-snmp/net-snmp-includes.h>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <system_error>
#include <utility>

namespace TestSupport {

namespace {

constexpr const char* applicationName = "snmpdiscovery-tests";

void setVariable(const std::string& name, const std::optional<std::string>& value)
{
    // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread runs, see the header
    const int result = value ? setenv(name.c_str(), value->c_str(), 1) : unsetenv(name.c_str());
    if (result != 0) {
        throw std::system_error(errno, std::generic_category(), name);
    }
}

std::optional<std::string> variable(const std::string& name)
{
    // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread runs, see the header
    const char* const value = std::getenv(name.c_str());
    return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

std::filesystem::path makeTemporaryDirectory()
{
    std::string pattern =
        (std::filesystem::temp_directory_path() / "snmpdiscovery-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
        throw std::system_error(errno, std::generic_category(), pattern);
    }
    return pattern;
}

} // namespace

EnvironmentGuard::EnvironmentGuard(std::string name, const std::optional<std::string>& value)
    : m_name(std::move(name)), m_former(variable(m_name))
{
    setVariable(m_name, value);
}

EnvironmentGuard::~EnvironmentGuard()
{
    setVariable(m_name, m_former);
}

TemporaryDirectory::TemporaryDirectory() : m_path(makeTemporaryDirectory()) {}

TemporaryDirectory::~TemporaryDirectory()
{
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

DescriptorLimit::DescriptorLimit(rlim_t limit)
{
    if (getrlimit(RLIMIT_NOFILE, &m_former) != 0) {
        throw std::system_error(errno, std::generic_category(), "getrlimit");
    }
    const rlimit wanted = {limit, m_former.rlim_max};
    if (setrlimit(RLIMIT_NOFILE, &wanted) != 0) {
        throw std::system_error(errno, std::generic_category(), "setrlimit");
    }
}

DescriptorLimit::~DescriptorLimit()
{
    setrlimit(RLIMIT_NOFILE, &m_former);
}

OccupiedDescriptors::OccupiedDescriptors(int first, int more)
    : m_limit(static_cast<rlim_t>(first) + static_cast<rlim_t>(more))
{
    int descriptor = open("/dev/null", O_RDONLY | O_CLOEXEC);
    while (descriptor >= 0 && descriptor < first) {
        m_descriptors.push_back(descriptor);
        descriptor = open("/dev/null", O_RDONLY | O_CLOEXEC);
    }
    if (descriptor < 0) {
        throw std::system_error(errno, std::generic_category(), "/dev/null");
    }
    close(descriptor);
}

OccupiedDescriptors::~OccupiedDescriptors()
{
    for (const int descriptor : m_descriptors) {
        close(descriptor);
    }
}

SNMPEnvironment::SNMPEnvironment()
{
    const std::string directory = m_directory.path().string();
    m_variables.emplace_back("HOME", directory);
    m_variables.emplace_back("SNMPCONFPATH", directory);
    m_variables.emplace_back("SNMP_PERSISTENT_DIR", directory);
    for (const char* name : {"SNMP_PERSISTENT_FILE", "MIBDIRS", "MIBS", "MIBFILES", "PREFIX"}) {
        m_variables.emplace_back(name, std::nullopt);
    }
}

NetSNMPLibrary::NetSNMPLibrary(const std::string& mibDirectory, const std::string& modules)
    : m_mibs("MIBS", modules)
{
    netsnmp_set_mib_directory(mibDirectory.c_str());
    init_snmp(applicationName);
}

NetSNMPLibrary::~NetSNMPLibrary()
{
    snmp_shutdown(applicationName);
}

} // namespace TestSupport
