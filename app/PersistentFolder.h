#pragma once

#include <string>

/// The folder in which Net-SNMP is to keep persistent data: native form, ending with a separator;
/// empty for none, and Net-SNMP then keeps its own default.
///
/// Net-SNMP reads configuration and further files from the folder, and saves its state there. A
/// line of configuration ("logOption") makes it create a file, a FIFO makes it wait for ever, and a
/// link sends what it saves elsewhere. Whoever can write to the folder therefore acts with the
/// user's rights.
///
/// `choice` is the folder that the user names; it is used as given. If it is empty, the folder is
/// SNMPDiscoveryApp/snmp-persist in the temporary directory, where another user may have been
/// first. So the parent, SNMPDiscoveryApp, is made here with mode 0700, unless it is there: nobody
/// else can create or rename anything in an own, closed directory. Then both are judged. Each must
/// be a directory (no link) of the effective user, closed to group and others; snmp-persist may
/// also be absent, and is left to Net-SNMP to make. The result is empty if either is anything else,
/// or if the parent cannot be made.
///
/// The temporary directory itself must be one in which nobody can rename or remove another user's
/// entries: sticky, as /tmp is, or closed.
std::string persistentFolder(const std::string& choice);
