#pragma once

#include <net-snmp/net-snmp-config.h>

#include <net-snmp/types.h>

#include <Poco/Mutex.h>

#include <cstddef>
#include <string>

namespace UVARNETSNMP {

/// An SNMP object identifier: an owned, growable array of sub-identifiers in Net-SNMP's own
/// representation, so that oidptr() and oidsize() can be handed straight to its calls.
///
/// An OID is empty (no array, length and capacity 0) or holds an array of which the first `length`
/// of `capacity` sub-identifiers are in use. The array comes from netsnmp_malloc, is released with
/// netsnmp_free and is never shared: a copy allocates its own. There is no move, because assigning
/// an empty OID changes nothing and a moved-from OID is empty.
///
/// Exhausted memory never throws: an operation that cannot get an array leaves the OID empty, a
/// rendering that cannot get its text is empty. The one exception of the class is
/// Poco::SystemException, from toValue() and toString(int) when s_mutex cannot be locked.
///
/// A sub-identifier is as wide as Net-SNMP's oid, an unsigned long: 64 bits on most systems, 32 on
/// those of 32 bits. SNMP allows no more than 32 (RFC 2578, section 3.5), so that every object can
/// be named on both.
///
/// Threads: an OID is not locked; concurrent use of one object needs outside locking.
class OID
{
public:
    OID() noexcept = default;
    /// A copy of `length` sub-identifiers at `ids`, with room for max(length, capacity) of them.
    /// Empty if `length` is 0, whatever the capacity, or if `ids` is null.
    OID(const oid* ids, std::size_t length, std::size_t capacity) noexcept;

    /// The name `text` as snmp_parse_oid reads it: dotted numbers, or a symbolic name that the
    /// loaded MIB modules define. Length and capacity are the number of sub-identifiers parsed.
    /// Empty if `text` is null, cannot be parsed or has more than MAX_OID_LEN (128)
    /// sub-identifiers. Not explicit: a text stands wherever an OID is asked for. Not for texts of
    /// strangers: Net-SNMP 5.9.3 reads beyond the end of one with a quotation mark that is not
    /// closed, and takes a name that it does not know for a regular expression, whose search has no
    /// bounds.
    OID(const char* text) noexcept;
    /// The same as OID(text), or, if `lastOnly`, the last sub-identifier of that name alone.
    OID(const char* text, bool lastOnly) noexcept;
    /// A copy with room for as many sub-identifiers as `other` has; empty if `other` has none.
    OID(const OID& other) noexcept;
    ~OID();
    /// Takes over the contents of `other`, by the rules of dup(). Assigning an OID without
    /// sub-identifiers leaves this one as it is, on purpose: only clear() empties an OID.
    OID& operator=(const OID& other) noexcept;

    /// Replaces the contents with a copy of `length` sub-identifiers at `ids`. Does nothing if
    /// `length` is 0 or `ids` is null. The array is replaced only when max(length, capacity)
    /// exceeds the current capacity, and that maximum becomes the capacity even when a larger array
    /// was kept. `ids` may lie in this OID's own array unless the array is replaced. The result is
    /// 0 on every path, success or not, on purpose: ask valid() whether there was memory.
    int dup(const oid* ids, std::size_t length, std::size_t capacity) noexcept;

    /// Releases the array: the OID is empty.
    void clear() noexcept;
    /// The sub-identifier at `index`, or a reference to a lasting 0 beyond the length.
    const oid& operator[](std::size_t index) const noexcept;

    /// Whether both hold the same sub-identifiers. Two OIDs without any are not equal, on purpose:
    /// an OID that could not be built matches nothing.
    bool operator==(const OID& other) const noexcept;
    /// Whether the OID has at least one sub-identifier.
    bool valid() const noexcept { return m_array != nullptr && m_length != 0; }
    /// Whether `other` lies strictly below this OID in the tree. An OID is not below itself.
    bool subnode(const OID& other) const noexcept;

    /// Removes as many leading sub-identifiers as this OID shares with `base`, and `extra` more,
    /// but at most all of them; an OID trimmed to nothing keeps its array. False, with nothing
    /// changed, if there is nothing to remove.
    bool trim(const OID& base, std::size_t extra) noexcept;

    /// Appends the sub-identifiers of `other`, growing to exactly the sum of both lengths when the
    /// capacity does not suffice. False, with nothing changed, if `other` has none, is this OID
    /// itself, or does not fit: an OID of length 0 does not grow, so that its first sub-identifiers
    /// come from a constructor, dup() or assignment. False also when memory is exhausted, which
    /// leaves this OID as it was or empty.
    bool append(const OID& other) noexcept;

    /// The array, null when there is none, valid until the OID changes; and the number in use.
    const oid* oidptr() const noexcept { return m_array; }
    std::size_t oidsize() const noexcept { return m_length; }

    /// The value of the variable binding `var`, which this OID names. An octet string is its bytes
    /// without the zero bytes at its end; an integer for whose node the MIB lists labels is its
    /// label; all else is what Net-SNMP prints, briefly and with time-ticks as a number (hundredths
    /// of a second). Empty if `var` is null, this OID is not valid, or printing fails.
    ///
    /// Net-SNMP's settings for quick printing and numeric time-ticks are put back afterwards,
    /// except when printing fails: they then stay on, on purpose.
    std::string toValue(variable_list* var) const;

    /// The OID as Net-SNMP prints it in one of its output formats (NETSNMP_OID_OUTPUT_SUFFIX 1 to
    /// NETSNMP_OID_OUTPUT_NONE 6; other values are passed on unchecked). Empty if it is not valid
    /// or cannot be printed. The process-wide output format is the same afterwards.
    std::string toString(int format) const;
    /// The OID as Net-SNMP prints it in the process-wide output format, read without s_mutex.
    std::string toString() const;

    /// Decimal numbers joined by dots, none in front: "1.3.6.1.2.1.1.3.0". Each is the low half of
    /// the sub-identifier as a signed 32-bit number, which is part of the format: 4294967295 reads
    /// "-1". Empty if the OID is not valid.
    std::string toDottedNotation() const;

    /// Held by toValue() and toString(int) from their first change of Net-SNMP's process-wide print
    /// settings until they are put back. Open to whoever changes these settings too. Lives from the
    /// dynamic initialisation of statics to the exit of the process.
    static Poco::Mutex s_mutex;

private:
    bool allocate(std::size_t capacity) noexcept;
    void grow(std::size_t capacity) noexcept;

    oid* m_array = nullptr;
    std::size_t m_length = 0;
    std::size_t m_capacity = 0;
};

} // namespace UVARNETSNMP
