// Where Net-SNMP's messages go, with its real logging.

#include "snmp/Messages.h"

#include "tests/support/Guards.h"

#include <net-snmp/net-snmp-config.h>

#include <net-snmp/net-snmp-includes.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using TestSupport::TemporaryDirectory;

/// Starts and ends with Net-SNMP's logging without any handler.
class Messages : public testing::Test
{
protected:
    Messages() { shutdown_snmp_logging(); }
    ~Messages() override
    {
        shutdown_snmp_logging();
        Written().clear();
    }

    static std::vector<std::string>& Written()
    {
        static std::vector<std::string> written;
        return written;
    }
    static void Write(int target, const char* text)
    {
        Written().push_back(std::to_string(target) + " " + text);
    }
};

TEST_F(Messages, AreHandedToTheWriterWithItsTarget)
{
    UVARNETSNMP::RouteMessages(&Write, 7);
    snmp_log(LOG_ERR, "said %d times\n", 1);
    snmp_log(LOG_DEBUG, "and less important\n");
    EXPECT_THAT(Written(), ElementsAre("7 said 1 times\n", "7 and less important\n"));
}

TEST_F(Messages, GoElsewhereIfTheConfigurationSaysSo)
{
    const TemporaryDirectory directory;
    const std::string name = directory.path() / "log";
    UVARNETSNMP::RouteMessages(&Write, 7);
    std::string option = "f " + name; // as "logOption f NAME" of a configuration file does
    snmp_log_options(option.data(), 0, nullptr);
    snmp_log(LOG_ERR, "elsewhere\n");
    EXPECT_THAT(Written(), IsEmpty());
    std::ostringstream text;
    text << std::ifstream(name).rdbuf();
    EXPECT_NE(text.str().find("elsewhere\n"), std::string::npos) << text.str();
}

TEST_F(Messages, AreDiscarded)
{
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    UVARNETSNMP::DiscardMessages();
    snmp_log(LOG_ERR, "nobody reads this\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

} // namespace
