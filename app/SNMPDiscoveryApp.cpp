#include "app/SNMPDiscoveryApp.h"

#include <Poco/Exception.h>
#include <Poco/File.h>
#include <Poco/Path.h>
#include <Poco/Util/HelpFormatter.h>
#include <Poco/Util/Option.h>
#include <Poco/Util/OptionCallback.h>

#include <iostream>

using Poco::Util::HelpFormatter;
using Poco::Util::Option;
using Poco::Util::OptionCallback;
using Poco::Util::OptionSet;

void SNMPDiscoveryApp::init(int argc, char** argv)
{
    try {
        Application::init(argc, argv);
    } catch (...) {
        // Whatever is wrong with an option shows the help. Other arguments throw nothing.
        m_helpRequested = true;
        displayHelp();
    }
}

void SNMPDiscoveryApp::refuseFolderAsConfiguration() const
{
    for (const char* const extension : {"properties", "ini", "json", "xml"}) {
        Poco::Path path(config().getString("application.baseName"));
        path.setExtension(extension);
        if (findFile(path) && Poco::File(path).isDirectory()) {
            throw Poco::OpenFileException("not a file", path.toString());
        }
    }
}

void SNMPDiscoveryApp::initialize(Application& self)
{
    refuseFolderAsConfiguration();
    loadConfiguration();
    Application::initialize(self);
}

void SNMPDiscoveryApp::uninitialize()
{
    Application::uninitialize();
}

void SNMPDiscoveryApp::reinitialize(Application& self)
{
    Application::reinitialize(self);
}

void SNMPDiscoveryApp::defineOptions(OptionSet& options)
{
    Application::defineOptions(options);

    options.addOption(
        Option("help", "h", "display help information on command line arguments", false)
            .required(false)
            .repeatable(false)
            .callback(OptionCallback<SNMPDiscoveryApp>(this, &SNMPDiscoveryApp::handleHelp)));

    options.addOption(
        Option("Community", "c", "Specifies the SNMP community name (default=public)", false)
            .required(false)
            .repeatable(false)
            .argument("name")
            .binding("Community"));

    // The backslashes are part of the help text on every platform, although the folder itself is
    // built with the platform's own separator.
    options.addOption(Option("SNMPPersistPath", "",
                             "Writable folder for SNMP persistent data (default "
                             "temp\\SNMPDiscoveryApp\\snmp-persist)",
                             false)
                          .required(false)
                          .repeatable(false)
                          .argument("path")
                          .binding("SNMPPersistPath"));
}

void SNMPDiscoveryApp::handleOption(const std::string& name, const std::string& value)
{
    Application::handleOption(name, value);
}

void SNMPDiscoveryApp::handleHelp(const std::string& /*name*/, const std::string& /*value*/)
{
    m_helpRequested = true;
    displayHelp();
    stopOptionsProcessing();
}

void SNMPDiscoveryApp::displayHelp()
{
    HelpFormatter formatter(options());
    formatter.setCommand(commandName());
    formatter.setUsage("OPTIONS");
    formatter.setHeader("An UVAR SNMP Printer Discovery Tool.");
    formatter.format(std::cout);
}

void SNMPDiscoveryApp::defineProperty(const std::string& def)
{
    const std::string::size_type equals = def.find('=');
    if (equals == std::string::npos) {
        config().setString(def, "");
    } else {
        config().setString(def.substr(0, equals), def.substr(equals + 1, def.length() - equals));
    }
}
