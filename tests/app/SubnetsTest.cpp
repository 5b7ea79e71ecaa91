#include "app/Subnets.h"

#include "tests/app/helpers/FakeNetwork.h"

#include <gtest/gtest.h>

using Poco::Net::NetworkInterface;

namespace {

using Addresses = std::vector<std::pair<std::string, std::string>>;

struct Candidate
{
    const char* name;
    Addresses addresses;
    bool kept;
};

class Filter : public testing::TestWithParam<Candidate>
{};

TEST_P(Filter, LooksAtTheFirstAddressAlone)
{
    std::vector<NetworkInterface> interfaces{makeInterface(GetParam().addresses)};
    keepProbeable(interfaces);
    EXPECT_EQ(interfaces.size(), GetParam().kept ? 1U : 0U);
}

const char* const mask24 = "255.255.255.0";
const char* const mask64 = "ffff:ffff:ffff:ffff::";

INSTANTIATE_TEST_SUITE_P(
    Subnets, Filter,
    testing::Values(
        Candidate{"Ipv4", {{"192.0.2.20", mask24}}, true},
        Candidate{"Loopback", {{"127.0.0.1", "255.0.0.0"}}, false},
        Candidate{"LoopbackOtherThanTheUsual", {{"127.1.2.3", "255.0.0.0"}}, false},
        Candidate{"Ipv6", {{"2001:db8::1", mask64}}, false},
        Candidate{"Ipv6BeforeIpv4", {{"2001:db8::1", mask64}, {"192.0.2.20", mask24}}, false},
        Candidate{"Ipv4BeforeIpv6", {{"192.0.2.20", mask24}, {"2001:db8::1", mask64}}, true},
        Candidate{"LoopbackBeforeUsable", {{"127.0.0.1", mask24}, {"192.0.2.20", mask24}}, false},
        Candidate{"UsableBeforeLoopback", {{"192.0.2.20", mask24}, {"127.0.0.1", mask24}}, true},
        Candidate{"Wildcard", {{"0.0.0.0", mask24}}, false},
        Candidate{"LimitedBroadcast", {{"255.255.255.255", mask24}}, false},
        Candidate{"Multicast", {{"224.0.0.1", mask24}}, false},
        Candidate{"LastBeforeMulticast", {{"223.255.255.254", mask24}}, true},
        Candidate{"LinkLocal", {{"169.254.1.1", "255.255.0.0"}}, true}),
    [](const auto& row) { return row.param.name; });

TEST(Subnets, KeptInterfacesStayInOrderWhereverTheDroppedOnesStood)
{
    const auto usable = [](const char* address) { return makeInterface({{address, mask24}}); };
    const auto loopback = [] { return makeInterface({{"127.0.0.1", mask24}}); };
    std::vector<NetworkInterface> interfaces{loopback(), loopback(),          usable("192.0.2.3"),
                                             loopback(), usable("192.0.2.1"), usable("192.0.2.2"),
                                             loopback()};
    keepProbeable(interfaces);

    std::vector<std::string> kept;
    kept.reserve(interfaces.size());
    for (const NetworkInterface& interface : interfaces) {
        kept.push_back(interface.address(0).toString());
    }
    EXPECT_EQ(kept, (std::vector<std::string>{"192.0.2.3", "192.0.2.1", "192.0.2.2"}));
}

TEST(Subnets, TwoInterfacesOnOneSubnetAreBothKept)
{
    std::vector<NetworkInterface> interfaces{makeInterface({{"192.0.2.20", mask24}}),
                                             makeInterface({{"192.0.2.21", mask24}})};
    keepProbeable(interfaces);
    ASSERT_EQ(interfaces.size(), 2U);
    EXPECT_EQ(broadcastAddress(interfaces[0]), broadcastAddress(interfaces[1]));
}

TEST(Subnets, NoInterfacesAreNoMistake)
{
    std::vector<NetworkInterface> interfaces;
    keepProbeable(interfaces);
    EXPECT_TRUE(interfaces.empty());
}

struct Subnet
{
    const char* name;
    const char* address;
    const char* mask;
    const char* broadcast;
};

class Broadcast : public testing::TestWithParam<Subnet>
{};

TEST_P(Broadcast, SetsEveryBitOfTheHostPart)
{
    const Subnet& subnet = GetParam();
    EXPECT_EQ(broadcastAddress(makeInterface({{subnet.address, subnet.mask}})), subnet.broadcast);
}

INSTANTIATE_TEST_SUITE_P(
    Subnets, Broadcast,
    testing::Values(
        Subnet{"Mask24", "192.0.2.20", "255.255.255.0", "192.0.2.255"},
        Subnet{"Mask16", "192.0.2.20", "255.255.0.0", "192.0.255.255"},
        Subnet{"Mask8", "198.51.100.7", "255.0.0.0", "198.255.255.255"},
        Subnet{"Mask25", "192.0.2.20", "255.255.255.128", "192.0.2.127"},
        Subnet{"Mask30", "203.0.113.5", "255.255.255.252", "203.0.113.7"},
        Subnet{"Mask31", "203.0.113.4", "255.255.255.254", "203.0.113.5"},
        Subnet{"Mask32IsTheAddressItself", "203.0.113.5", "255.255.255.255", "203.0.113.5"},
        Subnet{"Mask0IsTheLimitedBroadcast", "203.0.113.5", "0.0.0.0", "255.255.255.255"},
        Subnet{"Mask15", "198.18.1.2", "255.254.0.0", "198.19.255.255"}),
    [](const auto& row) { return row.param.name; });

TEST(Subnets, TheBroadcastAddressIsTheOneOfTheFirstAddress)
{
    EXPECT_EQ(broadcastAddress(makeInterface({{"192.0.2.20", mask24}, {"198.51.100.20", mask24}})),
              "192.0.2.255");
}

} // namespace
