#pragma once

#include "value/Any.h"

#include <cstddef>
#include <iosfwd>
#include <map>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

class Value;

// Arrays and hashes nest to any depth. They are copied and destroyed with a stack of bounded size,
// in time linear in their size. Destruction allocates nothing, so that it cannot fail.

namespace Dynamic {

/// Copies an array or a hash and takes it apart, at any depth.
template <typename Container>
struct TreeTraits
{
    /// A deep copy.
    static Container copy(const Container& held);
    /// Leaves no child that has children of its own.
    static void dismantle(Container& held) noexcept;
};

/// An array is a tree.
template <>
struct HolderTraits<std::vector<Value>> : TreeTraits<std::vector<Value>>
{};

/// So is a hash.
template <>
struct HolderTraits<std::map<std::string, Value>> : TreeTraits<std::map<std::string, Value>>
{};

} // namespace Dynamic

/// The kinds of Value, each with the type that its holder holds.
enum class ValueKind
{
    Nil,     ///< `void*`, null unless a holder of one was given, or an empty holder
    Boolean, ///< `bool`
    Integer, ///< `int`
    Long,    ///< `long long`
    Real,    ///< `double`
    String,  ///< `std::string`: bytes in any encoding
    Array,   ///< `std::vector<Value>`
    Hash,    ///< `std::map<std::string, Value>`
    Other    ///< any other type
};

/// A dynamically typed value with a script language's loose conversions: each gives a result for
/// every kind. A copy is deep: values share nothing. A value that was moved from is nil. No
/// operation's stack grows with the depth of arrays and hashes.
///
/// Any number of threads may read a value while none changes it.
class Value
{
public:
    using Array = std::vector<Value>;          ///< what an array holds
    using Hash = std::map<std::string, Value>; ///< ordered by the bytes of its keys
    using Kind = ValueKind;                    ///< short for the kinds

    /// Nil, with an empty holder.
    Value() noexcept = default;
    /// Nil, with a holder of a null `void*`; the address is not kept.
    Value(void* nothing);
    /// The same nil, from a literal.
    Value(std::nullptr_t) : m_holder(static_cast<void*>(nullptr)) {}
    /// A boolean.
    Value(bool flag) : m_holder(flag) {}
    /// An integer.
    Value(int number) : m_holder(number) {}
    /// A long.
    Value(long long number) : m_holder(number) {}
    /// A real.
    Value(double number) : m_holder(number) {}
    /// A string of the same bytes.
    Value(const std::string& text) : m_holder(text) {}
    /// A string that takes the bytes over.
    Value(std::string&& text) : m_holder(std::move(text)) {}
    /// An array that takes the elements over.
    Value(Array elements);
    /// A hash of copies.
    Value(const Hash& entries);
    /// A hash that takes the entries over.
    Value(Hash&& entries);
    /// A string; a null pointer gives the nil with a null `void*`.
    Value(const char* text);
    /// A string of the same bytes.
    Value(std::string_view text);
    /// A long on every platform, whatever the width of the argument's type.
    Value(long number);
    /// A long, which holds every such number.
    Value(unsigned number);
    /// A long. A number above the largest long fits no number kind; it becomes the string of its
    /// decimal digits, which keeps it whole.
    Value(unsigned long number);
    /// As from an unsigned long.
    Value(unsigned long long number);
    /// Other pointers would turn into a nil or a boolean in silence.
    template <typename T, typename = std::enable_if_t<!std::is_same_v<T, char>>>
    Value(T* pointer) = delete;
    /// Pointers to members, for the same reason.
    template <typename Member, typename Class>
    Value(Member Class::*pointer) = delete;
    /// The value of what `holder` holds. A type outside the eight gives Kind::Other: its texts are
    /// empty, its conversions zero, an empty container, and false but by the Ruby rules.
    /// Not simply `Value(const Any&)`: Any converts from every type, so that would accept
    /// everything.
    template <typename Holder,
              std::enable_if_t<std::is_same_v<std::decay_t<Holder>, Dynamic::Any>, int> = 0>
    explicit Value(Holder&& holder) noexcept(std::is_nothrow_constructible_v<Dynamic::Any, Holder>)
        : m_holder(std::forward<Holder>(holder))
    {}

