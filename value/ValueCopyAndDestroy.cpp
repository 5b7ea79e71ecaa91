#include "value/ChildCursor.h"

#include <type_traits>

// Trees of any depth are copied and destroyed depth first, without recursion. The copy keeps the
// containers around the current one on a stack of its own. Destruction may not allocate, so it
// keeps them in the tree: the slot from which a child was taken holds the child's grandparent until
// the child is gone.
//
// The standard containers copy themselves by recursion, which takes a fifth less time. So they do
// it down to a fixed depth, which documents seldom reach.

namespace {

/// How many arrays and hashes this thread's copying has entered by recursion.
thread_local int depth = 0;

/// Small enough for any thread's stack.
constexpr int maximumDepth = 16;

class Descent
{
public:
    Descent() noexcept { ++depth; }
    Descent(const Descent&) = delete;
    Descent& operator=(const Descent&) = delete;
    ~Descent() { --depth; }
};

/// A container that is being copied: how far, and to where.
class Copying
{
public:
    Copying(const Value::Array& source, Value::Array& array) : m_source(source), m_array(&array)
    {
        array.reserve(source.size());
    }
    Copying(const Value::Hash& source, Value::Hash& hash) : m_source(source), m_hash(&hash) {}

    bool atEnd() const noexcept { return m_source.atEnd(); }

    /// The next child of the source.
    const Value& child() const noexcept { return m_source.value(); }

    /// Appends `copy` for the next child and goes past it; returns it in its place.
    Value& append(Value copy)
    {
        Value& placed =
            m_source.inHash()
                ? m_hash->emplace_hint(m_hash->end(), m_source.key(), std::move(copy))->second
                : m_array->emplace_back(std::move(copy));
        m_source.advance();
        return placed;
    }

private:
    ChildCursor m_source;
    Value::Array* m_array = nullptr;
    Value::Hash* m_hash = nullptr;
};

template <typename Container>
Copying startCopy(Copying& parent)
{
    const auto& source = parent.child().holder().get<Container>();
    return {source, parent.append(Container()).holder().template get<Container>()};
}

template <typename Container>
Container copyTree(const Container& source)
{
    Container result;
    std::vector<Copying> outer;
    Copying current(source, result);
    const auto enter = [&](const Copying& inner) {
        outer.push_back(current);
        current = inner;
    };
    for (;;) {
        if (!current.atEnd()) {
            switch (current.child().kind()) {
            case Value::Kind::Array:
                enter(startCopy<Value::Array>(current));
                break;
            case Value::Kind::Hash:
                enter(startCopy<Value::Hash>(current));
                break;
            default:
                current.append(current.child());
            }
        } else if (!outer.empty()) {
            current = outer.back();
            outer.pop_back();
        } else {
            return result;
        }
    }
}

/// As the copy constructor, which up to libc++ 14 leaks the elements that it had copied when one
/// fails.
Value::Array copyByRecursion(const Value::Array& source)
{
    Value::Array result;
    result.reserve(source.size());
    result.insert(result.end(), source.begin(), source.end());
    return result;
}

Value::Hash copyByRecursion(const Value::Hash& source)
{
    return source;
}

template <typename Container>
Container copyContainer(const Container& source)
{
    if (depth < maximumDepth) {
        const Descent descent;
        return copyByRecursion(source);
    }
    return copyTree(source);
}

bool hasChildren(const Value& value) noexcept
{
    switch (value.kind()) {
    case Value::Kind::Array:
        return !value.holder().get<Value::Array>().empty();
    case Value::Kind::Hash:
        return !value.holder().get<Value::Hash>().empty();
    default:
        return false;
    }
}

/// The child of `tree` that is destroyed next.
Value& nextChild(Value& tree) noexcept
{
    return tree.kind() == Value::Kind::Array ? tree.holder().get<Value::Array>().back()
                                             : tree.holder().get<Value::Hash>().begin()->second;
}

/// Destroys the children of `tree` up to the first that has children itself. Returns that one, or
/// null when `tree` has no child left.
Value* destroyLeaves(Value& tree) noexcept
{
    if (tree.kind() == Value::Kind::Array) {
        for (auto& array = tree.holder().get<Value::Array>(); !array.empty(); array.pop_back()) {
            if (hasChildren(array.back())) {
                return &array.back();
            }
        }
    } else {
        for (auto& hash = tree.holder().get<Value::Hash>(); !hash.empty();
             hash.erase(hash.begin())) {
            if (hasChildren(hash.begin()->second)) {
                return &hash.begin()->second;
            }
        }
    }
    return nullptr;
}

/// `parent` is the parent of `tree`; the slot that `tree` came from holds the parent of `parent`.
/// In
/// [[[1]]] with the arrays A, B and C, from the outermost to the innermost:
///
///     tree = A    parent = empty
///     tree = B    parent = A, whose slot of B holds the empty value
///     tree = C    parent = B, whose slot of C holds A
void destroyTree(Value tree) noexcept
{
    Value parent;
    for (;;) {
        if (Value* const slot = destroyLeaves(tree)) {
            Value child = std::move(*slot);
            *slot = std::move(parent);
            parent = std::move(tree);
            tree = std::move(child);
        } else if (parent.holder().empty()) {
            return;
        } else {
            tree = std::move(parent);
            parent = std::move(nextChild(tree));
        }
    }
}

} // namespace

std::vector<Value> Dynamic::HolderTraits<std::vector<Value>>::copy(const std::vector<Value>& held)
{
    return copyContainer(held);
}

void Dynamic::HolderTraits<std::vector<Value>>::dismantle(std::vector<Value>& held) noexcept
{
    for (Value& element : held) {
        if (hasChildren(element)) {
            destroyTree(std::move(element));
        }
    }
}

std::map<std::string, Value>
Dynamic::HolderTraits<std::map<std::string, Value>>::copy(const std::map<std::string, Value>& held)
{
    return copyContainer(held);
}

void Dynamic::HolderTraits<std::map<std::string, Value>>::dismantle(
    std::map<std::string, Value>& held) noexcept
{
    for (auto& entry : held) {
        if (hasChildren(entry.second)) {
            destroyTree(std::move(entry.second));
        }
    }
}
