#pragma once

#include "inventory/Agent.h"
#include "value/Value.h"

#include <string>
#include <vector>

namespace inventory {

/// `value`, whose texts are valid UTF-8, as one line of JSON that no terminal takes for anything
/// but text: U+007F to U+009F, of which U+009B begins a terminal sequence, are escaped too.
std::string jsonLine(const Value& value);

/// The report as one line of JSON: docs/inventory.schema.json.
std::string toJSON(const std::vector<Agent>& agents);

/// For Prometheus' file_sd: a target for each agent, with the labels snmp_name, snmp_model,
/// snmp_location and snmp_printer. All values are texts; absent ones are left out.
std::string toPrometheus(const std::vector<Agent>& agents);

/// For Zabbix' low-level discovery: the macros {#ADDRESS}, {#NAME}, {#MODEL} and {#PRINTER}, which
/// is "1" or "0". All values are texts; absent ones are left out.
std::string toZabbix(const std::vector<Agent>& agents);

/// One address a line.
std::string toAddresses(const std::vector<Agent>& agents);

} // namespace inventory
