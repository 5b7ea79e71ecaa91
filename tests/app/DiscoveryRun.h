#pragma once

#include "tests/app/FakeNetwork.h"
#include "tests/app/TestApp.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

/// A whole run without interfaces, with a library that is set up and torn down without fail; what a
/// test does not change.
class DiscoveryRun : public testing::Test
{
protected:
    DiscoveryRun()
    {
        network.list = [] { return std::vector<Poco::Net::NetworkInterface>{}; };
        network.initialize = [](auto&&...) { return true; };
        network.terminate = [] {};
    }

    std::size_t countOf(const std::string& call) const
    {
        const std::vector<std::string> calls = network.calls();
        return static_cast<std::size_t>(std::count(calls.begin(), calls.end(), call));
    }

    FakeNetwork network;
    const CapturedOutput output;
    Poco::AutoPtr<TestApp> application{new TestApp};
};
