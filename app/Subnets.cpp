#include "app/Subnets.h"

#include <Poco/Net/IPAddress.h>

#include <algorithm>

using Poco::Net::IPAddress;
using Poco::Net::NetworkInterface;

namespace {

bool probeable(const NetworkInterface& interface)
{
    const IPAddress& address = interface.address(0);
    return address.family() == IPAddress::IPv4 && address.isUnicast() && !address.isLoopback();
}

} // namespace

void keepProbeable(std::vector<NetworkInterface>& interfaces)
{
    interfaces.erase(std::remove_if(interfaces.begin(), interfaces.end(),
                                    [](const NetworkInterface& each) { return !probeable(each); }),
                     interfaces.end());
}

std::string broadcastAddress(const NetworkInterface& interface)
{
    IPAddress address = interface.address(0);
    const IPAddress& mask = interface.subnetMask(0);
    address.mask(mask, IPAddress::broadcast());
    return address.toString();
}
