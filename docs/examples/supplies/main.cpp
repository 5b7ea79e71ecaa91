// Prints what a printer tells of its supplies: the columns of prtMarkerSuppliesTable (RFC 3805),
// walked with GETNEXT, enumerations as their labels.
//
// usage: supplies MIB-FOLDER PERSISTENT-FOLDER ADDRESS [COMMUNITY]

#include "snmp/SNMPSession.h"

#include <cstddef>
#include <iostream>
#include <map>
#include <string>
#include <utility>
#include <vector>

using UVARNETSNMP::OID;
using UVARNETSNMP::SNMPSession;

namespace {

using Column = std::map<std::string, std::string>; // value by row: "hrDeviceIndex.suppliesIndex"

constexpr int mostRows = 1000; // no printer has more; an agent that makes rows up must end

/// All values of the column `name`. False if the agent stopped answering.
bool walk(SNMPSession& session, const char* name, Column& column)
{
    const OID base(name);
    OID last(base);
    for (int row = 0; row < mostRows; ++row) {
        snmp_pdu* response = session.GetNext(last);
        if (response == nullptr) {
            return false;
        }
        variable_list* binding = response->variables;
        bool more = false;
        // SNMPv1 tells the end of everything by an error (noSuchName), the end of a column by a
        // name outside of it. An agent whose names do not ascend would never come to an end.
        if (response->errstat == SNMP_ERR_NOERROR && binding != nullptr) {
            const OID found(binding->name, binding->name_length, 0);
            more = base.subnode(found) && snmp_oid_compare(found.oidptr(), found.oidsize(),
                                                           last.oidptr(), last.oidsize()) > 0;
            if (more) {
                OID index(found);
                index.trim(base, 0);
                column[index.toDottedNotation()] = found.toValue(binding);
                last = found;
            }
        }
        session.ReleasePDU(response);
        if (!more) {
            return true;
        }
    }
    return true;
}

int print(const std::string& address, const std::string& community)
{
    const std::vector<std::pair<const char*, const char*>> columns = {
        {"prtMarkerSuppliesDescription", "supply"}, {"prtMarkerSuppliesClass", "class"},
        {"prtMarkerSuppliesType", "type"},          {"prtMarkerSuppliesLevel", "level"},
        {"prtMarkerSuppliesMaxCapacity", "of"},     {"prtMarkerSuppliesSupplyUnit", "unit"}};

    SNMPSession session(SNMP_VERSION_1, community, address, false);
    std::vector<Column> values(columns.size());
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (!walk(session, columns[i].first, values[i])) {
            std::cerr << address << " does not answer\n";
            return 1;
        }
        std::cout << (i == 0 ? "" : "\t") << columns[i].second;
    }
    std::cout << "\n";
    for (const auto& [row, first] : values[0]) {
        std::cout << first;
        for (std::size_t i = 1; i < values.size(); ++i) {
            std::cout << "\t" << values[i][row];
        }
        std::cout << "\n";
    }
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 4 || argc > 5) {
        std::cerr << "usage: supplies MIB-FOLDER PERSISTENT-FOLDER ADDRESS [COMMUNITY]\n";
        return 2;
    }
    // Once a process, before the first session. The name is that of the configuration files that
    // Net-SNMP reads; the modules are looked for in the folder given.
    SNMPSession::Initialize("supplies", argv[2], argv[1], "Printer-MIB");
    const int status = print(argv[3], argc == 5 ? argv[4] : "public");
    SNMPSession::Terminate();
    return status;
}
