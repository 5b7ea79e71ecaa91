#include "tests/value/ValueTestHelpers.h"
#include "value/Value.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

namespace {

TEST(OtherLibraryTest, ItsValuesAreReadCopiedAndDestroyedAsOnesOwn)
{
    // Not closed: the values' code lies in it.
    void* const library = dlopen(OTHER_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_TRUE(library) << dlerror(); // NOLINT(concurrency-mt-unsafe): there is no other thread
    void* const symbol = dlsym(library, "makeOfEveryKind");
    ASSERT_TRUE(symbol);
    Value::Array values;
    reinterpret_cast<void (*)(Value::Array&)>(symbol)(values);

    ASSERT_EQ(values.size(), 8U);
    EXPECT_NE(&values[5].holder().type(), &typeid(Value::Array)) << "or this tests nothing";
    const std::string expected = "array[boolean true, integer 1, long 2, real 2.500000, string s, "
                                 "array[integer 3], hash{a: integer 4}, nil]";
    EXPECT_EQ(describe(values), expected);
    EXPECT_EQ(describe(copyOf(values)), expected);
    EXPECT_EQ(Dynamic::AnyCast<int>(values[1].holder()), 1);
    EXPECT_THROW(Dynamic::AnyCast<bool>(values[1].holder()), std::bad_cast);
}

} // namespace
