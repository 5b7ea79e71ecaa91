#include "app/StandardDescriptors.h"

#include <fcntl.h>
#include <unistd.h>

void openMissingStandardDescriptors()
{
    // open() gives the lowest free number. The first one above 2 is not needed and closed again.
    int descriptor = open("/dev/null", O_RDWR);
    while (descriptor >= 0 && descriptor <= STDERR_FILENO) {
        descriptor = open("/dev/null", O_RDWR);
    }
    if (descriptor > STDERR_FILENO) {
        close(descriptor);
    }
}
