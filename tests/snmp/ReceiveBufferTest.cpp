// The size of the sessions' receive buffers, with the real Net-SNMP and the system's own sockets.

#include "tests/snmp/SNMPSessionLoopback.h"

#include <gtest/gtest.h>

#include <sys/socket.h>

namespace {

/// Gives Net-SNMP's setting a value, as a configuration file does, and puts the former one back.
class Setting
{
public:
    explicit Setting(int octets) : m_former(Value()) { Set(octets); }
    ~Setting() { Set(m_former); }
    Setting(const Setting&) = delete;
    Setting& operator=(const Setting&) = delete;

    static int Value()
    {
        return netsnmp_ds_get_int(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_CLIENTRECVBUF);
    }

private:
    static void Set(int octets)
    {
        netsnmp_ds_set_int(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_CLIENTRECVBUF, octets);
    }

    int m_former;
};

/// What the system gave the socket of a new session.
int BufferOfASession()
{
    const Session session(SNMP_VERSION_1, "public", "127.0.0.1:1", true);
    const netsnmp_transport* const transport = snmp_sess_transport(session.m_sessionHandle);
    int octets = 0;
    socklen_t length = sizeof octets;
    if (transport == nullptr ||
        getsockopt(transport->sock, SOL_SOCKET, SO_RCVBUF, &octets, &length) != 0) {
        ADD_FAILURE() << "no socket";
    }
    return octets;
}

class ReceiveBuffer : public SNMPSessionLoopback
{};

TEST_F(ReceiveBuffer, IsAskedForWhereNothingIsConfigured)
{
    const Setting setting(0);
    UVARNETSNMP::SNMPSession::AskForReceiveBuffer(4194304);
    EXPECT_EQ(Setting::Value(), 4194304);
}

TEST_F(ReceiveBuffer, ReachesTheSocket)
{
    // A small one, which no system clamps; Linux doubles it for its own bookkeeping.
    const Setting setting(0);
    UVARNETSNMP::SNMPSession::AskForReceiveBuffer(8192);
    const int octets = BufferOfASession();
    EXPECT_GE(octets, 8192);
    EXPECT_LE(octets, 2 * 8192);
}

TEST_F(ReceiveBuffer, AConfiguredSizeStays)
{
    // 1 would be taken from a configuration too; a negative number tells Net-SNMP to ask for none.
    for (const int configured : {1, 65536, 8388608, -1}) {
        const Setting setting(configured);
        UVARNETSNMP::SNMPSession::AskForReceiveBuffer(4194304);
        EXPECT_EQ(Setting::Value(), configured);
    }
}

TEST_F(ReceiveBuffer, TheFirstWishStays)
{
    const Setting setting(0);
    UVARNETSNMP::SNMPSession::AskForReceiveBuffer(4194304);
    UVARNETSNMP::SNMPSession::AskForReceiveBuffer(65536);
    EXPECT_EQ(Setting::Value(), 4194304);
}

} // namespace
