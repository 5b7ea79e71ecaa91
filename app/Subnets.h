#pragma once

#include <Poco/Net/NetworkInterface.h>

#include <string>
#include <vector>

// Which subnets are probed: pure functions over the list of the host's interfaces.

/// Keeps the interfaces whose first address is an IPv4 unicast address and no loopback address, in
/// their order.
///
/// Only the first address of each interface counts, on purpose: an interface whose first address is
/// IPv6 is removed even if it has IPv4 addresses too. On a real host this hides nothing, because
/// POCO lists an entry for each address. Two interfaces on one subnet both stay, and the subnet is
/// probed through both.
void keepProbeable(std::vector<Poco::Net::NetworkInterface>& interfaces);

/// The directed broadcast address of the subnet of the interface's first address, as dotted-quad
/// text: the address with all bits of the host part set. A /32 mask gives the address itself, a /0
/// mask 255.255.255.255; neither is treated specially.
/// The first address must be an IPv4 address.
std::string broadcastAddress(const Poco::Net::NetworkInterface& interface);
