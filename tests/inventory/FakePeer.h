#pragma once

#include "inventory/Asking.h"

#include <algorithm>
#include <functional>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>

/// A peer that answers GETNEXT from a table as an agent of SNMPv1 does: a name without a successor
/// makes the whole request fail, with its index. Fails a test that asks without end.
class FakePeer : public inventory::Peer
{
public:
    using Table = std::map<inventory::Name, decltype(inventory::Binding::value)>;

    explicit FakePeer(Table objects) : table(std::move(objects)) {}

    std::optional<inventory::Answer> next(const std::vector<inventory::Name>& names) override
    {
        if (++requests > 2000) {
            throw std::logic_error("the asking does not end");
        }
        if (requests > silentAfter) {
            return {};
        }
        m_heard = true;
        inventory::Answer answer = {0, 0, {}};
        for (const inventory::Name& name : names) {
            const auto found = table.upper_bound(name);
            if (found == table.end()) {
                return inventory::Answer{
                    2, static_cast<long>(answer.bindings.size()) + 1, {}}; // noSuchName
            }
            answer.bindings.push_back({found->first, found->second});
        }
        return change ? change(names, answer) : answer;
    }
    bool heard() const override { return m_heard; }

    Table table;
    int silentAfter = 1000000; ///< requests that are answered
    int requests = 0;
    std::function<inventory::Answer(const std::vector<inventory::Name>&, inventory::Answer)> change;

private:
    bool m_heard = false;
};
