#include "value/NumberText.h"
#include "value/Value.h"

#include <limits>

// Each conversion is one switch over the kinds. Texts become numbers in NumberText.

namespace {

/// `real` truncated toward zero. Out of range and not a number give the least Int, which is what
/// the conversion instructions of x86 give; in C++ itself such a conversion is undefined.
template <typename Int>
Int truncate(double real) noexcept
{
    // The least Int is a power of two, so it and its negation are exact as doubles.
    constexpr auto least = static_cast<double>(std::numeric_limits<Int>::min());
    return real >= least && real < -least ? static_cast<Int>(real)
                                          : std::numeric_limits<Int>::min();
}

} // namespace

bool Value::s_followRubyBooleanEvaluationRules = false;

void Value::follow_ruby_boolean_evaluation_rules(bool follow) noexcept
{
    s_followRubyBooleanEvaluationRules = follow;
}

bool Value::to_b() const
{
    const bool allButNil = s_followRubyBooleanEvaluationRules;
    switch (kind()) {
    case Kind::Nil:
        return false;
    case Kind::Boolean:
        return m_holder.get<bool>();
    case Kind::Integer:
    case Kind::Long:
        return allButNil || to_l() == 0;
    case Kind::Real:
        return allButNil || to_f() == 0.0;
    case Kind::String:
        return allButNil || !m_holder.get<std::string>().empty();
    case Kind::Array:
    case Kind::Hash:
        return true;
    default:
        return allButNil;
    }
}

int Value::to_i() const
{
    switch (kind()) {
    case Kind::Integer:
        return m_holder.get<int>();
    case Kind::Boolean:
        return to_b() ? 1 : 0;
    case Kind::Long:
        return static_cast<int>(static_cast<unsigned>(to_l()));
    case Kind::Real:
        return truncate<int>(to_f());
    case Kind::String:
        return NumberText::readInt(m_holder.get<std::string>());
    default:
        return 0;
    }
}

long long Value::to_l() const
{
    switch (kind()) {
    case Kind::Long:
        return m_holder.get<long long>();
    case Kind::Boolean:
        return to_b() ? 1 : 0;
    case Kind::Integer:
        return to_i();
    case Kind::Real:
        return truncate<long long>(to_f());
    case Kind::String:
        return NumberText::readLong(m_holder.get<std::string>());
    default:
        return 0;
    }
}

double Value::to_f() const
{
    switch (kind()) {
    case Kind::Real:
        return m_holder.get<double>();
    case Kind::Boolean:
        return to_b() ? 1.0 : 0.0;
    case Kind::Integer:
        return to_i();
    case Kind::Long:
        return static_cast<double>(to_l());
    case Kind::String:
        return NumberText::readReal(m_holder.get<std::string>());
    default:
        return 0.0;
    }
}

std::vector<Value> Value::to_a() const
{
    std::vector<Value> array;
    if (kind() == Kind::Array) {
        array = m_holder.get<Array>();
    } else if (kind() == Kind::Hash) {
        const auto& hash = m_holder.get<Hash>();
        array.reserve(hash.size());
        for (const auto& [key, value] : hash) {
            Array pair;
            pair.reserve(2);
            pair.emplace_back(key);
            pair.push_back(value);
            array.emplace_back(std::move(pair));
        }
    } else if (is_basic()) {
        array.push_back(*this);
    }
    return array;
}

std::map<std::string, Value> Value::to_h() const
{
    return kind() == Kind::Hash ? m_holder.get<Hash>() : Hash();
}
