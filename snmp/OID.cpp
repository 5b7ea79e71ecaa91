#include "snmp/OID.h"

#include <net-snmp/mib_api.h>
#include <net-snmp/session_api.h>

#include <algorithm>
#include <cstring>
#include <limits>

namespace UVARNETSNMP {

namespace {

oid* allocateArray(std::size_t count) noexcept
{
    if (count > std::numeric_limits<std::size_t>::max() / sizeof(oid)) {
        return nullptr;
    }
    return static_cast<oid*>(netsnmp_malloc(count * sizeof(oid)));
}

void copyArray(oid* to, const oid* from, std::size_t count) noexcept
{
    std::memmove(to, from, count * sizeof(oid)); // dup() may copy within one array
}

/// How many leading sub-identifiers two arrays share.
std::size_t sharedFront(const oid* a, std::size_t aLength, const oid* b,
                        std::size_t bLength) noexcept
{
    const std::size_t shorter = std::min(aLength, bLength);
    std::size_t shared = 0;
    while (shared < shorter && a[shared] == b[shared]) {
        ++shared;
    }
    return shared;
}

} // namespace

OID::OID(const oid* ids, std::size_t length, std::size_t capacity) noexcept
{
    dup(ids, length, capacity);
}

OID::OID(const char* text) noexcept : OID(text, false) {}

OID::OID(const char* text, bool lastOnly) noexcept
{
    if (text == nullptr) {
        return;
    }
    oid buffer[MAX_OID_LEN];
    std::size_t count = MAX_OID_LEN;
    if (snmp_parse_oid(text, buffer, &count) == nullptr || count == 0) {
        return;
    }
    if (lastOnly) {
        dup(&buffer[count - 1], 1, 1);
    } else {
        dup(buffer, count, count);
    }
}

OID::OID(const OID& other) noexcept
{
    dup(other.m_array, other.m_length, other.m_capacity);
}

OID::~OID()
{
    clear();
}

OID& OID::operator=(const OID& other) noexcept
{
    if (this != &other) {
        dup(other.m_array, other.m_length, other.m_capacity);
    }
    return *this;
}

int OID::dup(const oid* ids, std::size_t length, std::size_t capacity) noexcept
{
    if (ids == nullptr || length == 0) {
        return 0;
    }
    const std::size_t needed = std::max(length, capacity);
    if (m_array == nullptr || m_capacity < needed) {
        clear();
        if (!allocate(needed)) {
            return 0;
        }
    }
    copyArray(m_array, ids, length);
    m_length = length;
    m_capacity = needed;
    return 0;
}

void OID::clear() noexcept
{
    if (m_array != nullptr) {
        netsnmp_free(m_array);
    }
    m_array = nullptr;
    m_length = 0;
    m_capacity = 0;
}

const oid& OID::operator[](std::size_t index) const noexcept
{
    static constexpr oid zero = 0;
    return m_array != nullptr && index < m_length ? m_array[index] : zero;
}

bool OID::operator==(const OID& other) const noexcept
{
    return m_length != 0 && m_length == other.m_length &&
           std::memcmp(m_array, other.m_array, m_length * sizeof(oid)) == 0;
}

bool OID::subnode(const OID& other) const noexcept
{
    return valid() && other.m_array != nullptr && other.m_length > m_length &&
           sharedFront(m_array, m_length, other.m_array, other.m_length) == m_length;
}

bool OID::trim(const OID& base, std::size_t extra) noexcept
{
    if (m_array == nullptr) {
        return false;
    }
    const std::size_t shared = sharedFront(m_array, m_length, base.m_array, base.m_length);
    const std::size_t removed = shared + std::min(extra, m_length - shared);
    if (removed == 0) {
        return false;
    }
    m_length -= removed;
    std::memmove(m_array, m_array + removed, m_length * sizeof(oid));
    return true;
}

bool OID::append(const OID& other) noexcept
{
    if (!other.valid() || this == &other) {
        return false;
    }
    const std::size_t sum = m_length + other.m_length;
    if (m_length != 0 && sum > m_capacity) {
        grow(sum);
    }
    // A failed grow() ends here too: the OID then is as small as before, or empty.
    if (m_length + other.m_length > m_capacity) {
        return false;
    }
    copyArray(m_array + m_length, other.m_array, other.m_length);
    m_length += other.m_length;
    return true;
}

bool OID::allocate(std::size_t capacity) noexcept
{
    m_array = allocateArray(capacity);
    if (m_array != nullptr) {
        m_capacity = capacity;
    }
    return m_array != nullptr;
}

/// Copies the sub-identifiers to a temporary array while its own is replaced, so that the OID never
/// has two arrays. Without memory for the temporary array nothing changes; without memory for the
/// new one the OID is left empty.
void OID::grow(std::size_t capacity) noexcept
{
    oid* const saved = allocateArray(capacity);
    if (saved == nullptr) {
        return;
    }
    const std::size_t length = m_length;
    copyArray(saved, m_array, length);
    clear();
    if (allocate(capacity)) {
        copyArray(m_array, saved, length);
        m_length = length;
    }
    netsnmp_free(saved);
}

} // namespace UVARNETSNMP
