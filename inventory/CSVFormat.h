#pragma once

#include "inventory/Agent.h"

#include <string>
#include <vector>

namespace inventory {

/// The report as RFC 4180 has it: a heading, a line for each agent, lines that end with CRLF. The
/// last column is the lowest percentage of the agent's supplies. Texts keep their line ends, inside
/// quotes. A text that a spreadsheet would take for a formula gets an apostrophe in front.
std::string toCSV(const std::vector<Agent>& agents);

} // namespace inventory
