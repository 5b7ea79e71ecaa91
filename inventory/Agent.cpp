#include "inventory/Agent.h"

#include <algorithm>

namespace inventory {

std::optional<int> Supply::percent() const
{
    if (!level || !capacity || *level < 0 || *capacity <= 0) {
        return {};
    }
    if (*level >= *capacity) {
        return 100;
    }
    // Both are numbers of 32 bits, so nothing overflows.
    return static_cast<int>((*level * 200 + *capacity) / (*capacity * 2));
}

std::optional<int> Agent::lowestSupply() const
{
    std::optional<int> lowest;
    for (const Supply& supply : supplies) {
        const std::optional<int> percent = supply.percent();
        if (percent && !supply.isReceptacle()) {
            lowest = std::min(lowest.value_or(100), *percent);
        }
    }
    return lowest;
}

} // namespace inventory
