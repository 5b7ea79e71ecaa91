#pragma once

#include <memory>
#include <type_traits>
#include <typeinfo>
#include <utility>

/// One object of a type that is chosen at run time.
namespace Dynamic {

/// How a holder copies an object of type `T` and takes it apart. A type that nests in itself to any
/// depth specialises this, so that neither step needs a stack as deep as the object.
template <typename T>
struct HolderTraits
{
    /// A copy of `held`.
    static T copy(const T& held) { return held; }
    /// Called right before `held` is destroyed; may leave it in any state that can be destroyed.
    static void dismantle(T& held) noexcept { static_cast<void>(held); }
};

/// Owns at most one object of any copyable type. A plain value: a copy is independent of its
/// source, and no thread may use a holder while another changes it.
class Any
{
public:
    /// The owned object, seen without its type.
    class Placeholder
    {
    public:
        /// Owns nothing yet.
        Placeholder() = default;
        /// Copied by clone() alone.
        Placeholder(const Placeholder&) = delete;
        /// Never assigned.
        Placeholder& operator=(const Placeholder&) = delete;

        /// Destroys the owned object.
        virtual ~Placeholder() = default;
        /// The type of the owned object.
        virtual const std::type_info& type() const noexcept = 0;
        /// A new placeholder with a copy of the owned object; the caller owns it.
        virtual Placeholder* clone() const = 0;
    };

    /// The owned object with its type.
    template <typename T>
    class Holder final : public Placeholder
    {
    public:
        /// Owns a copy of `object`.
        explicit Holder(const T& object) : held(object) {}
        /// Owns `object`, moved in.
        explicit Holder(T&& object) : held(std::move(object)) {}
        /// A copy by HolderTraits.
        Holder(const Holder& other) : Placeholder(), held(HolderTraits<T>::copy(other.held)) {}
        /// Never assigned.
        Holder& operator=(const Holder&) = delete;
        /// Takes the object apart by HolderTraits.
        ~Holder() override { HolderTraits<T>::dismantle(held); }

        const std::type_info& type() const noexcept override { return typeid(T); }
        Placeholder* clone() const override { return new Holder(*this); }

        T held; ///< the object
    };

    /// An empty holder.
    Any() noexcept = default;

    /// Holds `object`, copied or moved as it is given. Arrays and functions are held as pointers.
    /// Converts implicitly, as std::any does.
    template <typename T, typename = std::enable_if_t<!std::is_base_of_v<Any, std::decay_t<T>>>>
    Any(T&& object) : m_content(std::make_unique<Holder<std::decay_t<T>>>(std::forward<T>(object)))
    {}

    /// Holds a clone of what `other` holds. A copy that fails part-way frees what it had built.
    Any(const Any& other) : m_content(other.m_content ? other.m_content->clone() : nullptr) {}
    /// Takes over what `other` holds and leaves `other` empty.
    Any(Any&& other) noexcept = default;
    /// Destroys the held object.
    ~Any() = default;

    /// As the constructor. The previous content is destroyed after the new one is in place, so
    /// that `other` may be a part of it; it stays when a copy fails.
    Any& operator=(const Any& other) { return *this = Any(other); }
    /// Takes over what `other` holds and leaves `other` empty.
    Any& operator=(Any&& other) noexcept = default;

    /// Whether it holds nothing.
    bool empty() const noexcept { return !m_content; }

    /// The type of the held object; `typeid(void)` when empty.
    const std::type_info& type() const noexcept
    {
        return empty() ? typeid(void) : m_content->type();
    }

    /// The held object itself, valid until this holder is changed or destroyed. Throws
    /// std::bad_cast unless type() is `typeid(T)`.
    template <typename T>
    const T& get() const
    {
        static_assert(std::is_same_v<T, std::decay_t<T>>, "objects are held by their plain type");
        if (!isHolder<T>() && (empty() || type() != typeid(T))) {
            throw std::bad_cast();
        }
        return static_cast<const Holder<T>&>(*m_content).held;
    }
    /// The same, to be changed in place.
    template <typename T>
    T& get()
    {
        return const_cast<T&>(std::as_const(*this).get<T>());
    }

private:
    /// Whether the content is a Holder<T>, by the addresses of the type descriptions, which is
    /// fast. True is reliable. False may be wrong across shared libraries (two type_infos of one
    /// type), so get() then compares type().
    template <typename T>
    bool isHolder() const noexcept
    {
        if (empty()) {
            return false;
        }
        const Placeholder& content = *m_content;
        return &typeid(content) == &typeid(Holder<T>);
    }

    std::unique_ptr<Placeholder> m_content;
};

/// A copy of the held object. Throws std::bad_cast unless the holder's type() is `typeid(T)`.
template <typename T>
T AnyCast(const Any& any)
{
    return any.get<T>();
}

} // namespace Dynamic
