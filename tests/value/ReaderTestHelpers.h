#pragma once

#include "value/Value.h"

#include <istream>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

/// What a read from a stream leaves behind.
struct ReadOutcome
{
    Value value;
    std::string unread;           ///< what the stream's buffer still has
    std::ios_base::iostate state; ///< before anything else touched the stream
    std::ios_base::iostate mask;
};

/// "good", or the bits that are set, as in "eof fail".
std::string stateText(std::ios_base::iostate state);

/// All that the stream's buffer still gives, whatever the stream's state.
std::string drain(std::istream& in);

/// What `Value::parse_json` makes of a stream over `text`.
ReadOutcome readJSON(std::string_view text);

/// Whether two trees have the same kinds and contents: reals bit for bit, the two forms of nil
/// apart. Recursive: for trees of moderate depth only.
bool identical(const Value& left, const Value& right);

/// A document with what becomes of it.
struct ReaderCase
{
    std::string name;
    std::string input;
    std::string result; ///< as describe() tells it
    std::string unread;
    std::string state; ///< as stateText() tells it
};
std::ostream& operator<<(std::ostream& os, const ReaderCase& row);

/// Documents of every shape, good and bad, apart from every byte and number bounds.
const std::vector<ReaderCase>& readerCases();
/// Numbers around those of 18, 19 and 20 digits that are the bounds.
const std::vector<ReaderCase>& numberBoundCases();
