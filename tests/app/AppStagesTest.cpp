// Where the configuration comes from, and the stages of the framework.

#include "tests/app/TestApp.h"
#include "tests/support/Guards.h"

#include <Poco/AutoPtr.h>
#include <Poco/Util/Option.h>
#include <Poco/Util/OptionSet.h>
#include <Poco/Util/Subsystem.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

using Poco::Util::Application;
using Poco::Util::Option;

using TestSupport::TemporaryDirectory;

namespace {

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
