#include "tests/snmp/helpers/FaultPoints.h"

#include <net-snmp/net-snmp-config.h>

#include <net-snmp/net-snmp-includes.h>

#include <sys/select.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <new>
#include <thread>

namespace {

thread_local bool counting = false;
thread_local int left = 0;
thread_local const char* failedFunction = "";

std::atomic<int> openings{0};
std::atomic<bool> openedAtOnce{false};

} // namespace

FaultPoints::FaultPoints(int due)
{
    left = due;
    failedFunction = "";
    counting = true;
}

FaultPoints::~FaultPoints()
{
    counting = false;
}

void FaultPoints::stopCounting()
{
    counting = false;
}

bool FaultPoints::sessionsWereOpenedAtOnce()
{
    return openedAtOnce;
}

std::string FaultPoints::failed()
{
    const bool former = counting;
    counting = false;
    std::string name = failedFunction;
    counting = former;
    return name;
}

bool FaultPoints::isDue(const char* function)
{
    if (!counting || --left != 0) {
        return false;
    }
    failedFunction = function;
    errno = ENOMEM;
    return true;
}

// __real_NAME and __wrap_NAME are the names of the linker's option --wrap=NAME.
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl*)

#define FAULT_POINT(Result, name, parameters, arguments, failure)                                  \
    Result __real_##name parameters;                                                               \
    Result __wrap_##name parameters;                                                               \
    Result __wrap_##name parameters                                                                \
    {                                                                                              \
        return FaultPoints::isDue(#name) ? (failure) : __real_##name arguments;                    \
    }

extern "C" {

FAULT_POINT(void*, malloc, (size_t size), (size), nullptr)
FAULT_POINT(void*, netsnmp_malloc, (size_t size), (size), nullptr)
FAULT_POINT(oid*, snmp_parse_oid, (const char* text, oid* name, size_t* length),
            (text, name, length), nullptr)
FAULT_POINT(oid*, snmp_duplicate_objid, (const oid* name, size_t length), (name, length), nullptr)
FAULT_POINT(int, snmp_hex_to_binary,
            (u_char * *buffer, size_t* room, size_t* length, int grow, const char* text),
            (buffer, room, length, grow, text), 0)
FAULT_POINT(int, generate_Ku,
            (const oid* hash, u_int hashLength, const u_char* phrase, size_t phraseLength,
             u_char* key, size_t* keyLength),
            (hash, hashLength, phrase, phraseLength, key, keyLength), SNMPERR_GENERR)
FAULT_POINT(netsnmp_session*, snmp_sess_session, (void* handle), (handle), nullptr)
FAULT_POINT(netsnmp_transport*, snmp_sess_transport, (void* handle), (handle), nullptr)
FAULT_POINT(netsnmp_pdu*, snmp_pdu_create, (int type), (type), nullptr)
FAULT_POINT(netsnmp_pdu*, snmp_clone_pdu, (netsnmp_pdu * pdu), (pdu), nullptr)
FAULT_POINT(netsnmp_variable_list*, snmp_add_null_var,
            (netsnmp_pdu * pdu, const oid* name, size_t length), (pdu, name, length), nullptr)
FAULT_POINT(int, snmp_sess_send, (void* handle, netsnmp_pdu* pdu), (handle, pdu), 0)
FAULT_POINT(int, snmp_sess_select_info,
            (void* handle, int* count, fd_set* set, timeval* time, int* block),
            (handle, count, set, time, block), 0)
FAULT_POINT(int, select, (int count, fd_set* in, fd_set* out, fd_set* other, timeval* time),
            (count, in, out, other, time), -1)
FAULT_POINT(int, snmp_sess_read, (void* handle, fd_set* set), (handle, set), -1)

int __real_snmp_sess_synch_response(void* handle, netsnmp_pdu* pdu, netsnmp_pdu** response);
int __wrap_snmp_sess_synch_response(void* handle, netsnmp_pdu* pdu, netsnmp_pdu** response);
/// Net-SNMP frees the request when it fails, too.
int __wrap_snmp_sess_synch_response(void* handle, netsnmp_pdu* pdu, netsnmp_pdu** response)
{
    if (FaultPoints::isDue("snmp_sess_synch_response")) {
        snmp_free_pdu(pdu);
        return STAT_ERROR;
    }
    return __real_snmp_sess_synch_response(handle, pdu, response);
}

void* __real_snmp_sess_open(netsnmp_session* session);
void* __wrap_snmp_sess_open(netsnmp_session* session);
void* __wrap_snmp_sess_open(netsnmp_session* session)
{
    if (FaultPoints::isDue("snmp_sess_open")) {
        return nullptr;
    }
    if (++openings > 1) {
        openedAtOnce = true;
    }
    std::this_thread::yield(); // so that another thread can enter now
    void* const handle = __real_snmp_sess_open(session);
    --openings;
    return handle;
}

/// operator new and new[], by their mangled names on 64 bits.
void* __real__Znwm(size_t size);
void* __wrap__Znwm(size_t size);
void* __wrap__Znwm(size_t size)
{
    if (FaultPoints::isDue("operator new")) {
        throw std::bad_alloc();
    }
    return __real__Znwm(size);
}
void* __real__Znam(size_t size);
void* __wrap__Znam(size_t size);
void* __wrap__Znam(size_t size)
{
    if (FaultPoints::isDue("operator new[]")) {
        throw std::bad_alloc();
    }
    return __real__Znam(size);
}

} // extern "C"

// NOLINTEND(bugprone-reserved-identifier,cert-dcl*)
