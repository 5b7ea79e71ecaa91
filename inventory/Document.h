#pragma once

#include "inventory/Address.h"
#include "inventory/Agent.h"

#include <string>
#include <vector>

class Value;

namespace inventory {

constexpr std::size_t largestDocument = std::size_t{16} * 1024 * 1024; ///< octets
constexpr std::size_t mostEntries = 65536;

/// The addresses of a document: the discovery tool's, or a JSON report. In order, each once.
/// Members other than "hostname" are ignored.
///
/// `origin` names the document in the text of the Failure that is thrown for all of it when it is
/// no JSON array of objects, is larger or has more entries than the limits above, or when one entry
/// has no valid address. JSON is what Value's reader takes for it.
std::vector<Address> readAddresses(const std::string& document, const std::string& origin);

/// The entries of an earlier report, in order, with what a comparison needs: whether the agent was
/// asked and answered, `name`, `model`, `serial` and `printer`. Of repeated entries the first
/// counts. Members of another type than a report's, and empty texts, are ignored. In texts, what is
/// no UTF-8 becomes U+FFFD. Throws as readAddresses does.
std::vector<Agent> readReport(const std::string& document, const std::string& origin);

/// The content of `file`, or of standard input for "-". Throws Failure when it cannot be read or is
/// larger than a document may be.
std::string readFile(const std::string& file);

} // namespace inventory
