#include "value/Any.h"
#include "tests/value/ValueTestHelpers.h"

#include <gtest/gtest.h>

using Dynamic::Any;
using Dynamic::AnyCast;

namespace {

static_assert(sizeof(Any) == sizeof(void*), "the owning pointer is the only field");
static_assert(sizeof(Any::Placeholder) == sizeof(void*), "a placeholder has no data");
static_assert(std::has_virtual_destructor_v<Any::Placeholder>);
static_assert(std::is_abstract_v<Any::Placeholder>);
static_assert(std::is_base_of_v<Any::Placeholder, Any::Holder<int>>);
static_assert(std::is_same_v<decltype(Any::Holder<int>::held), int>);
static_assert(sizeof(Any::Holder<void*>) == 2 * sizeof(void*), "the object is the only field");
static_assert(sizeof(Any::Holder<std::string>) == sizeof(void*) + sizeof(std::string));

static_assert(std::is_nothrow_default_constructible_v<Any>);
static_assert(std::is_nothrow_move_constructible_v<Any>);
static_assert(std::is_nothrow_move_assignable_v<Any>);
static_assert(std::is_nothrow_destructible_v<Any>);
static_assert(std::is_convertible_v<int, Any> && std::is_convertible_v<std::string, Any>);
static_assert(std::is_convertible_v<Any&, Any> && std::is_convertible_v<const Any&, Any>);

template <typename T>
T sample();
template <>
int sample()
{
    return -7;
}
template <>
bool sample()
{
    return true;
}
template <>
long long sample()
{
    return 1LL << 40;
}
template <>
double sample()
{
    return 2.5;
}
template <>
std::string sample()
{
    return "text";
}
template <>
std::vector<Value> sample()
{
    return {1, "two"};
}
template <>
std::map<std::string, Value> sample()
{
    return {{"a", 1}};
}
template <>
void* sample()
{
    return nullptr;
}

template <typename T>
class AnyOfKindTest : public testing::Test
{};

using HeldTypes = testing::Types<int, bool, long long, double, std::string, std::vector<Value>,
                                 std::map<std::string, Value>, void*>;

struct HeldTypeNames
{
    template <typename T>
    static std::string GetName(int)
    {
        static const std::map<Value::Kind, std::string> names{
            {Value::Kind::Nil, "Nil"},         {Value::Kind::Boolean, "Boolean"},
            {Value::Kind::Integer, "Integer"}, {Value::Kind::Long, "Long"},
            {Value::Kind::Real, "Real"},       {Value::Kind::String, "String"},
            {Value::Kind::Array, "Array"},     {Value::Kind::Hash, "Hash"}};
        return names.at(Value(Any(T())).kind());
    }
};
TYPED_TEST_SUITE(AnyOfKindTest, HeldTypes, HeldTypeNames);

template <typename T>
std::string describeHeld(const T& held)
{
    return describe(Value(Any(held)));
}

template <typename Wrong, typename Held>
void expectMismatch(const Any& any)
{
    if constexpr (!std::is_same_v<Wrong, Held>) {
        EXPECT_THROW(AnyCast<Wrong>(any), std::bad_cast) << typeid(Wrong).name();
        EXPECT_THROW(any.get<Wrong>(), std::bad_cast) << typeid(Wrong).name();
        Any changeable(any);
        EXPECT_THROW(changeable.get<Wrong>(), std::bad_cast) << typeid(Wrong).name();
    }
}

template <typename Held>
void expectEveryMismatch(const Any& any)
{
    expectMismatch<int, Held>(any);
    expectMismatch<bool, Held>(any);
    expectMismatch<long long, Held>(any);
    expectMismatch<double, Held>(any);
    expectMismatch<std::string, Held>(any);
    expectMismatch<std::vector<Value>, Held>(any);
    expectMismatch<std::map<std::string, Value>, Held>(any);
    expectMismatch<void*, Held>(any);
    expectMismatch<const void*, Held>(any);
    expectMismatch<unsigned, Held>(any);
    expectMismatch<Foreign, Held>(any);
}

TYPED_TEST(AnyOfKindTest, HoldsACopyOfTheObject)
{
    const auto object = sample<TypeParam>();
    const Any any(object);
    EXPECT_FALSE(any.empty());
    EXPECT_TRUE(any.type() == typeid(TypeParam));
    EXPECT_EQ(describeHeld(AnyCast<TypeParam>(any)), describeHeld(object));
    EXPECT_EQ(describeHeld(any.get<TypeParam>()), describeHeld(object));
}

TYPED_TEST(AnyOfKindTest, CopiesIntoAHolderOfItsOwn)
{
    Any source(sample<TypeParam>());
    const Any copy(source);
    Any assigned(std::string("before"));
    assigned = source;
    EXPECT_NE(&copy.get<TypeParam>(), &source.get<TypeParam>());
    EXPECT_NE(&assigned.get<TypeParam>(), &source.get<TypeParam>());
    source = Any();
    EXPECT_EQ(describeHeld(copy.get<TypeParam>()), describeHeld(sample<TypeParam>()));
    EXPECT_EQ(describeHeld(assigned.get<TypeParam>()), describeHeld(sample<TypeParam>()));
}

TYPED_TEST(AnyOfKindTest, MovesByHandingOverTheContent)
{
    Any source(sample<TypeParam>());
    const TypeParam* const held = &source.get<TypeParam>();
    Any moved(std::move(source));
    EXPECT_EQ(&moved.get<TypeParam>(), held);
    EXPECT_TRUE(source.empty()); // NOLINT(bugprone-use-after-move): the state after it is promised
    source = std::move(moved);
    EXPECT_EQ(&source.get<TypeParam>(), held);
    EXPECT_TRUE(moved.empty()); // NOLINT(bugprone-use-after-move): the state after it is promised
}

TYPED_TEST(AnyOfKindTest, RefusesEveryOtherType)
{
    expectEveryMismatch<TypeParam>(Any(sample<TypeParam>()));
}

TYPED_TEST(AnyOfKindTest, ClonesThroughThePlaceholder)
{
    const Any::Holder<TypeParam> holder(sample<TypeParam>());
    const Any::Placeholder& placeholder = holder;
    const std::unique_ptr<Any::Placeholder> clone(placeholder.clone());
    ASSERT_TRUE(clone->type() == typeid(TypeParam));
    const auto& cloned = dynamic_cast<const Any::Holder<TypeParam>&>(*clone);
    EXPECT_EQ(describeHeld(cloned.held), describeHeld(holder.held));
    EXPECT_NE(&cloned.held, &holder.held);
}

TEST(AnyTest, AnEmptyHolderHasTypeVoidAndCastsToNothing)
{
    const Any any;
    EXPECT_TRUE(any.empty());
    EXPECT_TRUE(any.type() == typeid(void));
    expectEveryMismatch<void>(any);
}

TEST(AnyTest, ACopyOfAnEmptyHolderIsEmpty)
{
    const Any empty;
    const Any copy(empty); // NOLINT(performance-unnecessary-copy-initialization): what is tested
    EXPECT_TRUE(copy.empty());
    Any assigned(1);
    assigned = empty;
    EXPECT_TRUE(assigned.empty());
}

TEST(AnyTest, AValueConvertsToAHolderAsToStdAny)
{
    Any any = 5;
    EXPECT_EQ(AnyCast<int>(any), 5);
    any = std::string("text");
    EXPECT_EQ(AnyCast<std::string>(any), "text");
    any = Value(2);
    EXPECT_EQ(AnyCast<Value>(any).to_i(), 2);
    const auto typeOf = [](const Any& given) -> const std::type_info& { return given.type(); };
    EXPECT_TRUE(typeOf(2.5) == typeid(double));
    EXPECT_TRUE(typeOf(any) == typeid(Value)) << "a holder is no content of another";
}

TEST(AnyTest, ANullPointerIsContent)
{
    const Any any(static_cast<void*>(nullptr));
    EXPECT_FALSE(any.empty());
    EXPECT_TRUE(any.type() == typeid(void*));
    EXPECT_EQ(AnyCast<void*>(any), nullptr);
}

TEST(AnyTest, ReadsInPlace)
{
    Any any(std::string("before"));
    any.get<std::string>() = "after";
    EXPECT_EQ(AnyCast<std::string>(any), "after");
}

TEST(AnyTest, HoldsAnyCopyableType)
{
    const Any any("a literal");
    EXPECT_TRUE(any.type() == typeid(const char*));
    EXPECT_STREQ(AnyCast<const char*>(any), "a literal");
}

} // namespace
