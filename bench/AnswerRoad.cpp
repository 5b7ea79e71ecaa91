// The road of one answer, from select() to the set of responders, over the loopback interface: a
// thread takes the request of a real session and sends so many recorded answers back, each from
// another loopback address, as the agents of a subnet would.
//
//     answer_road ANSWERS        prints the processor time of the thread that reads them, as JSON
//
// Under callgrind the instructions of SNMPSession::Get tell the rest: two runs with different
// numbers of answers differ by what those answers cost (see part_floor.py).

#include "app/SNMPDiscoveryApp.h"
#include "snmp/OID.h"
#include "snmp/SNMPSession.h"

#include <Poco/AutoPtr.h>
#include <Poco/Timespan.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <exception>
#include <iterator>
#include <string>
#include <system_error>
#include <thread>

namespace {

using UVARNETSNMP::OID;
using UVARNETSNMP::SNMPSession;

constexpr long mostAnswers = 50000;
constexpr auto timeout = std::chrono::seconds(2);
constexpr long mostUnread = 100; // answers under way, which every kernel's default buffer holds

std::atomic<long> answersRead{0};

/// The application's callback, and a count by which the sender keeps pace.
void count(SNMPSession& session, void* context, snmp_pdu* pdu)
{
    SNMPDiscoveryApp::SNMPCallback(session, context, pdu);
    answersRead.fetch_add(1, std::memory_order_relaxed);
}

void require(bool good, const char* what)
{
    if (!good) {
        throw std::system_error(errno, std::generic_category(), what);
    }
}

/// The application with its set in the open.
class Application : public SNMPDiscoveryApp
{
public:
    using SNMPDiscoveryApp::m_responders;
};

/// All agents: one socket on the loopback interface.
class Agents
{
public:
    explicit Agents(long answers) : m_answers(answers), m_socket(socket(AF_INET, SOCK_DGRAM, 0))
    {
        require(m_socket >= 0, "socket");
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        require(bind(m_socket, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0, "bind");
        socklen_t length = sizeof address;
        require(getsockname(m_socket, reinterpret_cast<sockaddr*>(&address), &length) == 0, "name");
        m_port = ntohs(address.sin_port);
    }
    ~Agents() { close(m_socket); }
    Agents(const Agents&) = delete;
    Agents& operator=(const Agents&) = delete;

    std::string host() const { return "udp:127.0.0.1:" + std::to_string(m_port); }

    /// Waits for one request and answers it. Runs on a thread of its own.
    void serve()
    {
        char request[1500];
        sockaddr_in asker = {};
        socklen_t length = sizeof asker;
        const ssize_t size = recvfrom(m_socket, request, sizeof request, 0,
                                      reinterpret_cast<sockaddr*>(&asker), &length);
        require(size > 0, "request");
        // The request becomes the recorded answer of a printer: PDU type and error-index change,
        // and the value is a time, in as many octets as NULL had with three more.
        std::string answer(request, static_cast<std::size_t>(size));
        makeAnswer(answer);
        const auto end = std::chrono::steady_clock::now() + timeout;
        for (long agent = 0; agent < m_answers; ++agent) {
            while (agent - answersRead.load(std::memory_order_relaxed) > mostUnread) {
                if (std::chrono::steady_clock::now() > end) {
                    return;
                }
                std::this_thread::yield();
            }
            sendFrom(0x7f010000U + static_cast<std::uint32_t>(agent), asker, answer);
        }
    }

private:
    static void makeAnswer(std::string& message)
    {
        // Tag and length of the message, the version, the community "public".
        constexpr std::size_t pdu = 2 + 3 + 8;
        require(message.size() > pdu + 4 && message[pdu] == '\xa0', "no GET");
        message[pdu] = '\xa2';
        message.replace(message.size() - 2, 2, std::string("\x43\x03\x01\x02\x03", 5));
        // Every length around the value grows by three; all are short ones.
        message[1] = static_cast<char>(message[1] + 3);
        message[pdu + 1] = static_cast<char>(message[pdu + 1] + 3);
        // The identifier, then error-status and error-index with one octet each.
        const std::size_t list = pdu + 4 + static_cast<unsigned char>(message[pdu + 3]) + 3 + 3;
        message[list + 1] = static_cast<char>(message[list + 1] + 3);
        message[list + 3] = static_cast<char>(message[list + 3] + 3);
    }

    void sendFrom(std::uint32_t source, const sockaddr_in& asker, std::string& message) const
    {
        in_pktinfo from = {};
        from.ipi_spec_dst.s_addr = htonl(source);
        alignas(cmsghdr) char control[CMSG_SPACE(sizeof from)] = {};
        iovec part = {message.data(), message.size()};
        sockaddr_in to = asker;
        msghdr header = {};
        header.msg_name = &to;
        header.msg_namelen = sizeof to;
        header.msg_iov = &part;
        header.msg_iovlen = 1;
        header.msg_control = control;
        header.msg_controllen = sizeof control;
        cmsghdr* const entry = CMSG_FIRSTHDR(&header);
        entry->cmsg_level = IPPROTO_IP;
        entry->cmsg_type = IP_PKTINFO;
        entry->cmsg_len = CMSG_LEN(sizeof from);
        std::memcpy(CMSG_DATA(entry), &from, sizeof from);
        require(sendmsg(m_socket, &header, 0) >= 0, "answer");
    }

    long m_answers;
    int m_socket;
    std::uint16_t m_port = 0;
};

double threadSeconds()
{
    timespec now = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

void measure(long answers)
{
    const oid name[] = {1, 3, 6, 1, 2, 1, 1, 3, 0};
    const OID sysUpTime(name, std::size(name), 0);
    SNMPSession::Initialize("SNMPDiscovery", "", "", "");
    Poco::AutoPtr<Application> application(new Application);
    Agents agents(answers);
    SNMPSession session(SNMP_VERSION_1, "public", agents.host(), true);
    std::thread sender(&Agents::serve, &agents);
    const double before = threadSeconds();
    session.Get(sysUpTime, &count, static_cast<SNMPDiscoveryApp*>(application.get()),
                Poco::Timespan(timeout.count(), 0));
    const double seconds = threadSeconds() - before;
    sender.join();
    std::printf("{\"answers\": %ld, \"read\": %zu, \"seconds\": %.6f}\n", answers,
                application->m_responders.size(), seconds);
}

} // namespace

int main(int argc, char** argv)
{
    char* end = nullptr;
    const long answers = argc == 2 ? std::strtol(argv[1], &end, 10) : -1;
    if (answers < 0 || answers > mostAnswers || *end != '\0') {
        (void) std::fprintf(stderr, "usage: answer_road ANSWERS (0 to %ld)\n", mostAnswers);
        return 2;
    }
    try {
        measure(answers);
    } catch (const std::exception& exception) {
        (void) std::fprintf(stderr, "answer_road: %s\n", exception.what());
        return 1;
    }
    return 0;
}
