#include "inventory/CommandLine.h"
#include "inventory/Ending.h"
#include "inventory/Failure.h"
#include "inventory/Inventory.h"

#include <fcntl.h>
#include <unistd.h>

#include <exception>
#include <iostream>

namespace {

constexpr int noReport = 1;

/// Files and pipes would otherwise get the numbers of standard descriptors that are closed.
void openMissingStandardDescriptors()
{
    int descriptor = 0;
    do {
        descriptor = open("/dev/null", O_RDWR);
    } while (descriptor >= 0 && descriptor <= STDERR_FILENO);
    if (descriptor >= 0) {
        close(descriptor);
    }
}

int fail(const std::exception& reason)
{
    std::cerr << "snmp-inventory: " << inventory::oneLine(reason.what()) << std::endl;
    return noReport;
}

} // namespace

int main(int argc, char** argv)
{
    openMissingStandardDescriptors();
    try {
        const auto read = inventory::readCommandLine(argc, argv);
        if (const auto* const end = std::get_if<inventory::EndAtOnce>(&read)) {
            (end->code == 0 ? std::cout : std::cerr) << end->text << std::flush;
            return end->code;
        }
        inventory::Ending::watch();
        return inventory::run(std::get<inventory::Settings>(read));
    } catch (const std::exception& exception) {
        return fail(exception);
    }
}
