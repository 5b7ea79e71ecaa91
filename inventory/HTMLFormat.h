#pragma once

#include "inventory/Agent.h"

#include <string>
#include <vector>

namespace inventory {

/// The report as one HTML page in one file: no script, and nothing that is loaded from elsewhere,
/// which its Content-Security-Policy forbids as well. Every text is escaped.
std::string toHTML(const std::vector<Agent>& agents);

} // namespace inventory
