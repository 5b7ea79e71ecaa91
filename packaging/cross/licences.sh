#!/usr/bin/env bash
# Writes into FOLDER/licences what the result of scripts/cross carries: the licences, and the list
# LIBRARIES (file, package, version) for whoever watches for security notices. The file is "-" for
# what is inside of the executables.
#
# usage: licences.sh WORK TARGET FOLDER       as dependencies.sh
set -euo pipefail
work=$1 target=$2 folder=$3
licences=$folder/licences
sources=$work/$target/source
mkdir -p "$licences"

debian() { sed -n 's/^Version: //p' "$work/sources/$1"_*.dsc | head -n 1; }
# constant FILE NAME…: the values of these macros, with dots between them
constant() {
    local file=$1 name found=()
    shift
    for name; do
        found+=("$(sed -n "s/^# *define  *$name  *\"\{0,1\}\([0-9][0-9.]*\).*/\1/p" "$file" | head -n 1)")
        [[ -n ${found[-1]} ]] || { echo "licences.sh: no $name in $file" >&2; exit 1; }
    done
    (IFS=. && echo "${found[*]}")
}
# carried LIBRARY PACKAGE VERSION: a line of the list
carried() {
    local file='-' path
    for path in "$folder/$1".*dylib; do
        if [[ -e $path ]]; then file=${path##*/}; fi
    done
    echo "$file $2 $3"
}
licence_of_debian_source() {
    local text=$licences/$1.txt common
    cp "$sources/$1/debian/copyright" "$text"
    # The notices refer to the full texts of common licences by their path.
    { grep -o '/usr/share/common-licenses/[A-Za-z0-9.+-]*[A-Za-z0-9]' "$text" || true; } | sort -u |
        while read -r common; do
            if [[ -e $common ]]; then cp -L "$common" "$licences/"; fi
        done
}

{
    for part in Foundation JSON Net Util XML; do
        carried "libPoco$part" poco "$(debian poco)"
    done
    # POCO's own copies, whose licences are in its notice.
    carried libPocoFoundation pcre "$(constant "$sources/poco/Foundation/src/pcre.h" PCRE_MAJOR PCRE_MINOR)"
    carried libPocoFoundation zlib "$(constant "$sources/poco/Foundation/include/Poco/zlib.h" ZLIB_VERSION)"
    carried libPocoXML expat "$(constant "$sources/poco/XML/include/Poco/XML/expat.h" \
        XML_MAJOR_VERSION XML_MINOR_VERSION XML_MICRO_VERSION)"
    carried libnetsnmp net-snmp "$(debian net-snmp)"
    carried libcrypto openssl "$(debian openssl)"
    carried libc++ libc++ "$("$work/zig/zig" c++ --version | sed -n 's/^clang version \([0-9.]*\).*/\1/p')"
    case "$target" in
        *-musl) carried libc musl "$(constant "$work/zig/lib/libc/musl/src/internal/version.h" VERSION)" ;;
    esac
    carried - CLI11 "$(constant /usr/include/CLI/Version.hpp CLI11_VERSION)"
} | awk '!seen[$0]++' >"$licences/LIBRARIES"

for package in poco net-snmp openssl; do
    licence_of_debian_source "$package"
done
# libc++, libc++abi and libunwind share one licence, and parts of the compiler's own are in every file.
cp "$work/zig/lib/libcxx/LICENSE.TXT" "$licences/libc++.txt"
cp "$work/zig/LICENSE" "$licences/zig.txt"
case "$target" in
    *-musl) cp "$work/zig/lib/libc/musl/COPYRIGHT" "$licences/musl.txt" ;;
esac
