#pragma once

#include "value/Value.h"

#include <string>

/// Copies `value`, writes it as JSON and reads that. Empty if the copy is the same and the tree
/// read is equal; else what differs. Numbers may come back in another kind, the two forms of nil
/// are one, and a real need only be equal to six digits, which is what is written of it.
/// Infinities, what is not a number and other types than the eight make no JSON; a tree with one of
/// them is only copied and written. Recursive, as identical() is.
std::string roundTripDifference(const Value& value);
