#include "app/StandardDescriptors.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// The status of a child that closes the descriptors whose bits are set in `closed`, calls the
/// function under test and checks its descriptors: 0 if all are right.
int childWithout(unsigned closed)
{
    const pid_t child = fork();
    if (child == 0) {
        struct stat null = {};
        struct stat before[3] = {};
        int fault = stat("/dev/null", &null) == 0 ? 0 : 1;
        const int next = dup(0); // the lowest free number, before any is closed
        close(next);
        for (int i = 0; i < 3; ++i) {
            fault |= fstat(i, &before[i]) == 0 ? 0 : 2;
            if ((closed >> i & 1U) != 0) {
                close(i);
            }
        }
        openMissingStandardDescriptors();
        for (int i = 0; i < 3; ++i) {
            struct stat after = {};
            fault |= fstat(i, &after) == 0 ? 0 : 4;
            const bool same = after.st_ino == before[i].st_ino && after.st_dev == before[i].st_dev;
            const bool isNull = S_ISCHR(after.st_mode) && after.st_rdev == null.st_rdev;
            fault |= ((closed >> i & 1U) != 0 ? isNull : same) ? 0 : 8;
        }
        fault |= fcntl(next, F_GETFD) == -1 ? 0 : 16; // nothing more was left open
        _exit(fault);
    }
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(StandardDescriptors, ThoseThatAreMissingLeadToTheNullDevice)
{
    for (unsigned closed = 0; closed < 8; ++closed) {
        EXPECT_EQ(childWithout(closed), 0) << closed;
    }
}

} // namespace
