#include "snmp/SNMPSecurity.h"

#include <stdlib.h> // NOLINT(modernize-deprecated-headers): malloc by its plain name

#include <algorithm>

namespace UVARNETSNMP {

namespace {

using Params = std::map<std::string, ByteString>;

ByteString upToFirstNul(const std::string& text)
{
    return ByteString(text.begin(), std::find(text.begin(), text.end(), '\0'));
}

template <class Char>
void duplicate(const Params& params, const std::string& key, Char** out,
               std::size_t* length) noexcept
{
    std::size_t count = 0;
    const auto entry = params.find(key);
    if (entry != params.end()) {
        const ByteString& value = entry->second;
        // Allocated even without `out`, because the length says whether there was memory.
        if (auto* const copy = static_cast<Char*>(malloc(value.size() + 1))) {
            count = value.size();
            if (out != nullptr) {
                std::copy(value.begin(), value.end(), copy);
                copy[count] = 0;
                *out = copy;
            } else {
                free(copy);
            }
        }
    }
    if (length != nullptr) {
        *length = count;
    }
}

} // namespace

SNMPSecurity::SNMPSecurity(const std::map<std::string, ByteString>& params) : m_params(params) {}

SNMPSecurity::SNMPSecurity(const std::map<std::string, std::string>& params)
{
    for (const auto& [key, value] : params) {
        m_params.emplace_hint(m_params.end(), key, upToFirstNul(value));
    }
}

const ByteString& SNMPSecurity::Lookup(const std::string& key) const noexcept
{
    static const ByteString dummy;
    const auto entry = m_params.find(key);
    return entry == m_params.end() ? dummy : entry->second;
}

std::string SNMPSecurity::LookupString(const std::string& key) const
{
    const ByteString& value = Lookup(key);
    return std::string(value.begin(), std::find(value.begin(), value.end(), 0));
}

void SNMPSecurity::LookupDuplicate(const std::string& key, unsigned char** out,
                                   std::size_t* length) const noexcept
{
    duplicate(m_params, key, out, length);
}

void SNMPSecurity::LookupDuplicateString(const std::string& key, char** out,
                                         std::size_t* length) const noexcept
{
    duplicate(m_params, key, out, length);
}

} // namespace UVARNETSNMP
