#include "value/JSONParser.h"
#include "value/Value.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
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

TEST(InterfaceTest, CopiesAreReturnedAndNoReferences)
{
    const Value::Hash hash;
    const Value value;
    static_assert(std::is_same_v<decltype(Value::lookup(hash, "", value)), Value>);
    static_assert(std::is_same_v<decltype(Value::extract(hash, value)), Value>);
    static_assert(
        std::is_same_v<decltype(AnyCast<std::string>(std::declval<const Any&>())), std::string>);
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
