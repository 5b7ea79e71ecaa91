#include "tests/value/ValueTestHelpers.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <stdexcept>

namespace {

class ForeignPunctuation : public std::numpunct<char>
{
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
    std::string do_truename() const override { return "ja"; }
    std::string do_falsename() const override { return "nein"; }
};

} // namespace

std::string describe(const Value& value)
{
    std::string text;
    const char* separator = "";
    switch (value.kind()) {
    case Value::Kind::Nil:
        return value.holder().empty() ? "empty nil" : "nil";
    case Value::Kind::Boolean:
        return "boolean " + value.to_s();
    case Value::Kind::Integer:
        return "integer " + value.to_s();
    case Value::Kind::Long:
        return "long " + value.to_s();
    case Value::Kind::Real:
        return "real " + std::to_string(value.to_f());
    case Value::Kind::String:
        return "string " + value.to_s();
    case Value::Kind::Array:
        for (const Value& element : value.holder().get<Value::Array>()) {
            text += separator + describe(element);
            separator = ", ";
        }
        return "array[" + text + "]";
    case Value::Kind::Hash:
        for (const auto& [key, entry] : value.holder().get<Value::Hash>()) {
            text += separator + key + ": " + describe(entry);
            separator = ", ";
        }
        return "hash{" + text + "}";
    case Value::Kind::Other:
        return "other";
    }
    return "no kind";
}

Value nestedArrays(std::size_t depth, Value content)
{
    for (; depth > 0; --depth) {
        Value::Array around;
        around.push_back(std::move(content));
        content = std::move(around);
    }
    return content;
}

Value nestedHashes(std::size_t depth, Value content)
{
    for (; depth > 0; --depth) {
        Value::Hash around;
        around.emplace("k", std::move(content));
        content = std::move(around);
    }
    return content;
}

void runOnSmallStack(const std::function<void()>& body)
{
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, std::size_t{512} * 1024), 0);
    const auto run = [](void* argument) -> void* {
        (*static_cast<const std::function<void()>*>(argument))();
        return nullptr;
    };
    std::function<void()> copy = body;
    pthread_t thread{};
    ASSERT_EQ(pthread_create(&thread, &attributes, run, &copy), 0);
    ASSERT_EQ(pthread_join(thread, nullptr), 0);
    pthread_attr_destroy(&attributes);
}

// The locale owns the facet.
ForeignGlobalLocale::ForeignGlobalLocale()
    : m_before(std::locale::global(std::locale(std::locale::classic(), new ForeignPunctuation)))
{}

int Foreign::alive = 0;
int Foreign::copiesLeft = 1000000;

Foreign::Foreign(const Foreign&)
{
    if (copiesLeft == 0) {
        throw std::runtime_error("no copies left");
    }
    --copiesLeft;
    ++alive;
}
