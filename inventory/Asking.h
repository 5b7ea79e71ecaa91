#pragma once

#include "inventory/Agent.h"

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace inventory {

/// An object identifier as Net-SNMP's numbers; ordered as agents order their objects.
using Name = std::vector<unsigned long>;

/// An integer of any SNMP type, with the label that the MIB modules give it, if they do.
struct Number
{
    long long value;
    std::string label;
};

/// A variable binding of an answer. std::monostate stands for "there is none" (RFC 3416) and for
/// types that nothing here reads. Texts are the bytes as sent.
struct Binding
{
    Name name;
    std::variant<std::monostate, std::string, Number, Name> value;
};

/// A response, of which nothing is checked but that it answers the request.
struct Answer
{
    long errorStatus;
    long errorIndex; ///< from 1; 0 where it points to no binding
    std::vector<Binding> bindings;
};

/// Who is asked. One thread uses a peer.
class Peer
{
public:
    Peer() = default;
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;
    virtual ~Peer() = default;

    /// Sends one GETNEXT for `names`; nothing when the agent is silent, for good.
    virtual std::optional<Answer> next(const std::vector<Name>& names) = 0;
    /// Whether any answer has come.
    virtual bool heard() const = 0;
};

/// Asks `peer` for all that the report tells of it, into `agent`, whose address is set: system
/// group, whether it is a printer, and if so model, serial number, status, life count and supplies.
///
/// Every step is bounded, whatever the peer answers: names that do not ascend end a walk, 200 rows
/// do, and a request is divided at most once.
void ask(Peer& peer, Agent& agent);

} // namespace inventory
