// Messages that nobody reads: the writer must return at once, whatever the descriptor refers to.

#include "app/StandardErrorLog.h"

#include "tests/support/Guards.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using TestSupport::TemporaryDirectory;

/// Two connected descriptors: what is written to one is read from the other.
class Channel
{
public:
    explicit Channel(bool isSocket)
    {
        const int result = isSocket ? socketpair(AF_UNIX, SOCK_STREAM, 0, m_ends) : pipe(m_ends);
        EXPECT_EQ(result, 0);
        EXPECT_EQ(fcntl(m_ends[0], F_SETFL, O_NONBLOCK), 0);
    }
    ~Channel()
    {
        closeReader();
        close(m_ends[1]);
    }
    Channel(const Channel&) = delete;
    Channel& operator=(const Channel&) = delete;

    int writer() const { return m_ends[1]; }

    void closeReader()
    {
        if (m_ends[0] >= 0) {
            close(m_ends[0]);
            m_ends[0] = -1;
        }
    }

    /// Everything that has been written and not been read yet.
    std::string read() const
    {
        std::string text;
        char octets[4096];
        for (ssize_t got = ::read(m_ends[0], octets, sizeof octets); got > 0;
             got = ::read(m_ends[0], octets, sizeof octets)) {
            text.append(octets, static_cast<std::size_t>(got));
        }
        return text;
    }

private:
    int m_ends[2] = {-1, -1}; ///< for reading, without blocking, and for writing
};

std::string contents(const std::string& file)
{
    std::ostringstream text;
    text << std::ifstream(file).rdbuf();
    return text.str();
}

// More than any pipe or socket holds by default. A writer that blocks would block for ever, until
// the test's time limit ends it.
constexpr int floodOfLines = 100000;

class StandardErrorLogTo : public testing::TestWithParam<bool>
{};

TEST_P(StandardErrorLogTo, DropsWhatFindsNoRoomAndGoesOnOnceThereIs)
{
    const Channel channel(GetParam());
    const int descriptor = StandardErrorLog::withoutWaiting(channel.writer());
    for (int i = 0; i < floodOfLines; ++i) {
        StandardErrorLog::write(descriptor, "a line that nobody reads\n");
    }
    const std::string first = channel.read();
    EXPECT_EQ(first.substr(0, 25), "a line that nobody reads\n");
    EXPECT_LT(first.size(), 25U * floodOfLines);

    StandardErrorLog::write(descriptor, "read again\n");
    EXPECT_EQ(channel.read(), "read again\n");
}

TEST_P(StandardErrorLogTo, LeavesTheSharedDescriptorBlocking)
{
    const Channel channel(GetParam());
    StandardErrorLog::write(StandardErrorLog::withoutWaiting(channel.writer()), "text");
    EXPECT_EQ(fcntl(channel.writer(), F_GETFL) & O_NONBLOCK, 0);
}

TEST_P(StandardErrorLogTo, WritesALongMessageInPieces)
{
    const Channel channel(GetParam());
    std::string text;
    for (int i = 0; text.size() < 20000; ++i) {
        text += std::to_string(i) + ' ';
    }
    StandardErrorLog::write(StandardErrorLog::withoutWaiting(channel.writer()), text.c_str());
    EXPECT_EQ(channel.read(), text);
}

TEST_P(StandardErrorLogTo, WritesASingleOctet)
{
    const Channel channel(GetParam());
    StandardErrorLog::write(StandardErrorLog::withoutWaiting(channel.writer()), "\n");
    EXPECT_EQ(channel.read(), "\n");
}

TEST_P(StandardErrorLogTo, AnErrorFromBeforeNeitherMattersNorIsLost)
{
    const Channel channel(GetParam());
    const int descriptor = StandardErrorLog::withoutWaiting(channel.writer());
    errno = ENOTSOCK;
    StandardErrorLog::write(descriptor, "once\n");
    EXPECT_EQ(errno, ENOTSOCK);
    EXPECT_EQ(channel.read(), "once\n");
}

TEST_P(StandardErrorLogTo, SurvivesAReaderThatHasGone)
{
    // SIGPIPE would end the test.
    Channel channel(GetParam());
    const int descriptor = StandardErrorLog::withoutWaiting(channel.writer());
    channel.closeReader();
    StandardErrorLog::write(descriptor, "nobody there\n");
    StandardErrorLog::write(StandardErrorLog::withoutWaiting(channel.writer()), "nor now\n");
}

TEST_P(StandardErrorLogTo, ThreadsThatFindNoRoomDoNotWait)
{
    const Channel channel(GetParam());
    const int descriptor = StandardErrorLog::withoutWaiting(channel.writer());
    std::vector<std::thread> threads;
    threads.reserve(8);
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([descriptor] {
            for (int line = 0; line < floodOfLines / 8; ++line) {
                StandardErrorLog::write(descriptor, "a line that nobody reads\n");
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_NE(channel.read(), "");
}

INSTANTIATE_TEST_SUITE_P(Kinds, StandardErrorLogTo, testing::Bool(),
                         [](const auto& row) { return row.param ? "Socket" : "Pipe"; });

#ifdef __linux__
TEST(StandardErrorLog, APipeIsOpenedOnceMoreSoThatItsFlagsAreItsOwn)
{
    const Channel channel(false);
    const int descriptor = StandardErrorLog::withoutWaiting(channel.writer());
    EXPECT_NE(descriptor, channel.writer());
    EXPECT_NE(fcntl(descriptor, F_GETFL) & O_NONBLOCK, 0);
    EXPECT_NE(fcntl(descriptor, F_GETFD) & FD_CLOEXEC, 0);
    const Channel socket(true);
    EXPECT_EQ(StandardErrorLog::withoutWaiting(socket.writer()), socket.writer());
}
#endif

TEST(StandardErrorLog, WritesToAFileBehindWhatIsThere)
{
    const TemporaryDirectory directory;
    const std::string name = directory.path() / "log";
    const int file = open(name.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    ASSERT_GE(file, 0);
    const int descriptor = StandardErrorLog::withoutWaiting(file);
    EXPECT_EQ(descriptor, file);
    StandardErrorLog::write(descriptor, "first\n");
    StandardErrorLog::write(descriptor, "second\n");
    close(file);
    EXPECT_EQ(contents(name), "first\nsecond\n");
}

TEST(StandardErrorLog, WithoutADescriptorNothingIsWritten)
{
    EXPECT_EQ(StandardErrorLog::withoutWaiting(-1), -1);
    errno = ENOENT;
    StandardErrorLog::write(-1, "text");
    EXPECT_EQ(errno, ENOENT) << "as it was";
}

} // namespace
