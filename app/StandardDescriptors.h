#pragma once

/// Opens the null device for each of the descriptors 0 to 2 that the process was started without.
/// Otherwise the next files and sockets would get these numbers, and the document and the messages
/// be written into them. The first act of the process, before any other thread.
void openMissingStandardDescriptors();
