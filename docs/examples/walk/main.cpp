// Prints the values of one column of a table, walked with GETNEXT, with enumerations as labels.
//
// usage: walk MIB-FOLDER PERSISTENT-FOLDER ADDRESS COLUMN

#include "snmp/SNMPSession.h"

#include <iostream>

using UVARNETSNMP::OID;
using UVARNETSNMP::SNMPSession;

namespace {

constexpr int mostRows = 1000; // an agent that makes rows up must end

/// False if the agent stopped answering.
bool walk(SNMPSession& session, const OID& column)
{
    OID last(column);
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
            more = column.subnode(found) && snmp_oid_compare(found.oidptr(), found.oidsize(),
                                                             last.oidptr(), last.oidsize()) > 0;
            if (more) {
                OID index(found);
                index.trim(column, 0);
                std::cout << index.toDottedNotation() << "\t" << found.toValue(binding) << "\n";
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

} // namespace

int main(int argc, char** argv)
{
    if (argc != 5) {
        std::cerr << "usage: walk MIB-FOLDER PERSISTENT-FOLDER ADDRESS COLUMN\n";
        return 2;
    }
    // Once a process, before the first session. The name is that of the configuration files that
    // Net-SNMP reads; the modules are looked for in the folder given.
    SNMPSession::Initialize("walk", argv[2], argv[1], "Printer-MIB");
    bool answered = false;
    {
        SNMPSession session(SNMP_VERSION_1, "public", argv[3], false);
        answered = walk(session, OID(argv[4]));
    }
    SNMPSession::Terminate();
    if (!answered) {
        std::cerr << argv[3] << " does not answer\n";
        return 1;
    }
    return 0;
}
