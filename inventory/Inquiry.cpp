// One GETNEXT for several names, in spite of agents that refuse it whole: those of SNMPv1 for one
// name without a successor, small ones because the answer would be too big.

#include "inventory/Inquiry.h"

#include <algorithm>
#include <numeric>

namespace inventory {

namespace {

constexpr long tooBig = 1; // RFC 3416, error-status

/// Takes the bindings of the names numbered `wanted` that ascend.
void take(const Answer& answer, const std::vector<Name>& names,
          const std::vector<std::size_t>& wanted, Found& found)
{
    for (std::size_t i = 0; i < std::min(wanted.size(), answer.bindings.size()); ++i) {
        const Binding& binding = answer.bindings[i];
        if (names[wanted[i]] < binding.name &&
            !std::holds_alternative<std::monostate>(binding.value)) {
            found[wanted[i]] = binding;
        }
    }
}

} // namespace

Found Inquiry::following(const std::vector<Name>& names)
{
    Found found(names.size());
    std::vector<std::size_t> wanted(names.size());
    std::iota(wanted.begin(), wanted.end(), std::size_t{0});
    while (!wanted.empty() && !m_silent) {
        const std::optional<Answer> answer = request(names, wanted);
        if (!answer) {
            break;
        }
        if (answer->errorStatus == 0) {
            take(*answer, names, wanted, found);
            break;
        }
        // SNMPv1 refuses a whole request for one name that has no successor, and tells which.
        const auto index = static_cast<std::size_t>(answer->errorIndex);
        if (answer->errorStatus != tooBig && index >= 1 && index <= wanted.size()) {
            wanted.erase(wanted.begin() + static_cast<std::ptrdiff_t>(index - 1));
        } else {
            oneByOne(names, wanted, found);
            break;
        }
    }
    return found;
}

std::optional<Answer> Inquiry::request(const std::vector<Name>& names,
                                       const std::vector<std::size_t>& wanted)
{
    std::vector<Name> asked;
    asked.reserve(wanted.size());
    for (const std::size_t each : wanted) {
        asked.push_back(names[each]);
    }
    std::optional<Answer> answer = m_peer.next(asked);
    m_silent = !answer;
    return answer;
}

void Inquiry::oneByOne(const std::vector<Name>& names, const std::vector<std::size_t>& wanted,
                       Found& found)
{
    if (wanted.size() == 1) {
        return;
    }
    for (const std::size_t each : wanted) {
        const std::optional<Answer> answer = request(names, {each});
        if (!answer) {
            return;
        }
        if (answer->errorStatus == 0) {
            take(*answer, names, {each}, found);
        }
    }
}

} // namespace inventory
