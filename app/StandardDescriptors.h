#pragma once

/// Opens /dev/null for each of the descriptors 0 to 2 that is closed when the process starts.
/// Otherwise the next files and sockets would get these numbers, and the document and messages
/// would be written to them. To be called first in the process, while it has one thread.
void openMissingStandardDescriptors();
