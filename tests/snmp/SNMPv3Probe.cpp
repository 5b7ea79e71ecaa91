// snmp_v3_probe PERSISTENT_DIR HOST OID [KEY=VALUE]…
//
// Sends one synchronous GET over SNMPv3 with the security parameters KEY=VALUE, and prints the
// outcome as one line. For tests that run an agent in a network namespace of their own:
//
//     response 0 NAME = VALUE       an answer: its error-status and its variable binding
//     no response: REASON           the session opened, the exchange failed; Net-SNMP's reason
//     not open: REASON              Net-SNMP refused the session
//
// The exit code is 0, 1 and 2 in this order, and 64 for a wrong command line. HOST must be a
// numeric loopback or documentation address (RFC 5737, RFC 2544), so that no real network can be
// asked.

#include "snmp/SNMPSession.h"

#include <exception>
#include <initializer_list>
#include <iostream>
#include <map>
#include <string>

namespace {

using UVARNETSNMP::OID;
using UVARNETSNMP::SNMPSecurity;

class Session : public UVARNETSNMP::SNMPSession
{
public:
    using SNMPSession::SNMPSession;

    bool IsOpen() const { return m_sessionPtr != nullptr; }

    std::string Reason()
    {
        char* text = nullptr;
        if (m_sessionHandle != nullptr) {
            snmp_sess_error(m_sessionHandle, nullptr, nullptr, &text);
        } else {
            snmp_error(&m_session, nullptr, nullptr, &text);
        }
        std::string reason = text == nullptr ? "" : text;
        free(text); // NOLINT(cppcoreguidelines-no-malloc): allocated by Net-SNMP
        return reason;
    }
};

bool IsTestAddress(const std::string& host)
{
    for (const std::string prefix :
         {"127.", "192.0.2.", "198.51.100.", "203.0.113.", "198.18.", "198.19."}) {
        if (host.compare(0, prefix.size(), prefix) == 0) {
            return host.find_first_not_of("0123456789.:") == std::string::npos;
        }
    }
    return false;
}

int Probe(const std::string& persistentDir, const std::string& host, const std::string& name,
          const std::map<std::string, std::string>& parameters)
{
    UVARNETSNMP::SNMPSession::Initialize("snmp_v3_probe", persistentDir, persistentDir, "");
    int result = 0;
    {
        Session session(SNMP_VERSION_3, SNMPSecurity(parameters), host, false);
        if (!session.IsOpen()) {
            std::cout << "not open: " << session.Reason() << '\n';
            result = 2;
        } else if (snmp_pdu* const response = session.Get(OID(name.c_str()))) {
            std::cout << "response " << response->errstat;
            if (variable_list* const binding = response->variables) {
                const OID bound(binding->name, binding->name_length, 0);
                std::cout << ' ' << bound.toDottedNotation() << " = " << bound.toValue(binding);
            }
            std::cout << '\n';
            session.ReleasePDU(response);
        } else {
            std::cout << "no response: " << session.Reason() << '\n';
            result = 1;
        }
    }
    UVARNETSNMP::SNMPSession::Terminate();
    return result;
}

} // namespace

int main(int argc, char** argv)
{
    try {
        std::map<std::string, std::string> parameters;
        bool understood = argc >= 4 && IsTestAddress(argv[2]);
        for (int i = 4; i < argc; ++i) {
            const std::string argument = argv[i];
            const size_t equals = argument.find('=');
            understood = understood && equals != std::string::npos;
            if (understood) {
                parameters[argument.substr(0, equals)] = argument.substr(equals + 1);
            }
        }
        if (!understood) {
            std::cerr << "usage: snmp_v3_probe PERSISTENT_DIR LOOPBACK_OR_TEST_ADDRESS OID "
                         "[KEY=VALUE]...\n";
            return 64;
        }
        return Probe(argv[1], argv[2], argv[3], parameters);
    } catch (const std::exception& error) {
        std::cerr << "snmp_v3_probe: " << error.what() << '\n';
        return 64;
    }
}
