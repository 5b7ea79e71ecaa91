#include "value/JSONParser.h"
#include "value/Value.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <sstream>
#include <type_traits>
#include <utility>

// What callers' deductions and other compilers' code rely on.

namespace {

using Dynamic::Any;
using Dynamic::AnyCast;

template <typename Expected, typename Result>
constexpr bool gives(Result (Value::*)() const)
{
    return std::is_same_v<Result, Expected>;
}

template <typename Expected, typename Result>
constexpr bool gives(Result (JSONParser::*)())
{
    return std::is_same_v<Result, Expected>;
}

TEST(InterfaceTest, ResultsHaveTheirTypes)
{
    static_assert(gives<bool>(&Value::to_b));
    static_assert(gives<int>(&Value::to_i));
    static_assert(gives<long long>(&Value::to_l));
    static_assert(gives<double>(&Value::to_f));
    static_assert(gives<std::string>(&Value::to_s));
    static_assert(gives<std::string>(&Value::to_json));
    static_assert(gives<std::vector<Value>>(&Value::to_a));
    static_assert(gives<std::map<std::string, Value>>(&Value::to_h));
    static_assert(gives<int>(&JSONParser::peekChar));
    static_assert(gives<int>(&JSONParser::getChar));
    static_assert(gives<std::uint16_t>(&JSONParser::getHexDigit));
    static_assert(gives<std::uint16_t>(&JSONParser::getUnicode));
    static_assert(
        std::is_same_v<decltype(std::declval<JSONParser&>().getDigits(false, nullptr)), long long>);
}

TEST(InterfaceTest, StreamOperatorsAreFreeFunctions)
{
    std::ostream& (*const insert)(std::ostream&, const Value&) = &operator<<;
    std::istream& (*const extract)(std::istream&, Value&) = &operator>>;
    std::stringstream stream;
    ::operator<<(stream, Value(1)) << ' ';
    insert(stream, Value("a"));
    Value word;
    ::operator>>(stream, word);
    EXPECT_EQ(word.to_s(), "1");
    extract(stream, word);
    EXPECT_EQ(word.to_s(), "a");
}

TEST(InterfaceTest, CopiesAreReturnedAndNoReferences)
{
    const Value::Hash hash;
    const Value value;
    static_assert(std::is_same_v<decltype(Value::lookup(hash, "", value)), Value>);
    static_assert(std::is_same_v<decltype(Value::extract(hash, value)), Value>);
    static_assert(
        std::is_same_v<decltype(AnyCast<std::string>(std::declval<const Any&>())), std::string>);
}

struct NoValue
{};
enum class Scoped
{
    One
};

/// Every type converts to a holder. A value is made of holders all the same, not of what they take.
TEST(InterfaceTest, OnlyHoldersAndTheKindsMakeAValue)
{
    static_assert(std::is_constructible_v<Value, Any>);
    static_assert(std::is_constructible_v<Value, Any&>);
    static_assert(std::is_constructible_v<Value, const Any&>);
    static_assert(std::is_nothrow_constructible_v<Value, Any>);
    static_assert(!std::is_convertible_v<Any, Value>);
    static_assert(!std::is_constructible_v<Value, NoValue>);
    static_assert(!std::is_constructible_v<Value, std::vector<int>>);
    static_assert(!std::is_constructible_v<Value, Scoped>);
    static_assert(!std::is_constructible_v<Value, int*>);
    static_assert(!std::is_assignable_v<Value&, NoValue>);
    static_assert(!std::is_assignable_v<Value&, Any>);
}

/// The number of the entry in the virtual table, counted from 0 and with two for the destructor.
/// Itanium C++ ABI, 2.3, as x86-64 has it: a pointer to a virtual function is its offset plus 1.
template <typename Function>
std::uintptr_t entryOf(Function function)
{
    std::uintptr_t words[2];
    static_assert(sizeof function == sizeof words);
    std::memcpy(words, &function, sizeof words);
    return (words[0] - 1) / sizeof(void*);
}

TEST(InterfaceTest, TheVirtualFunctionsOfAPlaceholderStandInOrder)
{
#ifdef __x86_64__
    EXPECT_EQ(entryOf(&Any::Placeholder::type), 2U);
    EXPECT_EQ(entryOf(&Any::Placeholder::clone), 3U);
#else
    GTEST_SKIP() << "NOT TESTED: pointers to members are read as on x86-64";
#endif
}

} // namespace
