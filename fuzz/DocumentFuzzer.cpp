#include "fuzz/Fuzzing.h"
#include "inventory/Comparison.h"
#include "inventory/Document.h"
#include "inventory/Failure.h"
#include "inventory/JSONFormat.h"

#include <algorithm>
#include <optional>

// A document that snmp-inventory reads: the discovery tool's, or an earlier report. It comes from a
// process or a file that somebody else wrote.

namespace {

using fuzzing::check;
using inventory::Address;
using inventory::Agent;

/// What `read` gives, or nothing where it refuses the document.
template <typename Entry>
std::optional<std::vector<Entry>> attempt(std::vector<Entry> (*read)(const std::string&,
                                                                     const std::string&),
                                          const std::string& document)
{
    try {
        return read(document, "document");
    } catch (const inventory::Failure& failure) {
        const std::string why = failure.what();
        check(why.rfind("document: ", 0) == 0 && why == inventory::oneLine(why),
              "the failure is one line that names the document", why);
        return {};
    }
}

std::vector<Address> addressesOf(const std::vector<Agent>& agents)
{
    std::vector<Address> addresses;
    addresses.reserve(agents.size());
    for (const Agent& agent : agents) {
        addresses.push_back(agent.address);
    }
    return addresses;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string document(fuzzing::text(data, size));
    const auto addresses = attempt(&inventory::readAddresses, document);
    const auto report = attempt(&inventory::readReport, document);
    check(addresses.has_value() == report.has_value(), "both take it or refuse it", document);
    if (!addresses || !report) {
        return 0;
    }
    const auto ascend = [](Address a, Address b) { return !(a < b); };
    check(std::adjacent_find(addresses->begin(), addresses->end(), ascend) == addresses->end(),
          "the addresses ascend, each once", document);
    check(addressesOf(*report) == *addresses, "both find the same addresses", document);
    for (const Address address : *addresses) {
        const std::optional<Address> again = Address::parse(address.text());
        check(again && *again == address, "an address reads back", address.text());
    }
    check(compare(*report, *report, false).isEmpty(), "a report is no different from itself",
          document);
    const std::string written = toJSON(*report);
    check(inventory::readAddresses(written, "own") == *addresses, "its addresses read back",
          written);
    check(compare(*report, inventory::readReport(written, "own"), false).isEmpty(),
          "what is compared of it reads back", written);
    return 0;
}
