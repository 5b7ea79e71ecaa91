#include "inventory/Address.h"

#include <gtest/gtest.h>

namespace {

using inventory::Address;

TEST(AddressTest, FourDecimalOctetsReadBackAsTheyWere)
{
    for (const char* const text :
         {"0.0.0.0", "192.0.2.9", "198.51.100.255", "255.255.255.255", "203.0.113.40"}) {
        const auto address = Address::parse(text);
        ASSERT_TRUE(address) << text;
        EXPECT_EQ(address->text(), text);
    }
}

TEST(AddressTest, NothingElseIsAnAddress)
{
    for (const char* const text : {"",
                                   ".",
                                   "192.0.2",
                                   "192.0.2.",
                                   ".192.0.2.9",
                                   "192.0.2.9.",
                                   "192.0.2.9.1",
                                   "192.0.2.256",
                                   "192.0.2.09",
                                   "192.00.2.9",
                                   "01.2.3.4",
                                   "192.0.2.1000",
                                   "192.0.2.-1",
                                   "192.0.2.+1",
                                   " 192.0.2.9",
                                   "192.0.2.9 ",
                                   "192.0.2.9\n",
                                   "192.0.2.0x9",
                                   "192,0,2,9",
                                   "192.0.2.9/32",
                                   "192..2.9",
                                   "::1",
                                   "printer",
                                   "192.0.2.\xd9\xa9"}) {
        EXPECT_FALSE(Address::parse(text)) << text;
    }
    EXPECT_FALSE(Address::parse(std::string_view("192.0.2.9\0", 10)));
}

TEST(AddressTest, TheOrderIsThatOfNumbers)
{
    EXPECT_LT(*Address::parse("192.0.2.9"), *Address::parse("192.0.2.10"));
    EXPECT_LT(*Address::parse("9.255.255.255"), *Address::parse("192.0.2.0"));
    EXPECT_FALSE(*Address::parse("192.0.2.9") < *Address::parse("192.0.2.9"));
    EXPECT_EQ(*Address::parse("192.0.2.9"), *Address::parse("192.0.2.9"));
}

} // namespace
