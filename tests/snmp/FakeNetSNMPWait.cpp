// The functions that stand in for what a wait calls: Net-SNMP's, select() and the clock of
// Poco::Timestamp.

#include "tests/snmp/FakeNetSNMP.h"

#include <gtest/gtest.h>

#include <net-snmp/library/large_fd_set.h>

#include <sys/select.h>

#include <cstdio>
#include <string>

using UVARNETSNMP::SessionHandle;

namespace {

std::string Text(const timeval& time)
{
    char text[40];
    (void) std::snprintf(text, sizeof text, "%ld.%06ld", static_cast<long>(time.tv_sec),
                         static_cast<long>(time.tv_usec));
    return text;
}

std::string Text(fd_set* set)
{
    std::string text;
    for (int descriptor = 0; set != nullptr && descriptor < FD_SETSIZE; ++descriptor) {
        if (FD_ISSET(descriptor, set)) {
            text += (text.empty() ? "" : " ") + std::to_string(descriptor);
        }
    }
    return set == nullptr ? "null" : "{" + text + "}";
}

/// A large set in brackets, with its room.
std::string Text(netsnmp_large_fd_set* set)
{
    std::string text = "room " + std::to_string(set->lfs_setsize) + ":";
    for (int descriptor = 0; descriptor < static_cast<int>(set->lfs_setsize); ++descriptor) {
        if (netsnmp_large_fd_is_set(descriptor, set) != 0) {
            text += " " + std::to_string(descriptor);
        }
    }
    return "[" + text + "]";
}

} // namespace

extern "C" {

netsnmp_transport* snmp_sess_transport(SessionHandle handle)
{
    FakeNetSNMP& fake = FakeNetSNMP::OfHandle(handle, __func__); // a mere question: not recorded
    fake.transport.sock = fake.descriptor;
    return &fake.transport;
}

int snmp_sess_select_info(SessionHandle handle, int* count, fd_set* set, timeval* time, int* block)
{
    FakeNetSNMP& fake = FakeNetSNMP::OfHandle(handle, __func__);
    fake.Record("snmp_sess_select_info(" + std::to_string(*count) + ", " + Text(set) + ", " +
                Text(*time) + ", " + std::to_string(*block) + ")");
    if (fake.descriptor >= FD_SETSIZE) {
        ADD_FAILURE() << "out of the set's bounds";
        return 0;
    }
    *count = fake.descriptor + 1;
    FD_SET(fake.descriptor, set);
    if (timercmp(&fake.nextResend, time, <)) {
        *time = fake.nextResend;
    }
    return 1;
}

int select(int count, fd_set* readable, fd_set* writable, fd_set* exceptional, timeval* time)
{
    FakeNetSNMP* const fake = FakeNetSNMP::CurrentOrNull();
    if (fake == nullptr) {
        return FakeNetSNMP::Real<decltype(select)>("select")(count, readable, writable, exceptional,
                                                             time);
    }
    fake->Record("select(" + std::to_string(count) + ", " + Text(readable) + ", " + Text(writable) +
                 ", " + Text(exceptional) + ", " + Text(*time) + ")");
    if (fake->onSelect) {
        return fake->onSelect();
    }
    fake->now += time->tv_sec * 1000000 + time->tv_usec;
    return 0;
}

int snmp_sess_select_info2(SessionHandle handle, int* count, netsnmp_large_fd_set* set,
                           timeval* time, int* block)
{
    FakeNetSNMP& fake = FakeNetSNMP::OfHandle(handle, __func__);
    fake.Record("snmp_sess_select_info2(" + std::to_string(*count) + ", " + Text(set) + ", " +
                Text(*time) + ", " + std::to_string(*block) + ")");
    *count = fake.descriptor + 1;
    netsnmp_large_fd_setfd(fake.descriptor, set);
    if (timercmp(&fake.nextResend, time, <)) {
        *time = fake.nextResend;
    }
    return 1;
}

int netsnmp_large_fd_set_select(int count, netsnmp_large_fd_set* readable,
                                netsnmp_large_fd_set* writable, netsnmp_large_fd_set* exceptional,
                                timeval* time)
{
    FakeNetSNMP& fake = FakeNetSNMP::Current(__func__);
    EXPECT_EQ(writable, nullptr);
    EXPECT_EQ(exceptional, nullptr);
    fake.Record("netsnmp_large_fd_set_select(" + std::to_string(count) + ", " + Text(readable) +
                ", " + Text(*time) + ")");
    if (fake.onSelect) {
        return fake.onSelect();
    }
    fake.now += time->tv_sec * 1000000 + time->tv_usec;
    return 0;
}

int snmp_sess_read2(SessionHandle handle, netsnmp_large_fd_set* set)
{
    FakeNetSNMP& fake = FakeNetSNMP::OfHandle(handle, __func__);
    fake.Record("snmp_sess_read2(" + Text(set) + ")");
    if (fake.onRead) {
        fake.onRead();
    }
    return 0;
}

void netsnmp_large_fd_set_init(netsnmp_large_fd_set* set, int size)
{
    const FakeNetSNMP* const fake = FakeNetSNMP::CurrentOrNull();
    if (fake != nullptr && fake->largeSetFails) {
        *set = {}; // what Net-SNMP leaves without memory: no room
        return;
    }
    FakeNetSNMP::Real<decltype(netsnmp_large_fd_set_init)>("netsnmp_large_fd_set_init")(set, size);
}

int snmp_sess_read(SessionHandle handle, fd_set* set)
{
    FakeNetSNMP& fake = FakeNetSNMP::OfHandle(handle, __func__);
    fake.Record("snmp_sess_read(" + Text(set) + ")");
    if (fake.onRead) {
        fake.onRead();
    }
    return 0;
}

void snmp_sess_timeout(SessionHandle handle)
{
    FakeNetSNMP::OfHandle(handle, __func__).Record("snmp_sess_timeout");
}

} // extern "C"

Poco::Timestamp::Timestamp()
{
    if (const FakeNetSNMP* const fake = FakeNetSNMP::CurrentOrNull()) {
        *this = fake->now;
    } else {
        update();
    }
}
