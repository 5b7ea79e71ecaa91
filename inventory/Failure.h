#pragma once

#include <stdexcept>

namespace inventory {

/// There is no report. what() is one line for standard error that says which thing failed and why.
class Failure : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

} // namespace inventory
