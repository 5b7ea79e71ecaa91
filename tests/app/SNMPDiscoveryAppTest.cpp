// The application: its command line and help, where its configuration comes from, and the stages of
// the framework.

#include "tests/app/helpers/FakeNetwork.h"
#include "tests/app/helpers/TestApp.h"
#include "tests/support/Guards.h"

#include <Poco/AutoPtr.h>
#include <Poco/Util/Option.h>
#include <Poco/Util/OptionCallback.h>
#include <Poco/Util/OptionSet.h>
#include <Poco/Util/Subsystem.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cctype>
#include <filesystem>
#include <fstream>

namespace {

using Poco::Util::Application;
using Poco::Util::Option;
using testing::AnyOf;
using testing::HasSubstr;
using testing::StartsWith;
using TestSupport::TemporaryDirectory;

// The command line.

/// What the tool prints for `arguments`. The fake network fails on any call.
std::string outputOf(const std::vector<std::string>& arguments, int* exitCode = nullptr)
{
    const FakeNetwork network;
    const CapturedOutput output;
    Poco::AutoPtr<TestApp> application(new TestApp);
    application->initWith(arguments);
    const int code = application->run();
    if (exitCode != nullptr) {
        *exitCode = code;
    }
    EXPECT_TRUE(network.calls().empty());
    return output.text();
}

/// `text` with single blanks: POCO wraps and indents the help to the width of the terminal.
std::string words(const std::string& text)
{
    std::string result;
    for (const char each : text) {
        if (std::isspace(static_cast<unsigned char>(each)) == 0) {
            result += each;
        } else if (!result.empty() && result.back() != ' ') {
            result += ' ';
        }
    }
    return result;
}

TEST(Shell, HelpShowsCommandUsageHeaderAndTheThreeOptions)
{
    const auto help = [](const std::string& community) {
        return "usage: SNMPDiscovery OPTIONS "
               "An UVAR SNMP Printer Discovery Tool. "
               "-h, --help display help information on command line arguments " +
               community +
               ", --Community=name Specifies the SNMP community name (default=public) "
               "--SNMPPersistPath=path Writable folder for SNMP persistent data "
               "(default temp\\SNMPDiscoveryApp\\snmp-persist) ";
    };
    EXPECT_THAT(words(outputOf({"-h"})), AnyOf(help("-cname"), help("-c name"))) << "POCO 1.14";
}

TEST(Shell, HelpShowsTheNameThatTheToolWasStartedBy)
{
    const CapturedOutput output;
    Poco::AutoPtr<TestApp> application(new TestApp);
    application->initWith({"-h"}, "/opt/tool/finder");
    EXPECT_THAT(output.text(), StartsWith("usage: finder OPTIONS\n"));
}

struct CommandLine
{
    const char* name;
    std::vector<std::string> arguments;
};

class ShowsHelp : public testing::TestWithParam<CommandLine>
{};

TEST_P(ShowsHelp, OnceAndEndsWith64WithoutTouchingTheNetwork)
{
    int exitCode = 0;
    const std::string output = outputOf(GetParam().arguments, &exitCode);
    EXPECT_EQ(output, outputOf({"--help"}));
    EXPECT_EQ(exitCode, 64);
}

INSTANTIATE_TEST_SUITE_P(
    Shell, ShowsHelp,
    testing::Values(CommandLine{"ShortHelp", {"-h"}}, CommandLine{"LongHelp", {"--help"}},
                    CommandLine{"AbbreviatedHelp", {"--he"}},
                    CommandLine{"HelpBehindAnOption", {"-c", "private", "-h"}},
                    CommandLine{"HelpBeforeAnUnknownOption", {"-h", "--unknown"}},
                    CommandLine{"UnknownLongOption", {"--unknown"}},
                    CommandLine{"UnknownShortOption", {"-x"}},
                    CommandLine{"ShortCommunityWithoutArgument", {"-c"}},
                    CommandLine{"LongCommunityWithoutArgument", {"--Community"}},
                    CommandLine{"PersistPathWithoutArgument", {"--SNMPPersistPath"}},
                    CommandLine{"HelpWithAnArgument", {"--help=x"}},
                    CommandLine{"CommunityTwice", {"-c", "one", "-c", "two"}}),
    [](const auto& row) { return row.param.name; });

TEST(Shell, OptionsBehindHelpAreNotProcessed)
{
    const CapturedOutput output;
    Poco::AutoPtr<TestApp> application(new TestApp);
    application->initWith({"--help", "-c", "x"});
    EXPECT_TRUE(application->m_helpRequested);
    EXPECT_FALSE(application->config().hasProperty("Community"));
}

TEST(Shell, TheCommunityIsTakenOverEvenWhenTheHelpIsShown)
{
    const FakeNetwork network;
    const CapturedOutput output;
    Poco::AutoPtr<TestApp> application(new TestApp);
    application->initWith({"-c", "private", "-h"});
    EXPECT_EQ(application->main({}), 64);
    EXPECT_EQ(application->m_community, "private");
}

TEST(Shell, TheConfigurationFileIsReadEvenWhenTheHelpIsShown)
{
    const TestSupport::TemporaryDirectory folder;
    std::ofstream(folder.path() / "SNMPDiscovery.properties") << "Community = private\n";
    const FakeNetwork network;
    const CapturedOutput output;
    Poco::AutoPtr<TestApp> application(new TestApp);
    application->initWith({"-h"}, folder.path().string() + "/SNMPDiscovery");
    EXPECT_EQ(application->run(), 64);
    EXPECT_EQ(application->m_community, "private");
}

TEST(Shell, TheHelpEndsWith70IfTheCommunityRefersToItself)
{
    const FakeNetwork network;
    const CapturedOutput output;
    Poco::AutoPtr<TestApp> application(new TestApp);
    application->initWith({"-c", "${Community}", "-h"});
    EXPECT_THAT(output.text(), StartsWith("usage: SNMPDiscovery OPTIONS\n"));
    const std::string help = output.text();
    testing::internal::CaptureStderr();
    EXPECT_EQ(application->run(), 70);
    EXPECT_NE(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(output.text(), help);
    EXPECT_TRUE(network.calls().empty());
}

/// Throws an int while the options are defined.
class FailingSubsystem : public Poco::Util::Subsystem
{
public:
    const char* name() const override { return "failing"; }
    void initialize(Application&) override {}
    void uninitialize() override {}
    void defineOptions(Poco::Util::OptionSet&) override { throw 42; }
};

TEST(Shell, WhateverIsThrownWhileOptionsAreProcessedTheHelpIsShown)
{
    const FakeNetwork network;
    const CapturedOutput output;
    Poco::AutoPtr<TestApp> application(new TestApp);
    application->addSubsystem(new FailingSubsystem);
    EXPECT_NO_THROW(application->initWith({}));
    EXPECT_TRUE(application->m_helpRequested);
    EXPECT_THAT(output.text(), HasSubstr("An UVAR SNMP Printer Discovery Tool."));
    EXPECT_EQ(application->main({}), 64);
}

TEST(Shell, AGoodCommandLineShowsNothingAndAsksForNoHelp)
{
    const CapturedOutput output;
    Poco::AutoPtr<TestApp> application(new TestApp);
    application->initWith({"-c", "private", "--SNMPPersistPath", "/var/lib/somewhere"});
    EXPECT_FALSE(application->m_helpRequested);
    EXPECT_EQ(output.text(), "");
    EXPECT_EQ(application->config().getString("Community"), "private");
    EXPECT_EQ(application->config().getString("SNMPPersistPath"), "/var/lib/somewhere");
}

TEST(Shell, StartsWithTheDefaultCommunityAndNoResponders)
{
    Poco::AutoPtr<TestApp> application(new TestApp);
    EXPECT_EQ(application->m_community, "public");
    EXPECT_FALSE(application->m_helpRequested);
    EXPECT_TRUE(application->m_responders.empty());
}

/// Fields are constructed in this order and destroyed in the reverse one, so that the responders
/// are gone before the mutex that guards them.
TEST(Shell, TheFieldsStandInOrder)
{
    Poco::AutoPtr<TestApp> application(new TestApp);
    const void* const fields[] = {&application->m_mutex, &application->m_helpRequested,
                                  &application->m_community, &application->m_responders};
    for (std::size_t i = 1; i < std::size(fields); ++i) {
        EXPECT_LT(fields[i - 1], fields[i]) << i;
    }
}

TEST(Shell, DefinesTheThreeOptionsInOrder)
{
    Poco::AutoPtr<TestApp> application(new TestApp);
    application->initWith({});

    struct Expected
    {
        const char* name;
        const char* shortName;
        const char* description;
        const char* argument;
        const char* binding;
        bool callback;
    };
    const Expected expected[] = {
        {"help", "h", "display help information on command line arguments", "", "", true},
        {"Community", "c", "Specifies the SNMP community name (default=public)", "name",
         "Community", false},
        {"SNMPPersistPath", "",
         "Writable folder for SNMP persistent data (default temp\\SNMPDiscoveryApp\\snmp-persist)",
         "path", "SNMPPersistPath", false},
    };
    std::vector<Option> options(application->options().begin(), application->options().end());
    ASSERT_EQ(options.size(), std::size(expected));
    for (std::size_t i = 0; i < options.size(); ++i) {
        const Option& option = options[i];
        EXPECT_EQ(option.fullName(), expected[i].name);
        EXPECT_EQ(option.shortName(), expected[i].shortName);
        EXPECT_EQ(option.description(), expected[i].description);
        EXPECT_EQ(option.argumentName(), expected[i].argument);
        EXPECT_EQ(option.takesArgument(), *expected[i].argument != '\0');
        EXPECT_EQ(option.argumentRequired(), *expected[i].argument != '\0');
        EXPECT_EQ(option.binding(), expected[i].binding);
        EXPECT_EQ(option.callback() != nullptr, expected[i].callback);
        EXPECT_FALSE(option.required());
        EXPECT_FALSE(option.repeatable());
    }
}

TEST(Shell, ANullApplicationIsABugInTheOptionCallback)
{
    EXPECT_THROW(
        (Poco::Util::OptionCallback<SNMPDiscoveryApp>(nullptr, &SNMPDiscoveryApp::handleHelp)),
        Poco::NullPointerException);
}

// Where the configuration comes from, and the stages of the framework.

struct Definition
{
    const char* name;
    const char* text;
    const char* key;
    const char* value;
};

class DefineProperty : public testing::TestWithParam<Definition>
{};

TEST_P(DefineProperty, SplitsAtTheFirstEqualsSign)
{
    Poco::AutoPtr<TestApp> application(new TestApp);
    application->defineProperty(GetParam().text);
    ASSERT_TRUE(application->config().hasProperty(GetParam().key));
    EXPECT_EQ(application->config().getString(GetParam().key), GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(Configuration, DefineProperty,
                         testing::Values(Definition{"Plain", "a=b", "a", "b"},
                                         Definition{"ValueWithEquals", "a=b=c", "a", "b=c"},
                                         Definition{"NoEquals", "a", "a", ""},
                                         Definition{"EmptyValue", "a=", "a", ""},
                                         Definition{"EqualsOnly", "a==", "a", "="},
                                         Definition{"Spaces", "a b= c ", "a b", " c "}),
                         [](const auto& row) { return row.param.name; });

TEST(Configuration, AFileBesideTheExecutableIsLoaded)
{
    const TemporaryDirectory folder;
    std::ofstream(folder.path() / "SNMPDiscovery.properties") << "Community = fromfile\n";
    Poco::AutoPtr<TestApp> application(new TestApp);
    application->initWith({}, folder.path().string() + "/SNMPDiscovery");
    EXPECT_FALSE(application->config().hasProperty("Community"));
    application->initialize(*application);
    EXPECT_EQ(application->config().getString("Community"), "fromfile");
    application->uninitialize();
}

TEST(Configuration, AFolderWithTheNameOfAFileEndsTheRunWith78)
{
    for (const char* const extension : {"properties", "ini", "json", "xml"}) {
        SCOPED_TRACE(extension);
        const TemporaryDirectory folder;
        const std::string name = folder.path().string() + "/SNMPDiscovery." + extension;
        std::filesystem::create_directory(name);
        Poco::AutoPtr<TestApp> application(new TestApp);
        application->initWith({}, folder.path().string() + "/SNMPDiscovery");
        testing::internal::CaptureStderr();
        EXPECT_EQ(application->run(), 78);
        EXPECT_EQ(testing::internal::GetCapturedStderr(),
                  "Cannot open file: not a file: " + name + "\n");
    }
}

/// The help has been shown by then.
TEST(Configuration, AFolderWithTheNameOfAFileDoesSoAfterTheHelpToo)
{
    const TemporaryDirectory folder;
    std::filesystem::create_directory(folder.path() / "SNMPDiscovery.properties");
    Poco::AutoPtr<TestApp> application(new TestApp);
    testing::internal::CaptureStdout();
    application->initWith({"-h"}, folder.path().string() + "/SNMPDiscovery");
    EXPECT_NE(testing::internal::GetCapturedStdout(), "");
    testing::internal::CaptureStderr();
    EXPECT_EQ(application->run(), 78);
    EXPECT_NE(testing::internal::GetCapturedStderr(), "");
}

TEST(Configuration, TheCommandLineWinsOverAFile)
{
    const TemporaryDirectory folder;
    std::ofstream(folder.path() / "SNMPDiscovery.properties") << "Community = fromfile\n";
    Poco::AutoPtr<TestApp> application(new TestApp);
    application->initWith({"-c", "fromoption"}, folder.path().string() + "/SNMPDiscovery");
    application->initialize(*application);
    EXPECT_EQ(application->config().getString("Community"), "fromoption");
    application->uninitialize();
}

TEST(Configuration, AFileWinsOverWhatTheSystemSays)
{
    const TemporaryDirectory folder;
    std::ofstream(folder.path() / "SNMPDiscovery.properties") << "system.osName = fromfile\n";
    Poco::AutoPtr<TestApp> application(new TestApp);
    application->initWith({}, folder.path().string() + "/SNMPDiscovery");
    EXPECT_NE(application->config().getString("system.osName"), "fromfile");
    application->initialize(*application);
    EXPECT_EQ(application->config().getString("system.osName"), "fromfile");
    application->uninitialize();
}

/// Records which of the framework's stages reached it.
class RecordingSubsystem : public Poco::Util::Subsystem
{
public:
    const char* name() const override { return "recording"; }
    void initialize(Application& self) override
    {
        stages.emplace_back("initialize");
        community = self.config().getString("Community", "none");
    }
    void uninitialize() override { stages.emplace_back("uninitialize"); }
    void reinitialize(Application&) override { stages.emplace_back("reinitialize"); }
    void defineOptions(Poco::Util::OptionSet& options) override
    {
        stages.emplace_back("options");
        options.addOption(Option("recording", "r", "an option of a subsystem"));
    }

    std::vector<std::string> stages;
    std::string community; ///< in the configuration when the stage "initialize" was reached
};

TEST(Stages, EveryStageIsForwardedToTheFramework)
{
    Poco::AutoPtr<TestApp> application(new TestApp);
    Poco::AutoPtr<RecordingSubsystem> subsystem(new RecordingSubsystem);
    application->addSubsystem(subsystem.duplicate());
    application->initWith({});
    application->initialize(*application);
    application->reinitialize(*application);
    application->uninitialize();
    EXPECT_EQ(subsystem->stages,
              (std::vector<std::string>{"options", "initialize", "reinitialize", "uninitialize"}));
    // The framework's options come before the tool's.
    EXPECT_EQ(application->options().begin()->fullName(), "recording");
}

TEST(Stages, TheConfigurationIsLoadedBeforeTheFrameworkInitialises)
{
    const TemporaryDirectory folder;
    std::ofstream(folder.path() / "SNMPDiscovery.properties") << "Community = fromfile\n";
    Poco::AutoPtr<TestApp> application(new TestApp);
    Poco::AutoPtr<RecordingSubsystem> subsystem(new RecordingSubsystem);
    application->addSubsystem(subsystem.duplicate());
    application->initWith({}, folder.path().string() + "/SNMPDiscovery");
    application->initialize(*application);
    EXPECT_EQ(subsystem->community, "fromfile");
    application->uninitialize();
}

} // namespace
