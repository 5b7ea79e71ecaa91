#pragma once

#include "snmp/ByteString.h"

#include <cstddef>
#include <map>
#include <string>

namespace UVARNETSNMP {

/// The named parameters from which a session fills its credentials: the community of SNMPv1 and
/// SNMPv2c, and the user-based security settings of SNMPv3 (RFC 3414).
///
/// The set stores whatever it is given. Keys and values are case-sensitive. A session reads these
/// keys, all optional, and ignores every other one:
///
///     community        community, any bytes
///     securityname     user name
///     contextname      context name
///     securitylevel    "NoAuthNoPriv", "AuthNoPriv" or "AuthPriv"
///     authprotocol     "MD5" or "SHA"
///     privprotocol     "DES" or "AES", see below
///     authpassphrase   pass phrase from which the authentication key is derived, see below
///     privpassphrase   pass phrase from which the privacy key is derived, see below
///     securityengid    security engine ID, hexadecimal text of 5 to 32 octets
///     contextengid     context engine ID, hexadecimal text of 5 to 32 octets
///
/// A pass phrase has at least eight characters. From a shorter one, or without an authentication
/// protocol, no key can be derived: the session then uses a key of zeros, which everybody knows.
/// Check the length before. The session checks neither it nor the derivation, on purpose; at most
/// Net-SNMP's log has a message.
///
/// "AES" does not select AES, on purpose: the session gives Net-SNMP that protocol without its
/// length, and Net-SNMP then takes its default privacy protocol. That is DES, unless Net-SNMP was
/// built without it or its configuration names another ("defPrivType AES", see snmp.conf(5)).
///
/// A missing key reads as an empty value. Only construction, copying and LookupString throw, when
/// memory is exhausted.
///
/// Threads: concurrent reads of one object are safe; a write needs outside locking.
class SNMPSecurity
{
public:
    /// An empty set.
    SNMPSecurity() = default;

    /// A copy of every entry, unchanged. Neither this nor the next is explicit: a map stands
    /// wherever a set is asked for.
    SNMPSecurity(const std::map<std::string, ByteString>& params);

    /// Every entry with its value cut at the first NUL character, on purpose: a value given as text
    /// ends where a C string would. An empty value is kept: its key is present.
    SNMPSecurity(const std::map<std::string, std::string>& params);

    /// The value of `key`, valid while the set is unchanged. For a missing key it is an empty
    /// string that all such look-ups share and that lives until the process exits.
    const ByteString& Lookup(const std::string& key) const noexcept;

    /// The value of `key` read as NUL-terminated text: bytes after the first NUL are dropped. Empty
    /// for a missing key.
    std::string LookupString(const std::string& key) const;

    /// Stores in `*out` a copy of the value of `key`, all its bytes followed by one NUL, and in
    /// `*length` the number of its bytes without that NUL. The caller owns the copy and releases it
    /// with free(), as Net-SNMP does with the texts of its sessions.
    ///
    /// When the key is missing or memory is exhausted, `*length` is 0 and `*out` is unchanged:
    /// preset it to null. Either pointer may be null if that result is not wanted.
    void LookupDuplicate(const std::string& key, unsigned char** out,
                         std::size_t* length) const noexcept;

    /// The same as LookupDuplicate, for the fields that Net-SNMP declares as text.
    void LookupDuplicateString(const std::string& key, char** out,
                               std::size_t* length) const noexcept;

private:
    std::map<std::string, ByteString> m_params;
};

} // namespace UVARNETSNMP
