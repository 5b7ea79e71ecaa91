// The functions that stand in for Net-SNMP's: set-up, opening, PDUs.

#include "tests/snmp/FakeNetSNMP.h"

#include <gtest/gtest.h>

#include <cstdlib>

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

} // extern "C"
