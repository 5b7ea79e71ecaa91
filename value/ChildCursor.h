#pragma once

#include "value/Value.h"

/// Walks over the elements of an array or the entries of a hash, which must outlive it unchanged.
/// Stacks of these take the place of recursion.
class ChildCursor
{
public:
    explicit ChildCursor(const Value::Array& array) noexcept
        : m_element(array.data()), m_elementsEnd(array.data() + array.size()), m_inHash(false)
    {}
    explicit ChildCursor(const Value::Hash& hash) noexcept
        : m_entry(hash.begin()), m_entriesEnd(hash.end()), m_inHash(true)
    {}

    bool inHash() const noexcept { return m_inHash; }
    bool atEnd() const noexcept
    {
        return m_inHash ? m_entry == m_entriesEnd : m_element == m_elementsEnd;
    }
    /// The key of the current entry; only in a hash, and not at the end.
    const std::string& key() const noexcept { return m_entry->first; }
    /// The current child; not at the end.
    const Value& value() const noexcept { return m_inHash ? m_entry->second : *m_element; }
    /// To the next child; not at the end.
    void advance() noexcept
    {
        if (m_inHash) {
            ++m_entry;
        } else {
            ++m_element;
        }
    }

private:
    const Value* m_element = nullptr;
    const Value* m_elementsEnd = nullptr;
    Value::Hash::const_iterator m_entry;
    Value::Hash::const_iterator m_entriesEnd;
    bool m_inHash;
};
