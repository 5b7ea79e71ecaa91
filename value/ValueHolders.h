#pragma once

#include "value/HolderTraits.h"

#include <map>
#include <string>
#include <vector>

class Value;

/// The kinds of Value, each with the type that its holder holds.
enum class ValueKind
{
    Nil,     ///< `void*`, always null, or an empty holder
    Boolean, ///< `bool`
    Integer, ///< `int`
    Long,    ///< `long long`
    Real,    ///< `double`
    String,  ///< `std::string`: bytes in any encoding
    Array,   ///< `std::vector<Value>`
    Hash,    ///< `std::map<std::string, Value>`
    Other    ///< any other type
};

// Arrays and hashes nest to any depth. They are copied and taken apart on a stack of bounded size,
// in time linear in their own.

template <>
struct Dynamic::HolderTraits<std::vector<Value>>
{
    static std::vector<Value> copy(const std::vector<Value>& held);
    /// Allocates nothing, so that destruction cannot fail.
    static void dismantle(std::vector<Value>& held) noexcept;
};

template <>
struct Dynamic::HolderTraits<std::map<std::string, Value>>
{
    static std::map<std::string, Value> copy(const std::map<std::string, Value>& held);
    /// Allocates nothing, so that destruction cannot fail.
    static void dismantle(std::map<std::string, Value>& held) noexcept;
};
