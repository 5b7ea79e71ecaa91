#include "inventory/OutputFile.h"
#include "inventory/Failure.h"
#include "tests/support/Guards.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/stat.h>

#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace {

namespace fs = std::filesystem;
using inventory::Failure;
using inventory::OutputFile;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

class OutputFileTest : public testing::Test
{
protected:
    static std::string content(const fs::path& file)
    {
        std::ostringstream text;
        text << std::ifstream(file, std::ios::binary).rdbuf();
        return text.str();
    }
    std::vector<std::string> names() const
    {
        std::vector<std::string> found;
        for (const auto& entry : fs::directory_iterator(folder)) {
            found.push_back(entry.path().filename().string());
        }
        return found;
    }
    static mode_t mode(const fs::path& file)
    {
        struct stat status = {};
        EXPECT_EQ(stat(file.c_str(), &status), 0);
        return status.st_mode & 07777U;
    }
    void writeOld() const { std::ofstream(report) << "old"; }

    const TestSupport::TemporaryDirectory m_holder;
    const fs::path folder = m_holder.path();
    const fs::path report = folder / "report.json";
};

TEST_F(OutputFileTest, ANewFileAndAnOldOne)
{
    for (const char* const text : {"first", "second", ""}) {
        OutputFile(report.string()).replace(text);
        EXPECT_EQ(content(report), text);
        EXPECT_THAT(names(), ElementsAre("report.json"));
    }
}

TEST_F(OutputFileTest, TheModeIs0644LessTheUmask)
{
    for (const mode_t mask : {022U, 0U, 077U, 027U}) {
        const mode_t former = umask(mask);
        OutputFile(report.string()).replace("x");
        EXPECT_EQ(umask(former), mask);
        EXPECT_EQ(mode(report), 0644U & ~mask);
    }
}

TEST_F(OutputFileTest, AReadOnlyFileIsReplacedAsARenameDoes)
{
    writeOld();
    fs::permissions(report, fs::perms::owner_read);
    OutputFile(report.string()).replace("new");
    EXPECT_EQ(content(report), "new");
}

TEST_F(OutputFileTest, ALinksTargetIsReplaced)
{
    fs::create_directory(folder / "sub");
    fs::create_symlink("sub/target", folder / "second");
    fs::create_symlink(folder / "second", report);
    for (const char* const text : {"made", "replaced"}) {
        OutputFile(report.string()).replace(text);
        EXPECT_TRUE(fs::is_symlink(report));
        EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(folder / "sub/target")));
        EXPECT_EQ(content(folder / "sub/target"), text);
    }
    fs::create_symlink("loop", folder / "loop");
    EXPECT_THROW(OutputFile((folder / "loop").string()), Failure);
}

TEST_F(OutputFileTest, WhatIsNoRegularFileIsRefused)
{
    EXPECT_THROW(OutputFile(folder.string()), Failure);
    EXPECT_THROW(OutputFile("/dev/null"), Failure);
    EXPECT_EQ(mkfifo(report.c_str(), 0600), 0);
    EXPECT_THROW(OutputFile(report.string()), Failure);
    EXPECT_TRUE(fs::is_fifo(report));
}

TEST_F(OutputFileTest, AFolderThatIsNotThere)
{
    EXPECT_THROW(OutputFile((folder / "absent/report").string()).replace("x"), Failure);
}

TEST_F(OutputFileTest, OnAFullDiskTheOldReportIsIntactAndNothingElseIsThere)
{
    writeOld();
    const OutputFile output(report.string());
    // A limit on the size of files fails as a full disk does: in the middle of the writing.
    rlimit former = {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &former), 0);
    const rlimit small = {1000, former.rlim_max};
    auto* const handler = std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    EXPECT_THROW(output.replace(std::string(100000, 'x')), Failure);
    setrlimit(RLIMIT_FSIZE, &former);
    EXPECT_EQ(std::signal(SIGXFSZ, handler), SIG_IGN);

    EXPECT_EQ(content(report), "old");
    EXPECT_THAT(names(), ElementsAre("report.json"));
}

TEST_F(OutputFileTest, InAFolderThatCannotBeWrittenTheOldReportIsIntact)
{
    if (geteuid() == 0) {
        GTEST_SKIP() << "NOT TESTED: root may write everywhere; the private network's tests do it";
    }
    writeOld();
    fs::permissions(folder, fs::perms::owner_read | fs::perms::owner_exec);
    EXPECT_THROW(OutputFile(report.string()).replace("new"), Failure);
    fs::permissions(folder, fs::perms::owner_all);
    EXPECT_EQ(content(report), "old");
    EXPECT_THAT(names(), UnorderedElementsAre("report.json"));
}

TEST_F(OutputFileTest, WhenTheTargetBecomesAFolderMeanwhileNothingIsLeft)
{
    const OutputFile output(report.string());
    fs::create_directory(report);
    EXPECT_THROW(output.replace("new"), Failure);
    EXPECT_THAT(names(), ElementsAre("report.json"));
}

} // namespace
