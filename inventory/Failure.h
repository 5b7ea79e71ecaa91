#pragma once

#include <stdexcept>
#include <string>
#include <system_error>

namespace inventory {

/// `text` with "?" for every control character: names of files and arguments can hold line ends.
inline std::string oneLine(std::string text)
{
    for (char& c : text) {
        const auto octet = static_cast<unsigned char>(c);
        c = octet < 0x20 || octet == 0x7f ? '?' : c;
    }
    return text;
}

/// There is no report. what() says which thing failed and why.
class Failure : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
    /// What failed, and the errno that says why.
    Failure(const std::string& what, int error)
        : std::runtime_error(what + ": " + std::generic_category().message(error))
    {}
};

} // namespace inventory
