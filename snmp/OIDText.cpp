// An OID, and the values that it names, as text. Net-SNMP prints by process-wide settings. Whoever
// changes one holds s_mutex until the setting is restored, or until printing has failed: a failed
// toValue() restores nothing (see OID.h).

#include "snmp/OID.h"

#include <net-snmp/library/default_store.h>
#include <net-snmp/mib_api.h>
#include <net-snmp/session_api.h>

#include <Poco/Any.h>
#include <Poco/Format.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

namespace UVARNETSNMP {

Poco::Mutex OID::s_mutex;

namespace {

/// A copy of the bytes, or an empty string when there is no memory for one.
std::string copyText(const char* bytes, std::size_t count) noexcept
{
    try {
        return std::string(bytes, count);
    } catch (const std::bad_alloc&) {
        return {};
    }
}

/// The text that one of Net-SNMP's sprint_realloc functions allocates.
class PrintBuffer
{
public:
    PrintBuffer() = default;
    PrintBuffer(const PrintBuffer&) = delete;
    PrintBuffer& operator=(const PrintBuffer&) = delete;
    ~PrintBuffer() { std::free(m_text); }

    bool printValue(const variable_list* var) noexcept
    {
        return sprint_realloc_by_type(&m_text, &m_size, &m_length, 1, var, nullptr, nullptr,
                                      nullptr) != 0;
    }
    bool printName(const oid* ids, std::size_t length) noexcept
    {
        return sprint_realloc_objid(&m_text, &m_size, &m_length, 1, ids, length) != 0;
    }
    /// Empty too when printing succeeded without a buffer.
    std::string text() const noexcept
    {
        if (m_text == nullptr) {
            return {};
        }
        const auto* const text = reinterpret_cast<const char*>(m_text);
        return copyText(text, std::strlen(text));
    }

private:
    u_char* m_text = nullptr;
    std::size_t m_size = 0;
    std::size_t m_length = 0;
};

/// Switches quick printing and numeric time-ticks on. There is deliberately no destructor that
/// restores them: a failed print leaves them on.
class BriefPrinting
{
public:
    BriefPrinting() noexcept
    {
        netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_QUICK_PRINT, 1);
        netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_NUMERIC_TIMETICKS, 1);
    }
    void restore() const noexcept
    {
        netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_QUICK_PRINT, m_quick);
        netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_NUMERIC_TIMETICKS, m_ticks);
    }

private:
    int m_ticks = netsnmp_ds_get_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_NUMERIC_TIMETICKS);
    int m_quick = netsnmp_ds_get_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_QUICK_PRINT);
};

/// The bytes of an octet string without the zero bytes at its end. The length is read as a signed
/// 32-bit count; a negative one, which no agent can send, means no bytes.
std::string octets(const variable_list& var) noexcept
{
    const auto* const bytes = reinterpret_cast<const char*>(var.val.string);
    auto count = static_cast<std::int32_t>(var.val_len);
    if (bytes == nullptr) {
        return {};
    }
    while (count > 0 && bytes[count - 1] == '\0') {
        --count;
    }
    return count > 0 ? copyText(bytes, static_cast<std::size_t>(count)) : std::string();
}

/// The label that the MIB gives an integer, or null. The first match in the list counts.
const char* enumerationLabel(const variable_list& var, const oid* ids, std::size_t length) noexcept
{
    if (var.type != ASN_INTEGER || var.val.integer == nullptr) {
        return nullptr;
    }
    const tree* const node = get_tree(ids, length, get_tree_head());
    if (node == nullptr) {
        return nullptr;
    }
    for (const enum_list* entry = node->enums; entry != nullptr; entry = entry->next) {
        if (entry->value == *var.val.integer) {
            return entry->label;
        }
    }
    return nullptr;
}

} // namespace

std::string OID::toValue(variable_list* var) const
{
    if (var == nullptr || !valid()) {
        return {};
    }
    PrintBuffer buffer;
    const Poco::Mutex::ScopedLock lock(s_mutex);
    const BriefPrinting brief;

    std::string result;
    if (var->type == ASN_OCTET_STR) {
        result = octets(*var);
    } else if (const char* label = enumerationLabel(*var, m_array, m_length)) {
        result = copyText(label, std::strlen(label));
    } else if (buffer.printValue(var)) {
        result = buffer.text();
    } else {
        return result;
    }
    brief.restore();
    return result;
}

std::string OID::toString(int format) const
{
    if (!valid()) {
        return {};
    }
    PrintBuffer buffer;
    const Poco::Mutex::ScopedLock lock(s_mutex);
    const int saved = netsnmp_ds_get_int(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_OID_OUTPUT_FORMAT);
    if (saved != format) {
        netsnmp_ds_set_int(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_OID_OUTPUT_FORMAT, format);
    }
    const bool printed = buffer.printName(m_array, m_length);
    if (saved != format) {
        netsnmp_ds_set_int(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_OID_OUTPUT_FORMAT, saved);
    }
    return printed ? buffer.text() : std::string();
}

std::string OID::toString() const
{
    PrintBuffer buffer;
    return valid() && buffer.printName(m_array, m_length) ? buffer.text() : std::string();
}

std::string OID::toDottedNotation() const
{
    try {
        std::string result;
        for (std::size_t i = 0; i < m_length; ++i) {
            if (!result.empty()) {
                result += '.';
            }
            result += Poco::format("%d", Poco::Any(static_cast<std::int32_t>(m_array[i])));
        }
        return result;
    } catch (const std::bad_alloc&) {
        return {};
    }
}

} // namespace UVARNETSNMP
