#pragma once

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

} // namespace Dynamic
