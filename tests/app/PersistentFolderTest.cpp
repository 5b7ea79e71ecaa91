// Where Net-SNMP may keep its state, told from what other users could have done to the folder.

#include "app/PersistentFolder.h"

#include "tests/support/Guards.h"

#include <net-snmp/net-snmp-config.h>

#include <net-snmp/net-snmp-includes.h>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>

namespace {

using std::filesystem::path;
using TestSupport::EnvironmentGuard;
using TestSupport::TemporaryDirectory;
using Standing = PersistentFolder::Standing;

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

/// A temporary directory of its own in which the default folder lies.
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
    EnvironmentGuard m_search{"SNMPCONFPATH", std::nullopt};
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

    const PersistentFolder persistent("");

    EXPECT_EQ(persistent.directory(), GetParam().isUsed ? folder.string() + "/" : "");
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
    ASSERT_EQ(PersistentFolder("").directory(), folder.string() + "/");
    ASSERT_EQ(chown(folder.c_str(), anotherUser, anotherUser), 0);
    EXPECT_EQ(PersistentFolder("").directory(), "");
}

TEST_F(DefaultFolderOfAnotherUser, IsNotUsedIfOnlyTheParentIsTheirs)
{
    ASSERT_EQ(chown(parent.c_str(), anotherUser, anotherUser), 0);
    EXPECT_EQ(PersistentFolder("").directory(), "");
}

TEST_F(DefaultFolder, NothingIsCreated)
{
    const PersistentFolder persistent("");
    persistent.keepUnread();
    persistent.keepUnwritten();
    EXPECT_EQ(PersistentFolder::standing(parent), Standing::absent);
}

TEST_F(DefaultFolder, APlaceThatCannotBeToldIsForeign)
{
    makeFile(temporary / "file");
    EXPECT_EQ(PersistentFolder::standing(temporary / "file" / "below"), Standing::foreign);
    EXPECT_EQ(PersistentFolder::standing(temporary / std::string(300, 'x')), Standing::foreign);
}

TEST_F(DefaultFolder, AFolderThatTheUserNamesIsUsedAsGiven)
{
    makeFolder(parent, 0777);
    create_symlink(elsewhere, folder);
    const PersistentFolder persistent(folder.string());
    EXPECT_EQ(persistent.directory(), folder.string() + "/");
    persistent.keepUnread();
    persistent.keepUnwritten();
    EXPECT_EQ(std::getenv("SNMPCONFPATH"), nullptr); // NOLINT(concurrency-mt-unsafe)
    EXPECT_EQ(netsnmp_ds_get_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DONT_PERSIST_STATE), 0);
}

/// The places where Net-SNMP is to look for configuration, as far as the environment says.
std::string searchPath()
{
    const char* const text = std::getenv("SNMPCONFPATH"); // NOLINT(concurrency-mt-unsafe)
    return text == nullptr ? "unset" : text;
}

TEST_F(DefaultFolder, OneThatIsYetToBeMadeIsNotRead)
{
    const PersistentFolder persistent("");
    EXPECT_EQ(searchPath(), "unset");
    persistent.keepUnread();
    EXPECT_EQ(searchPath(), get_configuration_directory());
    EXPECT_NE(searchPath(), "");
}

TEST_F(DefaultFolder, OneThatIsThereIsRead)
{
    makeFolder(parent, 0700);
    makeFolder(folder, 0700);
    PersistentFolder("").keepUnread();
    EXPECT_EQ(searchPath(), "unset");
}

TEST_F(DefaultFolder, TheUsersOwnSearchPathStays)
{
    const EnvironmentGuard search("SNMPCONFPATH", elsewhere.string());
    PersistentFolder("").keepUnread();
    EXPECT_EQ(searchPath(), elsewhere.string());
}

bool savesState()
{
    return netsnmp_ds_get_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DONT_PERSIST_STATE) == 0;
}

TEST_F(DefaultFolder, NothingIsSavedIfSomebodyElseMadeItMeanwhile)
{
    const PersistentFolder persistent("");
    makeFolder(parent, 0777);
    makeFolder(folder, 0777);
    ASSERT_TRUE(savesState());
    persistent.keepUnwritten();
    EXPECT_FALSE(savesState());
    netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DONT_PERSIST_STATE, 0);
}

TEST_F(DefaultFolder, StateIsSavedIfNetSNMPMadeIt)
{
    const PersistentFolder persistent("");
    ASSERT_EQ(mkdirhier(folder.c_str(), NETSNMP_AGENT_DIRECTORY_MODE, 0), SNMPERR_SUCCESS);
    EXPECT_EQ(PersistentFolder::standing(parent), Standing::own);
    EXPECT_EQ(PersistentFolder::standing(folder), Standing::own);
    persistent.keepUnwritten();
    EXPECT_TRUE(savesState());
}

TEST_F(DefaultFolder, StateIsSavedElsewhereIfItWasForeignFromTheStart)
{
    makeFolder(parent, 0777);
    const PersistentFolder persistent("");
    persistent.keepUnwritten();
    EXPECT_TRUE(savesState());
}

} // namespace
