#include "inventory/SNMPPeer.h"

#include <algorithm>
#include <cstdint>
#include <memory>

namespace inventory {

using UVARNETSNMP::OID;
using UVARNETSNMP::SNMPSecurity;

namespace {

constexpr std::size_t mostBindings = 16;

/// Microseconds until a request is sent again: often enough that a lost datagram or two do no harm,
/// seldom enough that a black hole is sent about ten.
long resendAfter(std::chrono::seconds time)
{
    const std::chrono::microseconds whole = time;
    return static_cast<long>(std::max<std::int64_t>(whole.count() / 10, 500000));
}

Name nameOf(const oid* ids, std::size_t length)
{
    return {ids, ids + length};
}

/// The label of an integer, or nothing: what the library gives then is the number.
std::string labelOf(variable_list& variable)
{
    const OID name(variable.name, variable.name_length, variable.name_length);
    std::string label = name.toValue(&variable);
    const bool isLabel = !label.empty() && ((label.front() >= 'a' && label.front() <= 'z') ||
                                            (label.front() >= 'A' && label.front() <= 'Z'));
    return isLabel ? label : std::string();
}

Binding bindingOf(variable_list& variable)
{
    Binding binding = {nameOf(variable.name, variable.name_length), {}};
    switch (variable.type) {
    case ASN_OCTET_STR:
        binding.value = std::string(variable.val.string, variable.val.string + variable.val_len);
        break;
    case ASN_INTEGER:
        binding.value = Number{*variable.val.integer, labelOf(variable)};
        break;
    case ASN_COUNTER:
    case ASN_GAUGE: // Unsigned32 too
    case ASN_TIMETICKS:
        // Net-SNMP keeps 32 unsigned bits in a long.
        binding.value = Number{static_cast<std::uint32_t>(*variable.val.integer), {}};
        break;
    case ASN_OBJECT_ID:
        binding.value = nameOf(variable.val.objid, variable.val_len / sizeof(oid));
        break;
    default:
        break;
    }
    return binding;
}

} // namespace

SNMPPeer::SNMPPeer(const Credentials& credentials, const std::string& host,
                   std::chrono::seconds time)
    : m_session(credentials.version, SNMPSecurity(credentials.parameters), host, resendAfter(time)),
      m_deadline(std::chrono::steady_clock::now() + time)
{}

std::optional<Answer> SNMPPeer::next(const std::vector<Name>& names)
{
    std::vector<OID> wanted;
    wanted.reserve(names.size());
    for (const Name& name : names) {
        const std::vector<oid> ids(name.begin(), name.end());
        wanted.emplace_back(ids.data(), ids.size(), ids.size());
    }
    snmp_pdu* const response = m_session.Ask(SNMP_MSG_GETNEXT, wanted, m_deadline);
    if (response == nullptr) {
        return {};
    }
    const auto release = [this](snmp_pdu* pdu) { m_session.ReleasePDU(pdu); };
    const std::unique_ptr<snmp_pdu, decltype(release)> owner(response, release);
    return read(*response);
}

Answer SNMPPeer::read(const snmp_pdu& response)
{
    Answer answer = {response.errstat, response.errindex, {}};
    // More than the longest request has names for are an attempt to keep this busy.
    for (variable_list* each = response.variables;
         each != nullptr && answer.bindings.size() < mostBindings; each = each->next_variable) {
        answer.bindings.push_back(bindingOf(*each));
    }
    return answer;
}

} // namespace inventory
