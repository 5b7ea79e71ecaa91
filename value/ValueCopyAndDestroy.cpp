#include "value/Value.h"

#include <utility>

// Trees of any depth are copied and destroyed without recursion. A copy keeps a list of the
// containers that it has yet to fill. Destruction may not allocate, so it keeps its way back in the
// tree: the slot from which a child was taken holds the child's grandparent until the child is
// gone.
//
// The standard containers copy themselves by recursion, which takes a third less time. So they do
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

/// Arrays and hashes with children, each with the place of its copy.
using ToCopy = std::vector<std::pair<const Value*, Value*>>;

/// Copies `source` to `place`, except that an array or a hash with children is left to be done.
void copyUnlessTree(const Value& source, Value& place, ToCopy& toCopy)
{
    if (hasChildren(source)) {
        toCopy.emplace_back(&source, &place);
    } else {
        place = source;
    }
}

void copyChildren(const Value::Array& source, Value::Array& copy, ToCopy& toCopy)
{
    copy.resize(source.size());
    for (std::size_t i = 0; i < source.size(); ++i) {
        copyUnlessTree(source[i], copy[i], toCopy);
    }
}

void copyChildren(const Value::Hash& source, Value::Hash& copy, ToCopy& toCopy)
{
    for (const auto& [key, value] : source) {
        copyUnlessTree(value, copy.try_emplace(copy.end(), key)->second, toCopy);
    }
}

template <typename Container>
void copyChildren(const Value& source, Value& place, ToCopy& toCopy)
{
    place = Container();
    copyChildren(source.holder().get<Container>(), place.holder().get<Container>(), toCopy);
}

template <typename Container>
Container copyTree(const Container& source)
{
    Container result;
    ToCopy toCopy;
    copyChildren(source, result, toCopy);
    while (!toCopy.empty()) {
        const auto [tree, place] = toCopy.back();
        toCopy.pop_back();
        if (tree->kind() == Value::Kind::Array) {
            copyChildren<Value::Array>(*tree, *place, toCopy);
        } else {
            copyChildren<Value::Hash>(*tree, *place, toCopy);
        }
    }
    return result;
}

// A child as it stands in an array, and in an entry of a hash.
Value& childIn(Value& element) noexcept
{
    return element;
}
Value& childIn(Value::Hash::value_type& entry) noexcept
{
    return entry.second;
}

/// Calls `function` with the array or the hash that `tree` is.
template <typename Function>
Value* visit(Value& tree, Function function) noexcept
{
    return tree.kind() == Value::Kind::Array ? function(tree.holder().get<Value::Array>())
                                             : function(tree.holder().get<Value::Hash>());
}

/// Destroys the last children of `tree` down to one that has children itself. Returns that one, or
/// null when `tree` has no child left.
Value* destroyLeaves(Value& tree) noexcept
{
    return visit(tree, [](auto& children) -> Value* {
        for (; !children.empty(); children.erase(std::prev(children.end()))) {
            Value& last = childIn(*children.rbegin());
            if (hasChildren(last)) {
                return &last;
            }
        }
        return nullptr;
    });
}

Value* lastChild(Value& tree) noexcept
{
    return visit(tree, [](auto& children) { return &childIn(*children.rbegin()); });
}

/// `parent` is the parent of `tree`; the slot that `tree` came from holds the parent of `parent`.
/// In [[[1]]] with the arrays A, B and C, from the outermost to the innermost:
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
            parent = std::move(*lastChild(tree));
        }
    }
}

} // namespace

template <typename Container>
Container Dynamic::TreeTraits<Container>::copy(const Container& held)
{
    if (depth < maximumDepth) {
        const Descent descent;
        return copyByRecursion(held);
    }
    return copyTree(held);
}

template <typename Container>
void Dynamic::TreeTraits<Container>::dismantle(Container& held) noexcept
{
    for (auto& element : held) {
        if (hasChildren(childIn(element))) {
            destroyTree(std::move(childIn(element)));
        }
    }
}

template struct Dynamic::TreeTraits<Value::Array>;
template struct Dynamic::TreeTraits<Value::Hash>;
