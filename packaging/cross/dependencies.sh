#!/usr/bin/env bash
# Builds what the tool needs for one target of scripts/cross, with the same compiler: OpenSSL's
# libcrypto, Net-SNMP's library and four of POCO's, each from Debian's source package.
#
# usage: dependencies.sh WORK TARGET
#   WORK/zig, WORK/sources    the compiler's folder and Debian's source packages
#   WORK/TARGET/bin           made here: the compiler's programs for this target
#   WORK/TARGET/toolchain.cmake, WORK/TARGET/installed    made here: what CMake builds with
#
# Linux gets static libraries. macOS gets shared ones, which look for each other in the folder of the
# executable. A second call does only what an earlier one did not finish.
set -euo pipefail
work=$1 target=$2
here=$work/$target
installed=$here/installed
case "$target" in
    x86_64-linux-musl) triple=$target processor=x86_64 openssl=linux-x86_64 ;;
    aarch64-linux-musl) triple=$target processor=aarch64 openssl=linux-aarch64 ;;
    x86_64-macos) triple=$target.11.0 processor=x86_64 openssl=darwin64-x86_64-cc ;;
    aarch64-macos) triple=$target.11.0 processor=arm64 openssl=darwin64-arm64-cc ;;
    *) echo "dependencies.sh: no target $target" >&2; exit 2 ;;
esac
case "$target" in
    *-macos) system=Darwin shared=ON host=x86_64-apple-darwin17 ;;
    *) system=Linux shared=OFF host=x86_64-unknown-linux-gnu ;;
esac
jobs=${CMAKE_BUILD_PARALLEL_LEVEL:-$(nproc)}

# Without -g0 this compiler writes for debuggers what is stripped in the end. Hardened like the tool
# (cmake/Hardening.cmake). Sections, so that the static executable takes only
# what it calls. Debian compiles these sources without its own warnings, too.
flags="-O2 -g0 -fPIC -fstack-protector-strong -ffunction-sections -fdata-sections -w"
flags+=" -ffile-prefix-map=$here/source/= -ffile-prefix-map=$work/zig/=" # no path of the build in them

export CC=$here/bin/cc CXX=$here/bin/c++ AR=$here/bin/ar RANLIB=$here/bin/ranlib

write_programs() {
    local name
    mkdir -p "$here/bin"
    for name in cc c++ ar ranlib; do
        {
            echo '#!/bin/sh'
            echo "export ZIG_GLOBAL_CACHE_DIR='$work/zig-cache' ZIG_LOCAL_CACHE_DIR='$work/zig-cache'"
            case "$name" in
                c*) echo "exec '$work/zig/zig' $name -target $triple \"\$@\"" ;;
                *) echo "exec '$work/zig/zig' $name \"\$@\"" ;;
            esac
        } >"$here/bin/$name"
        chmod 755 "$here/bin/$name"
    done
    {
        echo "set(CMAKE_SYSTEM_NAME $system)"
        echo "set(CMAKE_SYSTEM_PROCESSOR $processor)"
        echo "set(CMAKE_C_COMPILER \"$CC\")"
        echo "set(CMAKE_CXX_COMPILER \"$CXX\")"
        for name in CMAKE CMAKE_C_COMPILER CMAKE_CXX_COMPILER; do
            echo "set(${name}_AR \"$AR\" CACHE FILEPATH \"\" FORCE)"
            echo "set(${name}_RANLIB \"$RANLIB\" CACHE FILEPATH \"\" FORCE)"
        done
        echo "set(CMAKE_FIND_ROOT_PATH \"$installed\")"
        echo "set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)"
        for name in LIBRARY INCLUDE PACKAGE; do
            echo "set(CMAKE_FIND_ROOT_PATH_MODE_$name ONLY)"
        done
        if [[ $system == Linux ]]; then
            # Static, and position-independent by CMAKE_POSITION_INDEPENDENT_CODE.
            echo "set(CMAKE_EXE_LINKER_FLAGS_INIT \"-static -Wl,--gc-sections -L$installed/lib\")"
        else
            # Found beside the executable. The compiler's own C++ library would be copied into each
            # file, and an exception thrown in one would be a stranger to the next.
            echo "set(CMAKE_OSX_SYSROOT \"\")"
            echo "set(CMAKE_INSTALL_NAME_TOOL /bin/false)"
            echo "set(CMAKE_BUILD_WITH_INSTALL_NAME_DIR ON)"
            echo "set(CMAKE_INSTALL_NAME_DIR @executable_path)"
            echo "set(CMAKE_MACOSX_RPATH OFF)"
            echo "set(CMAKE_SKIP_RPATH ON)"
            for name in EXE SHARED MODULE; do
                echo "set(CMAKE_${name}_LINKER_FLAGS_INIT \"-s -nostdlib++ -L$installed/lib -lc++\")"
            done
        fi
    } >"$here/toolchain.cmake"
}

