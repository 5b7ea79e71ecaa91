#pragma once

#include "snmp/SNMPSession.h"
#include "tests/snmp/helpers/LoopbackAgent.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

// Shared by the tests with the real Net-SNMP. The program sets Net-SNMP up once, without MIB
// modules and without the host's configuration, and shuts it down at its end.

class Session : public UVARNETSNMP::SNMPSession
{
public:
    using SNMPSession::m_initialized;
    using SNMPSession::m_sessionHandle;
    using SNMPSession::m_sessionPtr;
    using SNMPSession::SNMPSession;

    /// One try of 50 ms instead of three of 3 s each.
    void GiveUpSoon()
    {
        m_sessionPtr->timeout = 50000;
        m_sessionPtr->retries = 0;
    }
};

/// The responses of an asynchronous Get.
struct Gathered
{
    ~Gathered();
    /// The TimeTicks of each response, -1 for anything else.
    std::vector<long> Ticks() const;

    UVARNETSNMP::SNMPSession* session = nullptr;
    std::thread::id thread; ///< that called back last
    std::vector<snmp_pdu*> responses;
};

/// The ResponseCallback whose user data is a Gathered.
void Gather(UVARNETSNMP::SNMPSession& session, void* userData, snmp_pdu* response);

/// Answers every request with 42 TimeTicks.
void Answer(const LoopbackAgent& agent, const std::string& request, size_t number);

/// Much longer than an answer on the loopback interface takes.
const Poco::Timespan shortGathering(0, 400000);

class SNMPSessionLoopback : public ::testing::Test
{
protected:
    const UVARNETSNMP::OID m_oid{"1.3.6.1.2.1.1.3.0"};
    Gathered m_gathered;
};
