#include "inventory/Asking.h"

#include "inventory/Inquiry.h"
#include "inventory/Utf8.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace inventory {

namespace {

constexpr std::size_t mostRows = 200;

// SNMPv2-MIB (RFC 3418), scalars of the system group.
const Name sysDescr = {1, 3, 6, 1, 2, 1, 1, 1};
const Name sysObjectID = {1, 3, 6, 1, 2, 1, 1, 2};
const Name sysUpTime = {1, 3, 6, 1, 2, 1, 1, 3};
const Name sysContact = {1, 3, 6, 1, 2, 1, 1, 4};
const Name sysName = {1, 3, 6, 1, 2, 1, 1, 5};
const Name sysLocation = {1, 3, 6, 1, 2, 1, 1, 6};
// HOST-RESOURCES-MIB (RFC 2790), columns.
const Name hrDeviceDescr = {1, 3, 6, 1, 2, 1, 25, 3, 2, 1, 3};
const Name hrPrinterStatus = {1, 3, 6, 1, 2, 1, 25, 3, 5, 1, 1};
// Printer-MIB (RFC 3805): the row of prtGeneralTable, then columns.
const Name prtGeneralEntry = {1, 3, 6, 1, 2, 1, 43, 5, 1, 1};
const Name prtGeneralSerialNumber = {1, 3, 6, 1, 2, 1, 43, 5, 1, 1, 17};
const Name prtMarkerLifeCount = {1, 3, 6, 1, 2, 1, 43, 10, 2, 1, 4};
const Name prtMarkerSuppliesEntry = {1, 3, 6, 1, 2, 1, 43, 11, 1, 1};

bool isBelow(const Name& name, const Name& root)
{
    return name.size() > root.size() && std::equal(root.begin(), root.end(), name.begin());
}

Name with(Name name, unsigned long last)
{
    name.push_back(last);
    return name;
}

std::optional<std::string> text(const std::optional<Binding>& binding)
{
    const auto* const sent = binding ? std::get_if<std::string>(&binding->value) : nullptr;
    return sent == nullptr ? std::nullopt : textFromAgent(*sent);
}

const Number* number(const std::optional<Binding>& binding)
{
    return binding ? std::get_if<Number>(&binding->value) : nullptr;
}

std::optional<std::string> label(const std::optional<Binding>& binding)
{
    const Number* const found = number(binding);
    if (found == nullptr || found->label.empty()) {
        return {};
    }
    return found->label;
}

/// Of the range that SNMP's 32-bit types have, signed or not.
std::optional<long long> value(const std::optional<Binding>& binding, long long least,
                               long long most)
{
    const Number* const found = number(binding);
    if (found == nullptr || found->value < least || found->value > most) {
        return {};
    }
    return found->value;
}

std::optional<long long> counter(const std::optional<Binding>& binding)
{
    return value(binding, 0, std::numeric_limits<std::uint32_t>::max());
}

std::optional<long long> integer(const std::optional<Binding>& binding)
{
    return value(binding, std::numeric_limits<std::int32_t>::min(),
                 std::numeric_limits<std::int32_t>::max());
}

std::optional<std::string> identifier(const std::optional<Binding>& binding)
{
    const auto* const name = binding ? std::get_if<Name>(&binding->value) : nullptr;
    if (name == nullptr || name->empty()) {
        return {};
    }
    std::string dotted;
    for (const unsigned long each : *name) {
        dotted += dotted.empty() ? "" : ".";
        dotted += std::to_string(each);
    }
    return dotted;
}

/// Drops what is not the object `name` itself.
std::optional<Binding> exactly(const std::optional<Binding>& binding, const Name& name)
{
    return binding && binding->name == name ? binding : std::nullopt;
}

/// Drops what is not in the column.
std::optional<Binding> firstOf(const std::optional<Binding>& binding, const Name& column)
{
    return binding && isBelow(binding->name, column) ? binding : std::nullopt;
}

void askWho(Inquiry& inquiry, Agent& agent)
{
    const std::vector<Name> names = {sysDescr, sysObjectID, sysUpTime,      sysContact,
                                     sysName,  sysLocation, prtGeneralEntry};
    Found found = inquiry.following(names);
    for (std::size_t i = 0; i < 6; ++i) {
        found[i] = exactly(found[i], with(names[i], 0));
    }
    agent.description = text(found[0]);
    agent.objectID = identifier(found[1]);
    agent.uptime = counter(found[2]);
    agent.contact = text(found[3]);
    agent.name = text(found[4]);
    agent.location = text(found[5]);
    // A row's name has a column and an index after the entry's.
    const bool row = found[6] && isBelow(found[6]->name, prtGeneralEntry) &&
                     found[6]->name.size() > prtGeneralEntry.size() + 1;
    if (row || !inquiry.silent()) {
        agent.printer = row;
    }
}

void askPrinter(Inquiry& inquiry, Agent& agent)
{
    const std::vector<Name> names = {with(hrDeviceDescr, 0), prtGeneralSerialNumber,
                                     hrPrinterStatus, prtMarkerLifeCount};
    const Found found = inquiry.following(names);
    agent.model = text(exactly(found[0], with(hrDeviceDescr, 1)));
    agent.serial = text(firstOf(found[1], prtGeneralSerialNumber));
    agent.status = label(firstOf(found[2], hrPrinterStatus));
    agent.pages = counter(firstOf(found[3], prtMarkerLifeCount));
}

/// Walks the columns side by side. An agent may leave out cells: each row takes the columns that
/// have got to its index, and the others wait.
void askSupplies(Inquiry& inquiry, Agent& agent)
{
    enum Cell : std::size_t
    {
        kind,
        type,
        description,
        unit,
        capacity,
        level,
        cells
    };
    std::vector<Name> columns;
    for (unsigned long column = 4; column < 4 + cells; ++column) {
        columns.push_back(with(prtMarkerSuppliesEntry, column));
    }
    std::vector<Name> at = columns;
    Found ahead(cells);
    std::vector<bool> open(cells, true);
    for (std::size_t row = 0; row < mostRows; ++row) {
        std::vector<Name> names;
        std::vector<std::size_t> asked;
        for (std::size_t cell = 0; cell < cells; ++cell) {
            if (open[cell] && !ahead[cell]) {
                names.push_back(at[cell]);
                asked.push_back(cell);
            }
        }
        const Found found = inquiry.following(names);
        for (std::size_t i = 0; i < asked.size(); ++i) {
            ahead[asked[i]] = firstOf(found[i], columns[asked[i]]);
            open[asked[i]] = ahead[asked[i]].has_value();
        }
        std::optional<Name> index;
        std::vector<Name> indices(cells);
        for (std::size_t cell = 0; cell < cells; ++cell) {
            if (ahead[cell]) {
                const auto from = static_cast<std::ptrdiff_t>(columns[cell].size());
                indices[cell].assign(ahead[cell]->name.begin() + from, ahead[cell]->name.end());
                index = index ? std::min(*index, indices[cell]) : indices[cell];
            }
        }
        if (!index) {
            return;
        }
        Found cell(cells);
        for (std::size_t i = 0; i < cells; ++i) {
            if (ahead[i] && indices[i] == *index) {
                at[i] = ahead[i]->name;
                cell[i].swap(ahead[i]);
            }
        }
        agent.supplies.push_back({text(cell[description]), label(cell[type]), label(cell[kind]),
                                  label(cell[unit]), integer(cell[level]),
                                  integer(cell[capacity])});
        if (inquiry.silent()) {
            return;
        }
    }
}

} // namespace

void ask(Peer& peer, Agent& agent)
{
    Inquiry inquiry(peer);
    askWho(inquiry, agent);
    if (agent.isPrinter() && !inquiry.silent()) {
        askPrinter(inquiry, agent);
    }
    if (agent.isPrinter() && !inquiry.silent()) {
        askSupplies(inquiry, agent);
    }
    agent.answers = peer.heard();
    if (!*agent.answers) {
        agent.printer.reset();
    }
}

} // namespace inventory
