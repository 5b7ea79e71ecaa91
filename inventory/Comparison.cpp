#include "inventory/Comparison.h"

#include "inventory/JSONFormat.h"
#include "value/Value.h"

#include <algorithm>

namespace inventory {

namespace {

std::optional<std::string> flagText(const std::optional<bool>& flag)
{
    if (!flag) {
        return {};
    }
    return *flag ? "true" : "false";
}

/// Whether nothing but the address of the two can be compared.
bool byAddressAlone(const Agent& before, const Agent& now)
{
    return !before.answers || !now.answers.value_or(false);
}

/// Whether both sides know if it is a printer.
bool bothTellKind(const Agent& before, const Agent& now)
{
    return !byAddressAlone(before, now) && before.printer && now.printer;
}

std::vector<Change> changesOf(const Agent& before, const Agent& now)
{
    std::vector<Change> changes;
    const auto add = [&changes](const char* member, const std::optional<std::string>& old,
                                const std::optional<std::string>& current) {
        if (old != current) {
            changes.push_back({member, old, current});
        }
    };
    if (!byAddressAlone(before, now)) {
        add("name", before.name, now.name);
        add("model", before.model, now.model);
        add("serial", before.serial, now.serial);
        add("printer", flagText(before.printer), flagText(now.printer));
    }
    return changes;
}

Value nullableText(const std::string& member, const std::string& text)
{
    return member == "printer" ? Value(text == "true") : Value(text);
}

Value changeValue(const Change& change)
{
    Value::Hash members;
    if (change.before) {
        members.emplace("old", nullableText(change.member, *change.before));
    }
    if (change.now) {
        members.emplace("new", nullableText(change.member, *change.now));
    }
    return Value(std::move(members));
}

Value agentValue(const Agent& agent)
{
    Value::Hash members;
    members.emplace("hostname", Value(agent.address.text()));
    const auto put = [&members](const char* key, const std::optional<std::string>& text) {
        if (text) {
            members.emplace(key, Value(*text));
        }
    };
    put("name", agent.name);
    put("model", agent.model);
    put("serial", agent.serial);
    if (agent.printer) {
        members.emplace("printer", Value(*agent.printer));
    }
    return Value(std::move(members));
}

Value agentsValue(const std::vector<Agent>& agents)
{
    Value::Array array;
    for (const Agent& agent : agents) {
        array.push_back(agentValue(agent));
    }
    return Value(std::move(array));
}

} // namespace

Comparison compare(const std::vector<Agent>& before, const std::vector<Agent>& now,
                   bool onlyPrinters)
{
    Comparison comparison;
    const auto wanted = [onlyPrinters](const Agent& agent) {
        return !onlyPrinters || agent.isPrinter();
    };
    auto old = before.begin();
    auto current = now.begin();
    while (old != before.end() || current != now.end()) {
        if (current == now.end() || (old != before.end() && old->address < current->address)) {
            if (wanted(*old)) {
                comparison.vanished.push_back(*old);
            }
            ++old;
        } else if (old == before.end() || current->address < old->address) {
            if (wanted(*current)) {
                comparison.appeared.push_back(*current);
            }
            ++current;
        } else {
            if (onlyPrinters && !bothTellKind(*old, *current)) {
                // Nothing but the address can be compared, and that is on both sides.
            } else if (wanted(*old) != wanted(*current)) {
                if (wanted(*current)) {
                    comparison.appeared.push_back(*current);
                } else {
                    comparison.vanished.push_back(*old);
                }
            } else if (wanted(*old)) {
                std::vector<Change> changes = changesOf(*old, *current);
                if (!changes.empty()) {
                    comparison.changed.push_back({current->address, std::move(changes)});
                }
            }
            ++old;
            ++current;
        }
    }
    return comparison;
}

std::string toJSON(const Comparison& comparison)
{
    Value::Array changed;
    for (const ChangedAgent& agent : comparison.changed) {
        Value::Hash members;
        members.emplace("hostname", Value(agent.address.text()));
        for (const Change& change : agent.changes) {
            members.emplace(change.member, changeValue(change));
        }
        changed.emplace_back(std::move(members));
    }
    Value::Hash members;
    members.emplace("appeared", agentsValue(comparison.appeared));
    members.emplace("vanished", agentsValue(comparison.vanished));
    members.emplace("changed", Value(std::move(changed)));
    return jsonLine(Value(std::move(members)));
}

std::string toTable(const Comparison& comparison, const Screen& screen)
{
    std::vector<std::vector<std::string>> rows = {{"ADDRESS", "CHANGE", "BEFORE", "NOW"}};
    for (const Agent& agent : comparison.appeared) {
        rows.push_back({agent.address.text(), "appeared", "", agent.name.value_or("")});
    }
    for (const Agent& agent : comparison.vanished) {
        rows.push_back({agent.address.text(), "vanished", agent.name.value_or(""), ""});
    }
    for (const ChangedAgent& agent : comparison.changed) {
        for (const Change& change : agent.changes) {
            rows.push_back({agent.address.text(), change.member, change.before.value_or(""),
                            change.now.value_or("")});
        }
    }
    return toColumns(rows, screen);
}

} // namespace inventory
