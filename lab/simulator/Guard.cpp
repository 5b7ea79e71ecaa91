#include "lab/simulator/Guard.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <netinet/in.h>
#include <sys/stat.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <sstream>

namespace Simulator {

namespace {

/// The namespace of a process as the lab writes it, empty when the caller may not look.
std::string identity(const char* path)
{
    struct stat status = {};
    if (stat(path, &status) != 0) {
        return {};
    }
    return std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino);
}

std::string variable(const char* name)
{
    const char* const value = std::getenv(name); // NOLINT(concurrency-mt-unsafe): one thread
    return value == nullptr ? "" : value;
}

bool allowed(const sockaddr& address)
{
    if (address.sa_family == AF_INET) {
        sockaddr_in found = {};
        std::memcpy(&found, &address, sizeof found);
        const std::uint32_t number = ntohl(found.sin_addr.s_addr);
        return number >> 24 == 127 || isDocumentationAddress(number);
    }
    if (address.sa_family == AF_INET6) {
        sockaddr_in6 found = {};
        std::memcpy(&found, &address, sizeof found);
        const unsigned char* const octets = found.sin6_addr.s6_addr;
        const bool documentation =
            octets[0] == 0x20 && octets[1] == 0x01 && octets[2] == 0x0d && octets[3] == 0xb8;
        return documentation || IN6_IS_ADDR_LOOPBACK(&found.sin6_addr) ||
               IN6_IS_ADDR_LINKLOCAL(&found.sin6_addr);
    }
    return true; // a hardware address
}

bool onlyDocumentationAddresses()
{
    ifaddrs* list = nullptr;
    if (getifaddrs(&list) != 0) {
        return false;
    }
    const std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> owner(list, &freeifaddrs);
    for (const ifaddrs* each = list; each != nullptr; each = each->ifa_next) {
        if (each->ifa_addr != nullptr && !allowed(*each->ifa_addr)) {
            return false;
        }
    }
    return true;
}

/// Also true when the routes cannot be read.
bool hasDefaultRoute()
{
    std::ifstream routes("/proc/self/net/route");
    std::string line;
    if (!std::getline(routes, line)) {
        return true;
    }
    while (std::getline(routes, line)) {
        std::istringstream fields(line);
        std::string interface;
        std::string destination;
        fields >> interface >> destination;
        if (destination == "00000000") {
            return true;
        }
    }
    return false;
}

} // namespace

bool isDocumentationAddress(std::uint32_t address)
{
    return address >> 8 == 0xc00002 || address >> 8 == 0xc63364 || address >> 8 == 0xcb0071 ||
           address >> 17 == 0xc6120000U >> 17;
}

std::string refusal()
{
    const std::string own = identity("/proc/self/ns/net");
    const std::string first = identity("/proc/1/ns/net");
    if (variable("SNMP_LAB").empty()) {
        return "SNMP_LAB is not set, so this is not the lab";
    }
    if (own.empty() || variable("SNMP_LAB_NAMESPACE") != own) {
        return "SNMP_LAB_NAMESPACE names another namespace";
    }
    if (first.empty() || first == own) {
        return "this is the namespace of the machine's first process, or that is hidden";
    }
    if (!onlyDocumentationAddresses()) {
        return "an address here is no documentation address";
    }
    if (hasDefaultRoute()) {
        return "a default route leads out of here";
    }
    return {};
}

} // namespace Simulator
