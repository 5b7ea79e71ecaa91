#pragma once

#include "inventory/Asking.h"

#include <optional>
#include <vector>

namespace inventory {

/// A binding, or nothing, for each name that was asked for.
using Found = std::vector<std::optional<Binding>>;

/// Requests to one peer, until it falls silent. The peer must outlive it.
class Inquiry
{
public:
    explicit Inquiry(Peer& peer) : m_peer(peer) {}

    /// True once a request went unanswered. No further one is sent then.
    bool silent() const { return m_silent; }

    /// For each of `names` the binding that follows it; nothing where there is none, none that
    /// ascends, or the peer fell silent before.
    Found following(const std::vector<Name>& names);

private:
    std::optional<Answer> request(const std::vector<Name>& names,
                                  const std::vector<std::size_t>& wanted);
    void oneByOne(const std::vector<Name>& names, const std::vector<std::size_t>& wanted,
                  Found& found);

    Peer& m_peer;
    bool m_silent = false;
};

} // namespace inventory
