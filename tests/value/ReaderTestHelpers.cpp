#include "tests/value/ReaderTestHelpers.h"

#include <algorithm>
#include <cstring>
#include <sstream>

std::string stateText(std::ios_base::iostate state)
{
    std::string text;
    const auto add = [&](std::ios_base::iostate bit, const char* name) {
        if ((state & bit) != 0) {
            text += text.empty() ? "" : " ";
            text += name;
        }
    };
    add(std::ios_base::eofbit, "eof");
    add(std::ios_base::failbit, "fail");
    add(std::ios_base::badbit, "bad");
    return text.empty() ? "good" : text;
}

std::string drain(std::istream& in)
{
    using Traits = std::istream::traits_type;
    std::string unread;
    for (auto c = in.rdbuf()->sbumpc(); c != Traits::eof(); c = in.rdbuf()->sbumpc()) {
        unread += Traits::to_char_type(c);
    }
    return unread;
}

ReadOutcome readJSON(std::string_view text)
{
    std::istringstream in{std::string(text)};
    Value value = Value::parse_json(in);
    const std::ios_base::iostate state = in.rdstate();
    const std::ios_base::iostate mask = in.exceptions();
    return {std::move(value), drain(in), state, mask};
}

bool identical(const Value& left, const Value& right)
{
    if (left.kind() != right.kind() || left.holder().empty() != right.holder().empty()) {
        return false;
    }
    switch (left.kind()) {
    case Value::Kind::Real: {
        const double leftReal = left.to_f();
        const double rightReal = right.to_f();
        // Bit by bit: that tells zeros apart, and one not-a-number from another.
        // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison,cert-exp42-c,cert-flp37-c)
        return std::memcmp(&leftReal, &rightReal, sizeof leftReal) == 0;
    }
    case Value::Kind::Array: {
        const auto& leftArray = left.holder().get<Value::Array>();
        const auto& rightArray = right.holder().get<Value::Array>();
        return std::equal(leftArray.begin(), leftArray.end(), rightArray.begin(), rightArray.end(),
                          identical);
    }
    case Value::Kind::Hash: {
        const auto& leftHash = left.holder().get<Value::Hash>();
        const auto& rightHash = right.holder().get<Value::Hash>();
        return std::equal(leftHash.begin(), leftHash.end(), rightHash.begin(), rightHash.end(),
                          [](const auto& leftEntry, const auto& rightEntry) {
                              return leftEntry.first == rightEntry.first &&
                                     identical(leftEntry.second, rightEntry.second);
                          });
    }
    default:
        return left.to_s() == right.to_s();
    }
}

std::ostream& operator<<(std::ostream& os, const ReaderCase& row)
{
    return os << row.input;
}
