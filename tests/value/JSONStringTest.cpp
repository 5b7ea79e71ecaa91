#include "value/Value.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>

namespace {

std::string expectedEscape(unsigned byte)
{
    switch (byte) {
    case 34:
        return "\\\"";
    case 92:
        return "\\\\";
    case 8:
        return "\\b";
    case 9:
        return "\\t";
    case 10:
        return "\\n";
    case 12:
        return "\\f";
    case 13:
        return "\\r";
    default:
        break;
    }
    if (byte < 32) {
        std::ostringstream out;
        out << "\\u" << std::hex << std::setw(4) << std::setfill('0') << byte;
        return out.str();
    }
    return std::string(1, static_cast<char>(byte));
}

TEST(JSONStringTest, EscapesEveryByteAloneBetweenOthersAndAsAKey)
{
    for (unsigned byte = 0; byte < 256; ++byte) {
        const std::string raw(1, static_cast<char>(byte));
        const std::string escaped = expectedEscape(byte);
        EXPECT_EQ(Value(raw).to_json(), "\"" + escaped + "\"") << byte;
        std::string between = raw;
        std::string betweenEscaped = escaped;
        between.append(1, 'a').append(raw).append(raw);
        betweenEscaped.append(1, 'a').append(escaped).append(escaped);
        EXPECT_EQ(Value(between).to_json(), "\"" + betweenEscaped + "\"") << byte;
        EXPECT_EQ(Value(Value::Hash{{raw, 1}}).to_json(), "{\"" + escaped + "\":1}") << byte;
        EXPECT_EQ(Value(raw).to_s(), raw) << byte;
        EXPECT_EQ(Value(Value::Hash{{raw, 1}}).to_s(), "{" + raw + " => 1}") << byte;
    }
}

TEST(JSONStringTest, WritesStringsOfEveryLengthWhole)
{
    for (std::size_t length = 0; length < 300; ++length) {
        std::string raw;
        std::string escaped;
        for (std::size_t i = 0; i < length; ++i) {
            const auto byte = static_cast<unsigned>(i * 7 % 256);
            raw += static_cast<char>(byte);
            escaped += expectedEscape(byte);
        }
        ASSERT_EQ(Value(raw).to_json(), "\"" + escaped + "\"");
        ASSERT_EQ(Value(Value::Array{raw, raw}).to_json(),
                  std::string("[\"").append(escaped).append("\",\"").append(escaped) + "\"]");
        const std::string worst(length, '\x1f');
        ASSERT_EQ(Value(worst).to_json().size(), 6 * length + 2);
    }
}

} // namespace
