#pragma once

#include <string>

// Since release 19, libc++ has no generic std::char_traits any more, and std::basic_string<unsigned
// char> no longer compiles; libstdc++ still has it. The standard allows a program no specialisation
// for a built-in type. This one is made all the same, where the library has none: traits of another
// name would make ByteString another type.
#if defined(_LIBCPP_VERSION) && _LIBCPP_VERSION >= 190000

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <ios>

template <>
struct std::char_traits<unsigned char>
{ // NOLINT(cert-dcl58-cpp): the reason stands above
    using char_type = unsigned char;
    using int_type = int;
    using off_type = std::streamoff;
    using pos_type = std::streampos;
    using state_type = std::mbstate_t;

    static constexpr void assign(char_type& to, const char_type& from) noexcept { to = from; }
    static constexpr bool eq(char_type a, char_type b) noexcept { return a == b; }
    static constexpr bool lt(char_type a, char_type b) noexcept { return a < b; }

    // The pointers may be null when the count is 0, which the functions of <cstring> do not allow.
    static int compare(const char_type* a, const char_type* b, std::size_t count) noexcept
    {
        return count == 0 ? 0 : std::memcmp(a, b, count);
    }
    static constexpr std::size_t length(const char_type* text) noexcept
    {
        std::size_t count = 0;
        while (text[count] != 0) {
            ++count;
        }
        return count;
    }
    static const char_type* find(const char_type* text, std::size_t count,
                                 const char_type& wanted) noexcept
    {
        return count == 0 ? nullptr
                          : static_cast<const char_type*>(std::memchr(text, wanted, count));
    }
    static char_type* move(char_type* to, const char_type* from, std::size_t count) noexcept
    {
        return count == 0 ? to : static_cast<char_type*>(std::memmove(to, from, count));
    }
    static char_type* copy(char_type* to, const char_type* from, std::size_t count) noexcept
    {
        return count == 0 ? to : static_cast<char_type*>(std::memcpy(to, from, count));
    }
    static char_type* assign(char_type* to, std::size_t count, char_type value) noexcept
    {
        return count == 0 ? to : static_cast<char_type*>(std::memset(to, value, count));
    }

    static constexpr int_type eof() noexcept { return EOF; }
    static constexpr int_type not_eof(int_type c) noexcept { return c == eof() ? 0 : c; }
    static constexpr char_type to_char_type(int_type c) noexcept
    {
        return static_cast<char_type>(c);
    }
    static constexpr int_type to_int_type(char_type c) noexcept { return c; }
    static constexpr bool eq_int_type(int_type a, int_type b) noexcept { return a == b; }
};

#endif

namespace UVARNETSNMP {

/// A byte string that may hold any octet, NUL included: the value of a security parameter, a key or
/// a pass phrase.
using ByteString = std::basic_string<unsigned char>;

} // namespace UVARNETSNMP