    /// The content, to be read or changed in place: `value.holder().get<Value::Array>()`.
    const Dynamic::Any& holder() const noexcept { return m_holder; }
    /// The same, to be changed in place.
    Dynamic::Any& holder() noexcept { return m_holder; }
    /// Kind::Nil for both forms of nil.
    Kind kind() const noexcept;
    /// True for a boolean, integer, long, real or string.
    bool is_basic() const noexcept;
    /// Nil is false, a boolean itself. The Ruby rules make all else true. Without them a number is
    /// true exactly when it is zero, deliberately: callers rely on this inversion. A string is true
    /// unless empty, an array or hash always.
    bool to_b() const;
    /// A long deliberately keeps just its low 32 bits. A real is truncated; out of range or not a
    /// number, it gives the least int, as x86 processors do. A string gives the decimal number at
    /// its start after blanks, saturated, or 0. Nil, arrays and hashes give 0.
    int to_i() const;
    /// As to_i(), with 64 bits.
    long long to_l() const;
    /// A string gives the decimal number at its start, infinity when it overflows, or 0.0. Text
    /// that breaks off inside a number ("1e", "2.5e+") gives 0.0, as it does from a stream.
    double to_f() const;
    /// A copy of an array; an array [key, value] for each entry of a hash, in key order; nothing
    /// for nil and other types; else one element, this value.
    Array to_a() const;
    /// A copy of a hash; empty for every other kind, deliberately for an array of pairs too.
    Hash to_h() const;
    /// The text for people: strings bare, `[a, b]`, `{key => value}`, nil as `nil`. Reals in both
    /// texts deliberately have just six significant digits, or are inf, -inf or nan.
    std::string to_s() const;
    /// JSON on one line without blanks. Bytes above 31 stand for themselves: UTF-8 is not checked.
    std::string to_json() const;
    /// Inserts to_s() as a string: width, fill and adjustment apply to the whole text.
    friend std::ostream& operator<<(std::ostream& os, const Value& v);
    /// Reads one JSON value and leaves `in` right behind it: see JSONParser. Bad input of any kind
    /// gives the nil with a null `void*`, with all that was read until then consumed. Numbers are
    /// longs or reals, never integers. `in` must be good, or it throws std::ios_base::failure and
    /// its exception mask is left changed; and its mask should be empty, as it is by default:
    /// setting the mask back ends the program if the read has set a bit of it.
    static Value parse_json(std::istream& in);
    /// The scalar that `text` spells: true, false, nil or null (the empty nil), an integer if it
    /// is a number equal to an int, as 1e3 and " 7" are, another number as a real. Everything else
    /// is the string `text`, as are 1e999, hexadecimal numbers, inf and nan.
    static Value parse(const std::string& text);
    /// Extracts a word as for a string, and makes it a string; the empty one if that fails.
    friend std::istream& operator>>(std::istream& in, Value& v);
    /// Chooses to_b()'s rules for the whole process; false at start. Not synchronised: set it
    /// before values are used on several threads.
    static void follow_ruby_boolean_evaluation_rules(bool follow) noexcept;
    /// What the function above has chosen; read by every to_b().
    static bool s_followRubyBooleanEvaluationRules;
    /// A copy of the value under `key`, even a nil, or of `fallback` when there is no such key.
    static Value lookup(const Hash& hash, const std::string& key, const Value& fallback);
    /// A basic selector gives the value under its to_s(); an array a hash of the entries that its
    /// elements' to_s() name; nil the whole hash. A hash, and a missing key, give the nil with a
    /// null `void*`.
    static Value extract(const Hash& hash, const Value& selector);
    /// Merges `entry` into `target`: nil deletes the key, a hash merges into a hash entry by entry
    /// at every depth, all else replaces. `target` must not lie inside the entry. When memory runs
    /// out, a part of the entry is merged.
    static void merge_hash_entry(Hash& target, const std::pair<std::string, Value>& entry);

private:
    Dynamic::Any m_holder;
};

// Declared here too, so that they are found by their qualified names and have addresses.
/// Inserts to_s() as a string: see the class.
std::ostream& operator<<(std::ostream& os, const Value& v);
/// Extracts a word: see the class.
std::istream& operator>>(std::istream& in, Value& v);
