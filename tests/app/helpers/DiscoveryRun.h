#pragma once

#include "tests/app/helpers/FakeNetwork.h"
#include "tests/app/helpers/TestApp.h"
#include "tests/support/Guards.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

/// A whole run. Unless a test changes it, there are no interfaces, and the set-up and tear-down of
/// the library succeed. The default persistent folder lies in a temporary directory of the test.
class DiscoveryRun : public testing::Test
{
protected:
    DiscoveryRun()
    {
        network.list = [] { return std::vector<Poco::Net::NetworkInterface>{}; };
        network.initialize = [](auto&&...) { return true; };
        network.terminate = [] {};
    }

    /// One interface in each of `count` subnets of 16 addresses: 198.51.100.1, 198.51.100.17 …
    static std::vector<Poco::Net::NetworkInterface> interfacesInSubnets(std::size_t count)
    {
        std::vector<Poco::Net::NetworkInterface> interfaces;
        interfaces.reserve(count);
        for (std::size_t i = 0; i < count; ++i) {
            const std::string host = std::to_string(16 * i + 1);
            interfaces.push_back(makeInterface({{"198.51.100." + host, "255.255.255.240"}}));
        }
        return interfaces;
    }

    std::size_t countOf(const std::string& call) const
    {
        const std::vector<std::string> calls = network.calls();
        return static_cast<std::size_t>(std::count(calls.begin(), calls.end(), call));
    }

    const TestSupport::TemporaryDirectory temporary;
    const TestSupport::EnvironmentGuard tmpdir{"TMPDIR", temporary.path().string()};
    FakeNetwork network;
    const CapturedOutput output;
    Poco::AutoPtr<TestApp> application{new TestApp};
};
