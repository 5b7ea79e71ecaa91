// The replacements of Net-SNMP's functions, of select() and of the clock of Poco::Timestamp.

#include "tests/snmp/helpers/FakeNetSNMP.h"

#include <gtest/gtest.h>

#include <net-snmp/library/large_fd_set.h>

#include <sys/select.h>

#include <cstdio>
#include <cstdlib>
#include <string>

using UVARNETSNMP::SessionHandle;

namespace {

std::string Text(const char* text)
{
    return text == nullptr ? "null" : "\"" + std::string(text) + "\"";
}

std::string Environment()
{
    const char* const mibs = std::getenv("MIBS"); // NOLINT(concurrency-mt-unsafe): one thread
    return std::string(" MIBS=") + Text(mibs);
}

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

void set_persistent_directory(const char* directory)
{
    FakeNetSNMP::Current(__func__).Record("set_persistent_directory(" + Text(directory) + ")" +
                                          Environment());
}

char* netsnmp_get_mib_directory()
{
    FakeNetSNMP::Current(__func__).Record("netsnmp_get_mib_directory()" + Environment());
    return nullptr;
}

void netsnmp_set_mib_directory(const char* directory)
{
    FakeNetSNMP::Current(__func__).Record("netsnmp_set_mib_directory(" + Text(directory) + ")" +
                                          Environment());
}

void netsnmp_init_mib_internals()
{
    FakeNetSNMP::Current(__func__).Record("netsnmp_init_mib_internals()" + Environment());
}

int add_mibdir(const char* directory)
{
    FakeNetSNMP::Current(__func__).Record("add_mibdir(" + Text(directory) + ")" + Environment());
    return 0;
}

void init_snmp(const char* type)
{
    FakeNetSNMP::Current(__func__).Record("init_snmp(" + Text(type) + ")" + Environment() +
                                          " name=" + Text(OpenBook::m_SNMPName.c_str()));
}

void snmp_shutdown(const char* type)
{
    FakeNetSNMP::Current(__func__).Record("snmp_shutdown(" + Text(type) + ")");
}

oid* snmp_duplicate_objid(const oid* name, size_t length)
{
    FakeNetSNMP::Current(__func__).Record("snmp_duplicate_objid(" +
                                          FakeNetSNMP::Text(name, length) + ")");
    return FakeNetSNMP::Real<decltype(snmp_duplicate_objid)>("snmp_duplicate_objid")(name, length);
}

int snmp_hex_to_binary(u_char** buffer, size_t* capacity, size_t* length, int mayGrow,
                       const char* text)
{
    FakeNetSNMP::Current(__func__).Record("snmp_hex_to_binary(room " + std::to_string(*capacity) +
                                          ", " + std::to_string(*length) + ", " +
                                          std::to_string(mayGrow) + ", " + Text(text) + ")");
    return FakeNetSNMP::Real<decltype(snmp_hex_to_binary)>("snmp_hex_to_binary")(
        buffer, capacity, length, mayGrow, text);
}

int generate_Ku(const oid* hash, u_int hashLength, const u_char* passPhrase,
                size_t passPhraseLength, u_char* key, size_t* keyLength)
{
    FakeNetSNMP& fake = FakeNetSNMP::Current(__func__);
    fake.Record("generate_Ku(" + FakeNetSNMP::Text(hash, hash == nullptr ? 0 : hashLength) +
                ", \"" + std::string(passPhrase, passPhrase + passPhraseLength) + "\", room " +
                std::to_string(*keyLength) + ")");
    return fake.keysAreDerived ? FakeNetSNMP::Real<decltype(generate_Ku)>("generate_Ku")(
                                     hash, hashLength, passPhrase, passPhraseLength, key, keyLength)
                               : SNMPERR_GENERR;
}

SessionHandle snmp_sess_open(netsnmp_session* session)
{
    FakeNetSNMP& fake = FakeNetSNMP::Current(__func__);
    fake.Record("snmp_sess_open");
    fake.Open(*session);
    if (!fake.openSucceeds) {
        return nullptr;
    }
    ++fake.openHandles;
    return reinterpret_cast<SessionHandle>(&fake.live);
}

netsnmp_session* snmp_sess_session(SessionHandle handle)
{
    FakeNetSNMP& fake = FakeNetSNMP::OfHandle(handle, __func__);
    fake.Record("snmp_sess_session");
    return &fake.live;
}

int snmp_sess_close(SessionHandle handle)
{
    FakeNetSNMP& fake = FakeNetSNMP::OfHandle(handle, __func__);
    fake.Record("snmp_sess_close");
    EXPECT_EQ(fake.openHandles--, 1) << "closed again";
    return 1;
}

snmp_pdu* snmp_pdu_create(int command)
{
    FakeNetSNMP& fake = FakeNetSNMP::Current(__func__);
    fake.Record("snmp_pdu_create(" + std::to_string(command) + ")");
    if (fake.createFails) {
        return nullptr;
    }
    snmp_pdu* const pdu = fake.MakePDU("request" + std::to_string(++fake.created), command);
    pdu->errstat = fake.presetNonRepeaters.value_or(pdu->errstat);
    return pdu;
}

netsnmp_variable_list* snmp_add_null_var(snmp_pdu* pdu, const oid* name, size_t length)
{
    FakeNetSNMP& fake = FakeNetSNMP::Current(__func__);
    fake.Record("snmp_add_null_var(" + fake.NameOf(pdu) + ", " + FakeNetSNMP::Text(name, length) +
                ")");
    return FakeNetSNMP::Real<decltype(snmp_add_null_var)>("snmp_add_null_var")(pdu, name, length);
}

snmp_pdu* snmp_clone_pdu(snmp_pdu* pdu)
{
    FakeNetSNMP& fake = FakeNetSNMP::Current(__func__);
    fake.Record("snmp_clone_pdu(" + fake.NameOf(pdu) + ")");
    if (fake.cloneFails) {
        return nullptr;
    }
    snmp_pdu* const copy = FakeNetSNMP::Real<decltype(snmp_clone_pdu)>("snmp_clone_pdu")(pdu);
    fake.Name(copy, "copy" + std::to_string(++fake.cloned));
    return copy;
}

void snmp_free_pdu(snmp_pdu* pdu)
{
    if (FakeNetSNMP* const fake = FakeNetSNMP::CurrentOrNull()) {
        fake->Record("snmp_free_pdu(" + fake->NameOf(pdu) + ")");
        EXPECT_TRUE(pdu == nullptr || pdu != fake->Outstanding()) << "Net-SNMP's now";
    }
    FakeNetSNMP::Real<decltype(snmp_free_pdu)>("snmp_free_pdu")(pdu);
}

int snmp_sess_synch_response(SessionHandle handle, snmp_pdu* request, snmp_pdu** response)
{
    FakeNetSNMP& fake = FakeNetSNMP::OfHandle(handle, __func__);
    fake.Record("snmp_sess_synch_response(" + fake.NameOf(request) + ")");
    fake.Send(*request);
    FakeNetSNMP::Real<decltype(snmp_free_pdu)>("snmp_free_pdu")(
        request); // in every case, as Net-SNMP does
    *response = fake.response;
    return fake.status;
}

int snmp_sess_send(SessionHandle handle, snmp_pdu* request)
{
    FakeNetSNMP& fake = FakeNetSNMP::OfHandle(handle, __func__);
    fake.Record("snmp_sess_send(" + fake.NameOf(request) + ")");
    fake.Send(*request);
    const int requestID = fake.onSend ? fake.onSend(*request) : 4711;
    if (requestID != 0) {
        fake.SetOutstanding(request);
    }
    return requestID;
}

// For the wait.

netsnmp_transport* snmp_sess_transport(SessionHandle handle)
{
    FakeNetSNMP& fake = FakeNetSNMP::OfHandle(handle, __func__); // not recorded: it changes nothing
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
