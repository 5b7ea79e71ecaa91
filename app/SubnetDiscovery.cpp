#include "app/SNMPDiscoveryApp.h"

#include "snmp/OID.h"

#include <Poco/Timespan.h>

using UVARNETSNMP::OID;
using UVARNETSNMP::SNMPSession;

namespace {

constexpr long listening = 5; // seconds, from the request on

} // namespace

SNMPDiscoveryApp::SubnetDiscovery::SubnetDiscovery(SNMPDiscoveryApp& app,
                                                   const std::string& address,
                                                   const std::string& community)
    : m_app(app), m_address(address), m_community(community)
{
    m_thread.start(*this);
}

SNMPDiscoveryApp::SubnetDiscovery::~SubnetDiscovery()
{
    // Join even if the thread has ended. Only the join makes the responders that it added visible
    // to the main thread, which reads them without a lock.
    m_thread.join();
}

void SNMPDiscoveryApp::SubnetDiscovery::run()
{
    const OID sysUpTime("sysUpTime.0");
    SNMPSession session(SNMP_VERSION_1, m_community, m_address, true);
    session.Get(sysUpTime, &SNMPDiscoveryApp::SNMPCallback, &m_app, Poco::Timespan(listening, 0));
}
