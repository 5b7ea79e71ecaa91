#pragma once

#include "inventory/Agent.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace inventory {

/// Where a table is shown.
struct Screen
{
    std::optional<std::size_t> columns; ///< lines are fitted to so many; absent: not fitted
    bool ascii = false; ///< it does not show UTF-8: everything else than ASCII becomes "?"
};

/// The screen that standard output is, or one without limits if it is no terminal. Sets the
/// process's LC_CTYPE to the user's, or to one with UTF-8, for the widths of characters.
Screen screenOfStandardOutput();

/// Rows of texts under a heading, in columns as wide as their longest text. Where the screen is
/// narrower, the widest columns but the first are shortened, with "…" at the end of what is cut,
/// and then the last ones left out.
/// Control characters, bidirectional controls, and characters that have no width in the process's
/// locale become U+FFFD, so that no escape sequence is left.
std::string toColumns(const std::vector<std::vector<std::string>>& rows, const Screen& screen);

/// The report for people: one line an agent.
std::string toTable(const std::vector<Agent>& agents, const Screen& screen);

} // namespace inventory
