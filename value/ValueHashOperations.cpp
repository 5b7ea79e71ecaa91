#include "value/Value.h"

// Hashes merge entry by entry. A stack of the pairs that are still being merged takes the place of
// recursion.

namespace {

/// A hash that takes in the entries from `next` to `end`.
struct Merging
{
    Value::Hash* target;
    Value::Hash::const_iterator next;
    Value::Hash::const_iterator end;
};

/// Merges one entry, except that of two hashes to be merged it leaves the merging to be done.
void mergeShallow(Value::Hash& target, const std::string& key, const Value& value,
                  std::vector<Merging>& toDo)
{
    if (value.kind() == Value::Kind::Nil) {
        target.erase(key);
        return;
    }
    if (value.kind() == Value::Kind::Hash) {
        const auto stored = target.find(key);
        if (stored != target.end() && stored->second.kind() == Value::Kind::Hash) {
            const auto& incoming = value.holder().get<Value::Hash>();
            toDo.push_back(
                {&stored->second.holder().get<Value::Hash>(), incoming.begin(), incoming.end()});
            return;
        }
    }
    target.insert_or_assign(key, value);
}

} // namespace

Value Value::lookup(const std::map<std::string, Value>& hash, const std::string& key,
                    const Value& fallback)
{
    const auto entry = hash.find(key);
    return entry == hash.end() ? fallback : entry->second;
}

Value Value::extract(const std::map<std::string, Value>& hash, const Value& selector)
{
    if (selector.is_basic()) {
        return lookup(hash, selector.to_s(), nullptr);
    }
    switch (selector.kind()) {
    case Kind::Array: {
        Hash selected;
        for (const Value& element : selector.holder().get<Array>()) {
            const auto entry = hash.find(element.to_s());
            if (entry != hash.end()) {
                selected.insert(*entry);
            }
        }
        return selected;
    }
    case Kind::Nil:
        return hash;
    default:
        return nullptr;
    }
}

void Value::merge_hash_entry(std::map<std::string, Value>& target,
                             const std::pair<std::string, Value>& entry)
{
    std::vector<Merging> toDo;
    mergeShallow(target, entry.first, entry.second, toDo);
    while (!toDo.empty()) {
        Merging& merging = toDo.back();
        if (merging.next == merging.end) {
            toDo.pop_back();
            continue;
        }
        const auto& [key, value] = *merging.next;
        ++merging.next;
        mergeShallow(*merging.target, key, value, toDo);
    }
}
