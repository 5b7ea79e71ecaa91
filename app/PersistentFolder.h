#pragma once

#include <string>

/// The folder in which Net-SNMP is to keep persistent data, in native form and ending with a
/// separator. Empty means that Net-SNMP is given no folder and uses its own default.
///
/// Net-SNMP reads configuration and other files from the folder, and saves its state there. A
/// configuration line ("logOption") makes it create a file, a FIFO makes it wait for ever, and a
/// link makes it write elsewhere. So whoever can write to the folder can act with the user's
/// rights.
///
/// `choice` is the folder that the user names; it is used as given. If it is empty, the folder is
/// SNMPDiscoveryApp/snmp-persist in the temporary directory, where another user may have created
/// either first. So this function makes the parent, SNMPDiscoveryApp, with mode 0700 unless it
/// exists, and then checks both. Each must be a directory (no link) that the effective user owns
/// and that is closed to group and others; nobody else can create or rename anything in such a
/// directory. snmp-persist may also be absent: Net-SNMP makes it. The result is empty if either is
/// anything else, or if the parent cannot be made.
///
/// The temporary directory itself must be one in which nobody can rename or remove another user's
/// entries: sticky, as /tmp is, or closed.
std::string persistentFolder(const std::string& choice);
