#pragma once

#include <string>

namespace fuzzing {

/// Sets Net-SNMP up for the process, apart from the host: it reads no file but the modules that
/// `module` in the folder `mibs` needs, writes none, and says nothing. Once a process.
void setUpSNMP(const std::string& mibs, const std::string& module);

} // namespace fuzzing
