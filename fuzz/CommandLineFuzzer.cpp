#include "app/PersistentFolder.h"
#include "app/SNMPDiscoveryApp.h"
#include "fuzz/Fuzzing.h"

#include <Poco/AutoPtr.h>
#include <Poco/Util/LayeredConfiguration.h>

#include <iostream>
#include <sstream>
#include <vector>

// The command line: the arguments are the input's parts between zero bytes. They are processed and
// not run, so nothing is probed. The first one is a property's definition and the folder for
// persistent data, too.

namespace {

using fuzzing::check;

class Application : public SNMPDiscoveryApp
{
public:
    using SNMPDiscoveryApp::m_helpRequested;
};

/// Keeps what is written to standard output from it, for a scope.
class Quiet
{
public:
    Quiet() : m_former(std::cout.rdbuf(m_text.rdbuf())) {}
    ~Quiet() { std::cout.rdbuf(m_former); }
    Quiet(const Quiet&) = delete;
    Quiet& operator=(const Quiet&) = delete;

    std::string text() const { return m_text.str(); }

private:
    std::ostringstream m_text;
    std::streambuf* m_former;
};

std::vector<std::string> split(std::string_view input)
{
    std::vector<std::string> parts;
    std::istringstream in{std::string(input)};
    for (std::string part; std::getline(in, part, '\0') && parts.size() < 50;) {
        parts.push_back(part);
    }
    return parts;
}

void checkDefinition(Application& application, const std::string& definition)
{
    const std::string name = definition.substr(0, definition.find('='));
    const std::string value =
        name.size() == definition.size() ? "" : definition.substr(name.size() + 1);
    application.defineProperty(definition);
    check(application.config().getRawString(name, "?") == value, "the property is stored",
          definition);
}

/// A folder that is the present one ("." alone) has no name in POCO's paths, so that Net-SNMP's own
/// default holds.
void checkFolder(const std::string& choice)
{
    if (!choice.empty()) {
        const std::string directory = persistentFolder(choice);
        const bool isPresentOne = choice.find_first_not_of("./") == std::string::npos;
        check(isPresentOne || (!directory.empty() && directory.back() == '/'), "a directory",
              choice);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::vector<std::string> arguments = split(fuzzing::text(data, size));
    if (arguments.empty()) {
        return 0;
    }
    const std::string first = arguments.front();
    const Quiet output;
    Poco::AutoPtr<Application> application(new Application);
    arguments.insert(arguments.begin(), "/opt/tool/SNMPDiscovery");
    std::vector<char*> argv;
    argv.reserve(arguments.size() + 1);
    for (std::string& argument : arguments) {
        argv.push_back(argument.data());
    }
    argv.push_back(nullptr);

    application->init(static_cast<int>(arguments.size()), argv.data());

    check(application->m_helpRequested == !output.text().empty(), "the help is shown, or nothing",
          output.text());
    checkDefinition(*application, first);
    checkFolder(first);
    return 0;
}