# unpack PACKAGE: its sources, with Debian's patches, in the folder of that name.
unpack() {
    rm -rf "$here/source/$1"
    mkdir -p "$here/source"
    dpkg-source --no-check --extract "$work/sources/$1"_*.dsc "$here/source/$1"
    cd "$here/source/$1"
}

# dylib NAME ARCHIVE LIBRARY…: the shared library NAME for macOS, of everything in ARCHIVE.
dylib() {
    local name=$1 archive=$2
    shift 2
    "$CC" -dynamiclib -s -o "$installed/lib/$name" -Wl,-install_name,"@executable_path/$name" \
        -Wl,-force_load,"$archive" -L"$installed/lib" "$@"
}

# The C++ library as one shared file, from the compiler's own sources. The compiler names its headers
# and their settings itself.
build_cxx() {
    [[ $system == Darwin ]] || return 0
    local lib=$work/zig/lib objects=$here/source/libcxx
    rm -rf "$objects"
    mkdir -p "$objects"
    # Left out: what serves without exceptions, without integers of 128 bits, and not on macOS.
    find -L "$lib"/libcxx/src/{,filesystem,ryu} "$lib/libcxxabi/src" -maxdepth 1 -name '*.cpp' \
        ! -name cxa_noexception.cpp ! -name int128_builtins.cpp \
        ! -name cxa_thread_atexit.cpp -print0 | sort -zu |
        xargs -0 -P "$jobs" -I{} sh -c 'object=$0/$(echo "{}" | tr / _).o && exec "$@" -o "$object" -c "{}"' \
            "$objects" "$CXX" $flags -std=c++23 -fvisibility=default -D_LIBCPP_BUILDING_LIBRARY \
            -D_LIBCXXABI_BUILDING_LIBRARY -DLIBCXX_BUILDING_LIBCXXABI \
            -DLIBC_NAMESPACE=libc_in_libcxx -I"$lib/libcxxabi/include" -I"$lib/libcxx/src" -I"$lib/libcxx/libc"
    "$CC" -dynamiclib -s -o "$installed/lib/libc++.1.dylib" \
        -Wl,-install_name,@executable_path/libc++.1.dylib "$objects"/*.o
    ln -sf libc++.1.dylib "$installed/lib/libc++.dylib"
}

build_openssl() {
    unpack openssl
    # What Net-SNMP calls: digests, ciphers, random numbers. No openssl.cnf: it belongs to the system's
    # own release of the library.
    ./Configure "$openssl" no-tests no-shared no-engine no-dso no-module no-ssl3 no-tls no-dtls no-comp \
        no-async no-sock no-autoload-config -DOPENSSL_NO_APPLE_CRYPTO_RANDOM --openssldir=/etc/ssl $flags
    make -s -j"$jobs" build_generated
    perl util/mkbuildinf.pl "zig cc" "$openssl" >crypto/buildinf.h # would name the compiler's path
    make -s -j"$jobs" libcrypto.a
    cp -R include/openssl "$installed/include/"
    if [[ $system == Darwin ]]; then
        dylib libcrypto.3.dylib libcrypto.a
        ln -sf libcrypto.3.dylib "$installed/lib/libcrypto.dylib"
    else
        cp libcrypto.a "$installed/lib/"
    fi
}

build_net_snmp() {
    unpack net-snmp
    touch configure # or make would configure once more, since the patches touch what it comes of
    # One system answers alike on its processors, and most of the time goes into asking. Left out is what
    # names the target's compiler.
    local answers=$work/net-snmp.$system
    if [[ -e $answers ]]; then cp "$answers" config.cache; fi
    # Debian's settings that matter to a client. Its config.sub is older than some of these
    # processors and systems; what it makes of the host serves only to choose a header, which is the same.
    env OPENSSL_CFLAGS="-I$installed/include" OPENSSL_LIBS=-lcrypto PKG_CONFIG=/bin/false \
        ./configure --quiet --cache-file=config.cache --build=x86_64-pc-linux-gnu --host="$host" --prefix=/usr \
        --sysconfdir=/etc --with-persistent-directory=/var/lib/snmp --enable-ucd-snmp-compatibility \
        --with-cflags="$flags -DNETSNMP_USE_INLINE" --with-openssl="$installed" \
        --with-security-modules=tsm --enable-blumenthal-aes --with-logfile=none --with-defaults \
        --disable-shared --disable-agent --disable-applications --disable-scripts --disable-manuals \
        --disable-mibs --disable-embedded-perl --without-perl-modules
    grep -v -e '^ac_cv_env_' -e "$here" config.cache >"$answers"
    make -s -j"$jobs" -C snmplib
    make -s -C snmplib install DESTDIR="$PWD/stage"
    touch config.status stamp-h
    make -s installheaders DESTDIR="$PWD/stage"
    cp -R stage/usr/. "$installed"
    install -D net-snmp-config "$installed/bin/net-snmp-config"
    if [[ $system == Darwin ]]; then
        dylib libnetsnmp.40.dylib "$installed/lib/libnetsnmp.a" -lcrypto
        rm "$installed/lib/libnetsnmp.a"
        ln -sf libnetsnmp.40.dylib "$installed/lib/libnetsnmp.dylib"
    fi
}

build_poco() {
    unpack poco
    local part off=()
    for part in ENCODINGS MONGODB DATA_SQLITE REDIS ZIP PAGECOMPILER PAGECOMPILER_FILE2PAGE ACTIVERECORD \
        ACTIVERECORD_COMPILER NETSSL CRYPTO JWT APACHECONNECTOR DATA DATA_MYSQL DATA_POSTGRESQL DATA_ODBC; do
        off+=(-D "ENABLE_$part=OFF")
    done
    # Its copy of zlib is older than the compiler's macros, and takes macOS for the system before it,
    # which had no fdopen, unless that is a macro.
    if [[ $system == Darwin ]]; then flags+=' -Dfdopen=fdopen'; fi
    cmake -S . -B build-zig -G Ninja -D CMAKE_TOOLCHAIN_FILE="$here/toolchain.cmake" \
        -D CMAKE_BUILD_TYPE=Release -D BUILD_SHARED_LIBS="$shared" -D CMAKE_INSTALL_PREFIX="$installed" \
        -D CMAKE_C_FLAGS="$flags" -D CMAKE_CXX_FLAGS="$flags" "${off[@]}"
    cmake --build build-zig --parallel "$jobs"
    cmake --install build-zig
}

write_programs
mkdir -p "$installed/lib" "$installed/include" "$here/log"
for part in cxx openssl net_snmp poco; do
    [[ ! -e $here/log/$part.done ]] || continue
    echo "$target: $part" >&2
    set +e # a subshell in a condition would go on after a failure
    (set -e; build_"$part") >"$here/log/$part" 2>&1
    status=$?
    set -e
    if [[ $status -ne 0 ]]; then
        tail -n 40 "$here/log/$part" >&2
        echo "$target: $part failed; see $here/log/$part" >&2
        exit 1
    fi
    touch "$here/log/$part.done"
done
