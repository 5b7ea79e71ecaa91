// Which folder Net-SNMP is given for its state, depending on what other users could have done to
// it.

#include "app/PersistentFolder.h"

#include "tests/support/Guards.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>

namespace {

using std::filesystem::path;
using TestSupport::EnvironmentGuard;
using TestSupport::TemporaryDirectory;

constexpr uid_t anotherUser = 65534; // "nobody" nearly everywhere

void makeFolder(const path& folder, mode_t mode)
{
    ASSERT_EQ(mkdir(folder.c_str(), mode), 0) << folder;
    ASSERT_EQ(chmod(folder.c_str(), mode), 0) << folder; // whatever the umask is
}

void makeFile(const path& file)
{
    std::ofstream(file) << "text\n";
    ASSERT_EQ(chmod(file.c_str(), 0600), 0) << file;
}

/// Each test has a temporary directory of its own, in which the default folder lies.
class DefaultFolder : public testing::Test
{
protected:
    DefaultFolder() { makeFolder(elsewhere, 0700); }

    TemporaryDirectory m_directory;
    path temporary = m_directory.path();
    path elsewhere = temporary / "elsewhere"; ///< a directory that is the user's own
    path parent = temporary / "SNMPDiscoveryApp";
    path folder = parent / "snmp-persist";
    EnvironmentGuard m_temp{"TMPDIR", temporary.string()};
};

struct Case
{
    const char* name;
    bool isUsed;
    std::function<void(const path& parent, const path& folder, const path& elsewhere)> prepare;
};

class DefaultFolderAs : public DefaultFolder, public testing::WithParamInterface<Case>
{};

TEST_P(DefaultFolderAs, IsUsedOnlyIfNobodyElseCanHaveTouchedIt)
{
    GetParam().prepare(parent, folder, elsewhere);

    EXPECT_EQ(persistentFolder(""), GetParam().isUsed ? folder.string() + "/" : "");
}

INSTANTIATE_TEST_SUITE_P(
    States, DefaultFolderAs,
    testing::Values(
        Case{"Absent", true, [](auto&&...) {}},
        Case{"ParentOwn", true, [](auto& parent, auto&&...) { makeFolder(parent, 0700); }},
        Case{"BothOwn", true,
             [](auto& parent, auto& folder, auto&) {
                 makeFolder(parent, 0700);
                 makeFolder(folder, 0700);
             }},
        Case{"BothOwnAndReadOnly", true,
             [](auto& parent, auto& folder, auto&) {
                 makeFolder(parent, 0700);
                 makeFolder(folder, 0500);
             }},
        Case{"ParentOpenToWriters", false,
             [](auto& parent, auto&&...) { makeFolder(parent, 0777); }},
        Case{"ParentSticky", false, [](auto& parent, auto&&...) { makeFolder(parent, 01777); }},
        Case{"ParentOpenToReaders", false,
             [](auto& parent, auto&&...) { makeFolder(parent, 0755); }},
        Case{"ParentOpenToTheGroup", false,
             [](auto& parent, auto&&...) { makeFolder(parent, 0710); }},
        Case{"ParentOpenToPassing", false,
             [](auto& parent, auto&&...) { makeFolder(parent, 0701); }},
        Case{"ParentOpenThoughTheFolderIsOwn", false,
             [](auto& parent, auto& folder, auto&) {
                 makeFolder(parent, 0755);
                 makeFolder(folder, 0700);
             }},
        Case{"FolderOpenToWriters", false,
             [](auto& parent, auto& folder, auto&) {
                 makeFolder(parent, 0700);
                 makeFolder(folder, 0702);
             }},
        Case{"FolderOpenToTheGroup", false,
             [](auto& parent, auto& folder, auto&) {
                 makeFolder(parent, 0700);
                 makeFolder(folder, 0740);
             }},
        Case{"ParentALink", false,
             [](auto& parent, auto&, auto& elsewhere) { create_symlink(elsewhere, parent); }},
        Case{"ParentADanglingLink", false,
             [](auto& parent, auto&&...) { create_symlink("nowhere", parent); }},
        Case{"FolderALink", false,
             [](auto& parent, auto& folder, auto& elsewhere) {
                 makeFolder(parent, 0700);
                 create_symlink(elsewhere, folder);
             }},
        Case{"FolderADanglingLink", false,
             [](auto& parent, auto& folder, auto&) {
                 makeFolder(parent, 0700);
                 create_symlink("nowhere", folder);
             }},
        Case{"ParentAFile", false, [](auto& parent, auto&&...) { makeFile(parent); }},
        Case{"FolderAFile", false,
             [](auto& parent, auto& folder, auto&) {
                 makeFolder(parent, 0700);
                 makeFile(folder);
             }}),
    [](const auto& row) { return row.param.name; });

class DefaultFolderOfAnotherUser : public DefaultFolder
{
protected:
    void SetUp() override
    {
        if (geteuid() != 0) {
            std::cerr << "SKIPPED: only root can give a folder to another user\n";
            GTEST_SKIP() << "NOT TESTED: only root can give a folder to another user";
        }
        makeFolder(parent, 0700);
        makeFolder(folder, 0700);
    }
};

TEST_F(DefaultFolderOfAnotherUser, IsNotUsed)
{
    ASSERT_EQ(persistentFolder(""), folder.string() + "/");
    ASSERT_EQ(chown(folder.c_str(), anotherUser, anotherUser), 0);
    EXPECT_EQ(persistentFolder(""), "");
}

TEST_F(DefaultFolderOfAnotherUser, IsNotUsedIfOnlyTheParentIsTheirs)
{
    ASSERT_EQ(chown(parent.c_str(), anotherUser, anotherUser), 0);
    EXPECT_EQ(persistentFolder(""), "");
}

TEST_F(DefaultFolder, OnlyTheParentIsCreatedClosedToOthers)
{
    persistentFolder("");
    struct stat status;
    ASSERT_EQ(lstat(parent.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode, static_cast<mode_t>(S_IFDIR | S_IRWXU));
    EXPECT_NE(lstat(folder.c_str(), &status), 0) << "left to Net-SNMP";
}

TEST_F(DefaultFolder, NothingIsCreatedThroughALink)
{
    create_symlink(elsewhere / "made", parent);
    EXPECT_EQ(persistentFolder(""), "");
    EXPECT_TRUE(is_empty(elsewhere));
}

TEST_F(DefaultFolder, IsNotUsedIfTheParentCannotBeMade)
{
    makeFile(temporary / "file");
    for (const char* place : {"file", "absent"}) {
        const EnvironmentGuard temp("TMPDIR", (temporary / place).string());
        EXPECT_EQ(persistentFolder(""), "") << place;
    }
    EXPECT_FALSE(exists(temporary / "absent"));
}

TEST_F(DefaultFolder, AFolderThatTheUserNamesIsUsedAsGiven)
{
    makeFolder(parent, 0777);
    create_symlink(elsewhere, folder);
    EXPECT_EQ(persistentFolder(folder.string()), folder.string() + "/");
}

TEST_F(DefaultFolder, NothingIsCreatedForAFolderThatTheUserNames)
{
    EXPECT_EQ(persistentFolder(folder.string()), folder.string() + "/");
    EXPECT_FALSE(exists(parent));
}

} // namespace
