#include "value/Value.h"

#include <limits>

namespace {

template <typename T>
struct Type
{
    using Held = T;
};

/// The kind whose held type passes the test `is`; the most frequent kinds are tried first.
template <typename Test>
Value::Kind findKind(Test is) noexcept
{
    // clang-format off
    if (is(Type<std::string>()))   { return Value::Kind::String; }
    if (is(Type<Value::Hash>()))   { return Value::Kind::Hash; }
    if (is(Type<Value::Array>()))  { return Value::Kind::Array; }
    if (is(Type<int>()))           { return Value::Kind::Integer; }
    if (is(Type<long long>()))     { return Value::Kind::Long; }
    if (is(Type<double>()))        { return Value::Kind::Real; }
    if (is(Type<bool>()))          { return Value::Kind::Boolean; }
    if (is(Type<void*>()))         { return Value::Kind::Nil; }
    // clang-format on
    return Value::Kind::Other;
}

} // namespace

Value::Value(void*) : Value(nullptr) {}
Value::Value(Array elements) : m_holder(std::move(elements)) {}
Value::Value(const Hash& entries) : m_holder(entries) {}
Value::Value(Hash&& entries) : m_holder(std::move(entries)) {}

Value::Value(const char* text) : Value(text ? Value(std::string(text)) : Value(nullptr)) {}
Value::Value(std::string_view text) : Value(std::string(text)) {}
Value::Value(long number) : m_holder(static_cast<long long>(number)) {}
Value::Value(unsigned number) : m_holder(static_cast<long long>(number)) {}
Value::Value(unsigned long number) : Value(static_cast<unsigned long long>(number)) {}
Value::Value(unsigned long long number)
    : Value(number <= static_cast<unsigned long long>(std::numeric_limits<long long>::max())
                ? Value(static_cast<long long>(number))
                : Value(std::to_string(number)))
{}

Value::Kind Value::kind() const noexcept
{
    if (m_holder.empty()) {
        return Kind::Nil;
    }
    // Within one program equal types mostly have one description each, so comparing addresses
    // suffices; only types from other shared libraries need the slower comparison.
    const std::type_info& held = m_holder.type();
    const Kind atAGlance =
        findKind([&](auto type) { return &held == &typeid(typename decltype(type)::Held); });
    if (atAGlance != Kind::Other) {
        return atAGlance;
    }
    return findKind([&](auto type) { return held == typeid(typename decltype(type)::Held); });
}

bool Value::is_basic() const noexcept
{
    switch (kind()) {
    case Kind::Boolean:
    case Kind::Integer:
    case Kind::Long:
    case Kind::Real:
    case Kind::String:
        return true;
    default:
        return false;
    }
}
