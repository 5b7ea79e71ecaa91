#pragma once

#include "value/Value.h"

#include <functional>
#include <locale>
#include <string>
#include <string_view>

/// Kinds and contents as one text, so that values which differ in either have different texts:
/// `array[integer 1, string a]`. The two forms of nil are `nil` and `empty nil`.
std::string describe(const Value& value);

/// Whether two trees have the same kinds and contents: reals bit for bit, the two forms of nil
/// apart. Recursive: for trees of moderate depth only.
bool identical(const Value& left, const Value& right);

/// Copies `value`, writes it as JSON and reads that. Returns an empty text if the copy is the same
/// and the tree that was read is equal; else what differs. Numbers may come back in another kind,
/// the two forms of nil are one, and a real need only be equal to six digits, which is what is
/// written of it. A tree with an infinity, a not-a-number or another type than the eight has no
/// JSON text; it is only copied and written. Recursive, as identical() is.
std::string roundTripDifference(const Value& value);

/// A copy, where the copying itself is what is tested.
template <typename T>
T copyOf(const T& object)
{
    return object;
}

/// `content` inside `depth` arrays, or hashes with the one key "k".
Value nestedArrays(std::size_t depth, Value content);
Value nestedHashes(std::size_t depth, Value content);

/// `text` so many times.
std::string repeat(std::string_view text, std::size_t count);

/// Runs `body` in a thread with a stack of 512 KiB, the least that a supported platform gives.
/// Throws std::runtime_error if there is no such thread.
void runOnSmallStack(const std::function<void()>& body);

/// Sets to_b()'s rules for its own lifetime.
class BooleanRules
{
public:
    explicit BooleanRules(bool ruby) : m_before(Value::s_followRubyBooleanEvaluationRules)
    {
        Value::follow_ruby_boolean_evaluation_rules(ruby);
    }
    BooleanRules(const BooleanRules&) = delete;
    BooleanRules& operator=(const BooleanRules&) = delete;
    ~BooleanRules() { Value::follow_ruby_boolean_evaluation_rules(m_before); }

private:
    bool m_before;
};

/// For its own lifetime makes the global locale one that writes 1234567.5 as 1.234.567,5 and spells
/// booleans differently.
class ForeignGlobalLocale
{
public:
    ForeignGlobalLocale();
    ForeignGlobalLocale(const ForeignGlobalLocale&) = delete;
    ForeignGlobalLocale& operator=(const ForeignGlobalLocale&) = delete;
    ~ForeignGlobalLocale() { std::locale::global(m_before); }

private:
    std::locale m_before;
};

/// An object of no kind. It counts how many of it exist, and its copies fail once `copiesLeft` of
/// them were made.
class Foreign
{
public:
    Foreign() { ++alive; }
    Foreign(const Foreign&);
    Foreign& operator=(const Foreign&) = delete;
    ~Foreign() { --alive; }

    static int alive;
    static int copiesLeft;
};
