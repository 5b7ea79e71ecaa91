// scripts/race-hunt runs this under ThreadSanitizer: many threads do what a worker does, against an
// agent on the loopback interface.
//
//     snmp_race_hunt THREADS SECONDS MIBS     0 when every thread of every round had its answer

#include "snmp/SNMPSession.h"
#include "tests/snmp/helpers/LoopbackAgent.h"
#include "tests/snmp/helpers/Wire.h"
#include "tests/support/Guards.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using UVARNETSNMP::OID;
using UVARNETSNMP::SNMPSession;

/// What a worker does with each response, except that the response is released.
void receive(SNMPSession& session, void* answers, snmp_pdu* response)
{
    static_cast<std::atomic<long>*>(answers)->fetch_add(1);
    session.ReleasePDU(response);
}

/// What a worker does: a name, a session, a request, and answers for some time.
void work(const std::string& host, std::atomic<long>& unanswered)
{
    std::atomic<long> answers{0};
    const OID sysUpTime("sysUpTime.0");
    SNMPSession session(SNMP_VERSION_1, "public", host, true);
    session.Get(sysUpTime, &receive, &answers, Poco::Timespan(1, 0));
    if (answers == 0 || sysUpTime.toDottedNotation() != "1.3.6.1.2.1.1.3.0") {
        ++unanswered;
    }
}

/// All threads of a round start at once; returns how many went without an answer.
long round(int number, const std::vector<std::unique_ptr<LoopbackAgent>>& agents)
{
    std::atomic<bool> go{false};
    std::atomic<long> unanswered{0};
    std::vector<std::thread> threads;
    threads.reserve(static_cast<std::size_t>(number));
    for (int i = 0; i < number; ++i) {
        const std::string host = agents[static_cast<std::size_t>(i) % agents.size()]->Host();
        threads.emplace_back([&go, &unanswered, host] {
            while (!go) {
                std::this_thread::yield();
            }
            work(host, unanswered);
        });
    }
    go = true;
    for (std::thread& thread : threads) {
        thread.join();
    }
    return unanswered;
}

} // namespace

int main(int argc, char** argv)
{
    const auto number = static_cast<int>(argc == 4 ? std::strtol(argv[1], nullptr, 10) : 0);
    if (number < 1) {
        std::cerr << "usage: snmp_race_hunt THREADS SECONDS MIBS\n";
        return 2;
    }
    const auto end = Clock::now() + std::chrono::seconds(std::strtol(argv[2], nullptr, 10));
    const TestSupport::SNMPEnvironment environment;
    SNMPSession::Initialize("RaceHunt", "", argv[3], "Printer-MIB");
    // The buffer of an agent's socket has room for some 270 requests.
    std::vector<std::unique_ptr<LoopbackAgent>> agents;
    for (int i = 0; i <= number / 100; ++i) {
        agents.push_back(std::make_unique<LoopbackAgent>(
            [](const LoopbackAgent& self, const std::string& request, std::size_t) {
                self.Reply(Wire::Response(request, 42));
            }));
    }
    long rounds = 0;
    long unanswered = 0;
    do {
        unanswered += round(number, agents);
        ++rounds;
    } while (Clock::now() < end);
    agents.clear();
    SNMPSession::Terminate();
    std::cout << rounds << " rounds of " << number << " threads, " << unanswered
              << " without an answer\n";
    return unanswered == 0 ? 0 : 1;
}
