#pragma once

#include "inventory/Address.h"

#include <optional>
#include <string>
#include <vector>

namespace inventory {

/// A row of prtMarkerSuppliesTable (RFC 3805), as far as the agent tells it.
struct Supply
{
    std::optional<std::string> name;
    std::optional<std::string> type;   ///< label, such as "toner"
    std::optional<std::string> kind;   ///< label of the class, such as "supplyThatIsConsumed"
    std::optional<std::string> unit;   ///< label, such as "percent"
    std::optional<long long> level;    ///< in units; -1 no restriction, -2 unknown, -3 some left
    std::optional<long long> capacity; ///< in units; -1 no restriction, -2 unknown

    /// The level in percent of the capacity, rounded half up, at most 100. Nothing unless the level
    /// is at least 0 and the capacity more than 0.
    std::optional<int> percent() const;
    /// Whether it fills up with waste instead of being used up.
    bool isReceptacle() const { return kind == "receptacleThatIsFilled"; }
};

/// An entry of the report. What the agent does not tell is absent. Texts are valid UTF-8, never
/// empty, and otherwise as hostile as their agents.
struct Agent
{
    explicit Agent(Address where) : address(where) {}

    Address address;
    std::optional<bool> answers; ///< absent: not asked
    std::optional<std::string> name;
    std::optional<std::string> description;
    std::optional<std::string> location;
    std::optional<std::string> contact;
    std::optional<std::string> objectID; ///< decimal numbers joined by dots
    std::optional<long long> uptime;     ///< hundredths of a second
    std::optional<bool> printer;         ///< absent: not asked, or it fell silent before it told
    std::optional<std::string> model;
    std::optional<std::string> serial;
    std::optional<std::string> status; ///< label of hrPrinterStatus
    std::optional<long long> pages;
    std::vector<Supply> supplies;

    bool isPrinter() const { return printer == true; }
    /// The lowest percentage of its supplies; receptacles do not count.
    std::optional<int> lowestSupply() const;
};

} // namespace inventory
