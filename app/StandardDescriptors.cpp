#include "app/StandardDescriptors.h"

#include <fcntl.h>
#include <unistd.h>

void openMissingStandardDescriptors()
{
    // A new descriptor gets the least number that is free, so the first beyond is one too many.
    int descriptor = open("/dev/null", O_RDWR);
    while (descriptor >= 0 && descriptor <= STDERR_FILENO) {
        descriptor = open("/dev/null", O_RDWR);
    }
    if (descriptor > STDERR_FILENO) {
        close(descriptor);
    }
}
