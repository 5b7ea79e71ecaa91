#pragma once

#include <net-snmp/net-snmp-config.h>

#include <net-snmp/types.h>

#include <Poco/Mutex.h>

#include <cstddef>
#include <string>

namespace UVARNETSNMP {

/// An SNMP object identifier: an owned, growable array of sub-identifiers in Net-SNMP's
/// representation. oidptr() and oidsize() can be passed to Net-SNMP's calls as they are.
///
/// An OID is empty (no array, length and capacity 0), or it has an array of `capacity`
/// sub-identifiers, of which the first `length` are in use. The array comes from netsnmp_malloc, is
/// released with netsnmp_free and is never shared: a copy allocates its own. There is no move: a
/// moved-from OID would be empty, and assigning an empty OID changes nothing.
///
/// Nothing throws when memory is exhausted. An operation that gets no array leaves the OID empty; a
/// text that gets no memory is empty. toValue() and toString(int) throw Poco::SystemException when
/// s_mutex cannot be locked; nothing else throws.
///
/// A sub-identifier has the width of Net-SNMP's oid, an unsigned long: 64 bits on most systems, 32
/// on 32-bit ones. SNMP allows 32 bits (RFC 2578, section 3.5), so either can name every object. In a
/// text, a number that is too large becomes the largest: "1.3.4294967296" names 1.3.4294967295 where
/// a sub-identifier has 32 bits.
///
/// Threads: an OID is not locked; concurrent use of one object needs outside locking.
class OID
{
public:
    /// An empty OID.
    OID() noexcept = default;
    /// A copy of `length` sub-identifiers at `ids`, with room for max(length, capacity) of them.
    /// Empty if `length` is 0, whatever the capacity, or if `ids` is null.
    OID(const oid* ids, std::size_t length, std::size_t capacity) noexcept;

    /// The name `text` as snmp_parse_oid reads it: dotted numbers, or a symbolic name that the
    /// loaded MIB modules define. Length and capacity are the number of sub-identifiers parsed.
    /// Empty if `text` is null, cannot be parsed or has more than MAX_OID_LEN (128)
    /// sub-identifiers. Not explicit, so that a text can be passed as an OID.
    ///
    /// Do not pass texts of strangers. Net-SNMP 5.9.3 reads beyond the end of a text with an
    /// unclosed quotation mark, and searches an unknown name as a regular expression, without
    /// bounds.
    OID(const char* text) noexcept;
    /// The same as OID(text), or, if `lastOnly`, the last sub-identifier of that name alone.
    OID(const char* text, bool lastOnly) noexcept;
    /// A copy with room for as many sub-identifiers as `other` has; empty if `other` has none.
    OID(const OID& other) noexcept;
    /// Releases the array.
    ~OID();
    /// Copies the contents of `other` by the rules of dup(). Assigning an OID without
    /// sub-identifiers changes nothing, on purpose: only clear() empties an OID.
    OID& operator=(const OID& other) noexcept;

    /// Replaces the contents with a copy of `length` sub-identifiers at `ids`. Does nothing if
    /// `length` is 0 or `ids` is null. The array is replaced only when max(length, capacity)
    /// exceeds the current capacity, and that maximum becomes the capacity even when a larger array
    /// was kept. `ids` may lie in this OID's own array unless the array is replaced.
    ///
    /// Deliberately 0 in every case; valid() says whether there was memory.
    int dup(const oid* ids, std::size_t length, std::size_t capacity) noexcept;

    /// Releases the array: the OID is empty.
    void clear() noexcept;
    /// The sub-identifier at `index`. Beyond the length: a reference to a 0 of static lifetime.
    const oid& operator[](std::size_t index) const noexcept;

    /// Whether both hold the same sub-identifiers. Two OIDs without any are not equal, on purpose:
    /// an OID that could not be built matches nothing.
    bool operator==(const OID& other) const noexcept;
    /// Whether the OID has at least one sub-identifier.
    bool valid() const noexcept { return m_array != nullptr && m_length != 0; }
    /// Whether `other` lies strictly below this OID in the tree. An OID is not below itself.
    bool subnode(const OID& other) const noexcept;

    /// Removes as many leading sub-identifiers as this OID shares with `base`, and `extra` more,
    /// but at most all of them. An OID trimmed to nothing keeps its array. If there is nothing to
    /// remove: false, and nothing changes.
    bool trim(const OID& base, std::size_t extra) noexcept;

    /// Appends the sub-identifiers of `other`. If the capacity does not suffice, the array grows to
    /// exactly the sum of both lengths, except that an OID of length 0 deliberately does not grow:
    /// its first sub-identifiers come from a constructor, dup() or assignment.
    ///
    /// False, and nothing changes, if `other` is this OID, has no sub-identifiers or does not fit.
    /// False too when memory is exhausted; this OID is then unchanged or empty.
    bool append(const OID& other) noexcept;

    /// The array, valid until the OID changes; null if there is none.
    const oid* oidptr() const noexcept { return m_array; }
    /// How many sub-identifiers are in use.
    std::size_t oidsize() const noexcept { return m_length; }

    /// The value of the variable binding `var`, which this OID names, as text. For an octet string
    /// these are its bytes, without the zero bytes at its end. For an integer it is the label that
    /// the MIB gives that value at this node, if any. Everything else is printed by Net-SNMP, in
    /// brief form and with time-ticks as a number (hundredths of a second). Empty if `var` is null,
    /// this OID is not valid or printing fails.
    ///
    /// Net-SNMP's settings for quick printing and numeric time-ticks are restored afterwards. Only
    /// when printing fails do they stay on; that is deliberate.
    std::string toValue(variable_list* var) const;

    /// The OID as Net-SNMP prints it in one of its output formats (NETSNMP_OID_OUTPUT_SUFFIX 1 to
    /// NETSNMP_OID_OUTPUT_NONE 6; other values are passed on unchecked). Empty if it is not valid
    /// or cannot be printed. The process-wide output format is restored afterwards.
    std::string toString(int format) const;
    /// The OID as Net-SNMP prints it in the process-wide output format, read without s_mutex.
    std::string toString() const;

    /// Decimal numbers joined by dots, without a leading dot: "1.3.6.1.2.1.1.3.0". Each number is
    /// the low 32 bits of the sub-identifier as a signed integer, so 4294967295 reads "-1"; that is
    /// a deliberate part of the format. Empty if the OID is not valid.
    std::string toDottedNotation() const;

    /// toValue() and toString(int) hold it while they have changed Net-SNMP's process-wide print
    /// settings. Public for others that change these settings. Lives from the dynamic
    /// initialisation of statics until the process exits.
    static Poco::Mutex s_mutex;

private:
    bool allocate(std::size_t capacity) noexcept;
    void grow(std::size_t capacity) noexcept;

    oid* m_array = nullptr;
    std::size_t m_length = 0;
    std::size_t m_capacity = 0;
};

} // namespace UVARNETSNMP
