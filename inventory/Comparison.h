#pragma once

#include "inventory/Agent.h"
#include "inventory/TableFormat.h"

#include <optional>
#include <string>
#include <vector>

namespace inventory {

/// A member of an agent that has another value than before; absent where it was or is not told.
struct Change
{
    std::string member; ///< "name", "model", "serial" or "printer"
    std::optional<std::string> before;
    std::optional<std::string> now; ///< flags as "true" and "false"
};

struct ChangedAgent
{
    Address address;
    std::vector<Change> changes; ///< at least one
};

/// What is different between two reports, each list in order of address.
struct Comparison
{
    std::vector<Agent> appeared;
    std::vector<Agent> vanished; ///< as they were
    std::vector<ChangedAgent> changed;

    bool isEmpty() const { return appeared.empty() && vanished.empty() && changed.empty(); }
};

/// Compares two reports in order of address. An agent that is silent now, or that one of the
/// reports did not ask, is compared by its address alone.
///
/// `onlyPrinters` leaves out, on both sides, what is no printer. An agent of which one side cannot
/// tell, as it is silent now, was not asked, or fell silent before it told, has neither appeared
/// nor vanished: a printer that is off is still listed.
Comparison compare(const std::vector<Agent>& before, const std::vector<Agent>& now,
                   bool onlyPrinters);

/// {"appeared":[…],"vanished":[…],"changed":[…]}, with hostname, name, model, serial and printer of
/// each agent, as far as they are told.
std::string toJSON(const Comparison& comparison);

/// One line for each agent that appeared or vanished, and for each change.
std::string toTable(const Comparison& comparison, const Screen& screen);

} // namespace inventory
