#pragma once

#include <stdexcept>
#include <string>
#include <system_error>

namespace inventory {

/// There is no report. what() is one line for standard error that says which thing failed and why.
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
