#include "inventory/CommandLine.h"
#include "inventory/Ending.h"
#include "inventory/Failure.h"
#include "inventory/Inventory.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <exception>
#include <iostream>

namespace {

constexpr int noReport = 1;

/// Files and pipes would otherwise get the numbers of standard descriptors that are closed. Each is
/// opened the wrong way round, so that its use fails as that of a closed one.
void openMissingStandardDescriptors()
{
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (fcntl(descriptor, F_GETFD) < 0) {
            // It gets the lowest free number, which is this one.
            open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
}

/// What the parent ignored stays ignored over exec.
void setSignals()
{
    // The tool's end is not told while this is ignored.
    static_cast<void>(std::signal(SIGCHLD, SIG_DFL));
    // A reader that has gone is a failed write, not the end of the process.
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
}

int endAtOnce(const inventory::EndAtOnce& end)
{
    std::ostream& stream = end.code == 0 ? std::cout : std::cerr;
    stream << end.text << std::flush;
    if (!stream && end.code == 0) {
        throw inventory::Failure("standard output", errno);
    }
    return end.code;
}

int fail(const std::exception& reason)
{
    std::cerr << "snmp-inventory: " << inventory::oneLine(reason.what()) << std::endl;
    return noReport;
}

} // namespace

int main(int argc, char** argv)
{
    setSignals();
    openMissingStandardDescriptors();
    try {
        const auto read = inventory::readCommandLine(argc, argv);
        if (const auto* const end = std::get_if<inventory::EndAtOnce>(&read)) {
            return endAtOnce(*end);
        }
        inventory::Ending::watch();
        return inventory::run(std::get<inventory::Settings>(read));
    } catch (const std::exception& exception) {
        return fail(exception);
    }
}
