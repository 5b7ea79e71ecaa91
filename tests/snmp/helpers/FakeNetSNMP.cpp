#include "tests/snmp/helpers/FakeNetSNMP.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <stdexcept>

namespace {

FakeNetSNMP* s_current = nullptr;

template <typename Byte>
std::optional<std::string> Copy(const Byte* bytes, size_t length)
{
    if (bytes == nullptr) {
        return std::nullopt;
    }
    return std::string(bytes, bytes + length);
}

} // namespace

FakeNetSNMP::FakeNetSNMP()
{
    if (s_current != nullptr) {
        throw std::logic_error("one fake at a time");
    }
    s_current = this;
    // The first snmp_sess_init of a process sets Net-SNMP up and calls functions that are faked.
    // They would be counted as calls of the code under test, by whichever test comes first.
    netsnmp_session first;
    snmp_sess_init(&first);
    m_calls.clear();
}

FakeNetSNMP::~FakeNetSNMP()
{
    for (const std::string& call : m_calls) {
        EXPECT_EQ(call, "snmp_sess_close") << "not expected";
    }
    EXPECT_EQ(openHandles, 0) << "not closed";
    DropOutstanding();
    s_current = nullptr;
}

FakeNetSNMP& FakeNetSNMP::Current(const char* function)
{
    if (s_current == nullptr) {
        throw std::logic_error(std::string("not expected: ") + function);
    }
    return *s_current;
}

FakeNetSNMP* FakeNetSNMP::CurrentOrNull()
{
    return s_current;
}

FakeNetSNMP& FakeNetSNMP::OfHandle(UVARNETSNMP::SessionHandle handle, const char* function)
{
    FakeNetSNMP& fake = Current(function);
    EXPECT_EQ(handle, reinterpret_cast<UVARNETSNMP::SessionHandle>(&fake.live))
        << function << " with another handle";
    return fake;
}

void* FakeNetSNMP::RealSymbol(const char* name)
{
    void* const real = dlsym(RTLD_NEXT, name);
    if (real == nullptr) {
        throw std::logic_error(std::string("no real ") + name);
    }
    return real;
}

std::vector<std::string> FakeNetSNMP::TakeCalls()
{
    std::vector<std::string> calls;
    calls.swap(m_calls);
    return calls;
}

void FakeNetSNMP::ForgetCalls()
{
    m_calls.clear();
}

void FakeNetSNMP::Record(const std::string& call)
{
    m_calls.push_back(call);
}

void FakeNetSNMP::DropOutstanding()
{
    Real<decltype(snmp_free_pdu)>("snmp_free_pdu")(m_outstanding);
    m_outstanding = nullptr;
}

snmp_pdu* FakeNetSNMP::MakePDU(const std::string& name, int command)
{
    snmp_pdu* const pdu = Real<decltype(snmp_pdu_create)>("snmp_pdu_create")(command);
    Name(pdu, name);
    return pdu;
}

std::string FakeNetSNMP::NameOf(const snmp_pdu* pdu) const
{
    const auto found = m_names.find(pdu);
    return pdu == nullptr ? "null" : found == m_names.end() ? "unknown" : found->second;
}

int FakeNetSNMP::Deliver(int operation, int requestID, snmp_pdu* pdu)
{
    if (live.callback == nullptr) {
        ADD_FAILURE() << "an event, and no callback is set";
        return 0;
    }
    return live.callback(operation, &live, requestID, pdu, live.callback_magic);
}

std::string FakeNetSNMP::Text(const oid* name, size_t length)
{
    std::string text;
    for (size_t i = 0; i < length; ++i) {
        text += (i == 0 ? "" : ".") + std::to_string(name[i]);
    }
    return text.empty() ? "none" : text;
}

std::string FakeNetSNMP::Hex(const std::string& octets)
{
    const char* const digits = "0123456789abcdef";
    std::string text;
    for (const char octet : octets) {
        const auto value = static_cast<unsigned char>(octet);
        text += digits[value / 16];
        text += digits[value % 16];
    }
    return text;
}

void FakeNetSNMP::Open(const netsnmp_session& session)
{
    Template copy;
    copy.raw = session;
    copy.peerName = session.peername == nullptr ? "null" : session.peername;
    copy.community = Copy(session.community, session.community_len);
    copy.contextEngineID = Copy(session.contextEngineID, session.contextEngineIDLen);
    copy.contextName = Copy(session.contextName, session.contextNameLen);
    copy.securityEngineID = Copy(session.securityEngineID, session.securityEngineIDLen);
    copy.securityName = Copy(session.securityName, session.securityNameLen);
    if (session.securityAuthProto != nullptr) {
        copy.authProtocol.assign(session.securityAuthProto,
                                 session.securityAuthProto + session.securityAuthProtoLen);
    }
    if (session.securityPrivProto != nullptr) {
        copy.privProtocol.assign(session.securityPrivProto,
                                 session.securityPrivProto + session.securityPrivProtoLen);
    }
    copy.authKey = *Copy(session.securityAuthKey, session.securityAuthKeyLen);
    copy.privKey = *Copy(session.securityPrivKey, session.securityPrivKeyLen);
    opened.push_back(copy);
}

void FakeNetSNMP::Send(const snmp_pdu& request)
{
    Sent copy = {request.command, request.errstat, request.errindex, {}};
    for (const variable_list* binding = request.variables; binding != nullptr;
         binding = binding->next_variable) {
        copy.bindings.push_back(Text(binding->name, binding->name_length) + " " +
                                std::to_string(binding->type));
    }
    sent.push_back(copy);
}
