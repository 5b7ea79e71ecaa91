#include "tests/value/ValueTestHelpers.h"
#include "value/Any.h"

#include <gtest/gtest.h>

#include <stdexcept>

using Dynamic::Any;

namespace {

/// Restores the count of copies that Foreign still allows.
class CopiesLeft
{
public:
    explicit CopiesLeft(int count) : m_before(Foreign::copiesLeft) { Foreign::copiesLeft = count; }
    CopiesLeft(const CopiesLeft&) = delete;
    CopiesLeft& operator=(const CopiesLeft&) = delete;
    ~CopiesLeft() { Foreign::copiesLeft = m_before; }

private:
    int m_before;
};

TEST(AnyOwnershipTest, ACopyOfAnArrayOfHashesIsIndependent)
{
    const Any source(std::vector<Value>{Value::Hash{{"a", 1}}, Value::Hash{{"b", 2}}});
    Any copy(source);
    auto& array = copy.get<Value::Array>();
    array[0].holder().get<Value::Hash>()["a"] = "changed";
    array[1].holder().get<Value::Hash>().erase("b");
    array.emplace_back(3);
    EXPECT_EQ(describe(Value(source)), "array[hash{a: integer 1}, hash{b: integer 2}]");
    EXPECT_EQ(describe(Value(copy)), "array[hash{a: string changed}, hash{}, integer 3]");
}

TEST(AnyOwnershipTest, DestroysTheContentOnce)
{
    ASSERT_EQ(Foreign::alive, 0);
    {
        Any any{Foreign()};
        EXPECT_EQ(Foreign::alive, 1);
        const Any copy(any);
        EXPECT_EQ(Foreign::alive, 2);
        any = Any(1);
        EXPECT_EQ(Foreign::alive, 1);
    }
    EXPECT_EQ(Foreign::alive, 0);
}

/// Notes whether the holder that owned it had its new content when it was destroyed.
struct Witness
{
    explicit Witness(const Any& holder, bool& replaced) : owner(&holder), sawNew(&replaced) {}
    Witness(const Witness&) = default;
    Witness& operator=(const Witness&) = default;
    ~Witness() { *sawNew = owner->type() == typeid(int); }

    const Any* owner;
    bool* sawNew;
};

TEST(AnyOwnershipTest, DestroysThePreviousContentAfterTheNewOneIsInPlace)
{
    const Any number(5);
    bool copied = false;
    bool moved = false;
    Any any;
    any = Any(Witness(any, copied));
    copied = false;
    any = number;
    EXPECT_TRUE(copied);
    any = Any(Witness(any, moved));
    moved = false;
    any = Any(6);
    EXPECT_TRUE(moved);
}

TEST(AnyOwnershipTest, SurvivesAssignmentOfItselfAndOfItsOwnPart)
{
    Any any = nestedArrays(2, "inner").holder();
    const Any& itself = any;
    any = itself;
    ASSERT_EQ(describe(Value(any)), "array[array[string inner]]");
    any = any.get<Value::Array>()[0].holder();
    ASSERT_EQ(describe(Value(any)), "array[string inner]");
    any = std::move(any.get<Value::Array>()[0].holder());
    EXPECT_EQ(describe(Value(any)), "string inner");
}

TEST(AnyOwnershipTest, ACopyThatFailsFreesWhatItBuiltAndChangesNothing)
{
    // One tree is copied by recursion, the other goes deep enough for the work list.
    for (const std::size_t depth : {std::size_t{2}, std::size_t{100}}) {
        Value::Array elements{"before"};
        for (int i = 0; i < 3; ++i) {
            elements.emplace_back(nestedHashes(1, Value(Any(Foreign()))));
        }
        const Value source = nestedArrays(depth, std::move(elements));
        ASSERT_EQ(Foreign::alive, 3);
        Value target("untouched");
        for (int count = 0; count < 3; ++count) {
            const CopiesLeft limit(count);
            EXPECT_THROW(target = source, std::runtime_error) << depth << ", " << count;
            EXPECT_EQ(Foreign::alive, 3) << depth << ", " << count;
            EXPECT_EQ(describe(target), "string untouched");
        }
        const CopiesLeft limit(3);
        target = source;
        EXPECT_EQ(Foreign::alive, 6);
    }
    EXPECT_EQ(Foreign::alive, 0);
}

} // namespace
