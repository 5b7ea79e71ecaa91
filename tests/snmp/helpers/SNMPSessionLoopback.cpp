#include "tests/snmp/helpers/SNMPSessionLoopback.h"

#include "tests/snmp/helpers/Wire.h"
#include "tests/support/Guards.h"

#include <memory>

using UVARNETSNMP::SNMPSession;

namespace {

using TestSupport::EnvironmentGuard;
using TestSupport::SNMPEnvironment;

class Library : public ::testing::Environment
{
public:
    void SetUp() override
    {
        m_environment = std::make_unique<SNMPEnvironment>();
        m_mibs = std::make_unique<EnvironmentGuard>("MIBS", "");
        const std::string directory = m_environment->directory().string();
        SNMPSession::Initialize("snmp_session_tests", directory, directory, "");
    }
    void TearDown() override
    {
        SNMPSession::Terminate();
        m_mibs.reset();
        m_environment.reset();
    }

private:
    std::unique_ptr<SNMPEnvironment> m_environment;
    std::unique_ptr<EnvironmentGuard> m_mibs;
};

[[maybe_unused]] const ::testing::Environment* const library =
    ::testing::AddGlobalTestEnvironment(new Library);

} // namespace

Gathered::~Gathered()
{
    for (snmp_pdu* const response : responses) {
        snmp_free_pdu(response);
    }
}

std::vector<long> Gathered::Ticks() const
{
    std::vector<long> ticks;
    for (const snmp_pdu* const response : responses) {
        const variable_list* const binding = response->variables;
        ticks.push_back(binding != nullptr && binding->type == ASN_TIMETICKS ? *binding->val.integer
                                                                             : -1);
    }
    return ticks;
}

void Gather(SNMPSession& session, void* userData, snmp_pdu* response)
{
    auto* const gathered = static_cast<Gathered*>(userData);
    gathered->session = &session;
    gathered->thread = std::this_thread::get_id();
    gathered->responses.push_back(response);
}

void Answer(const LoopbackAgent& agent, const std::string& request, size_t /*number*/)
{
    agent.Reply(Wire::Response(request, 42));
}
