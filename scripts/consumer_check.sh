#!/usr/bin/env bash
# Installs the library, shared and static, and builds tests/consumer against the installed tree in both ways that
# the package offers, and examples/ in one. The tree is moved after installing: nothing in it may remember where it
# was.
#
# usage: consumer_check.sh [WORK_DIR]
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
work=$(realpath -m "${1:-$root/build/consumer}")
rm -rf "$work"
mkdir -p "$work"

check_cmake() { # PREFIX
    cmake -S "$root/tests/consumer" -B "$1/consumer" -G Ninja -DCMAKE_PREFIX_PATH="$1" -DCMAKE_BUILD_TYPE=Release \
        -DCMAKE_CXX_STANDARD=17 -DCMAKE_CXX_FLAGS="-Wall -Wextra -Wpedantic -Werror" >/dev/null
    cmake --build "$1/consumer"
    "$1/consumer/consumer"
}

check_examples() { # PREFIX
    cmake -S "$root/examples" -B "$1/examples" -G Ninja -DCMAKE_PREFIX_PATH="$1" -DCMAKE_BUILD_TYPE=Release \
        -DCMAKE_CXX_FLAGS_RELEASE=-O0 -DKIVO2D_WARNINGS_AS_ERRORS=ON >/dev/null
    cmake --build "$1/examples"
    ctest --test-dir "$1/examples" --no-tests=error --output-on-failure
}

check_pkgconfig() { # PREFIX
    local flags
    export PKG_CONFIG_PATH="$1/lib/pkgconfig"
    pkg-config --exact-version=1.60.244 kivo2d
    flags=$(pkg-config --cflags --libs kivo2d)
    # shellcheck disable=SC2086 # the flags are words
    g++ -std=c++17 -Wall -Wextra -Wpedantic -Werror "$root/tests/consumer/main.cpp" $flags -o "$1/by_pkgconfig"
    LD_LIBRARY_PATH="$1/lib" "$1/by_pkgconfig"
    # The client that the README shows must work as it stands there.
    sed -n '/^```cpp$/,/^```$/p' "$root/README.md" | sed '1d;$d' >"$1/readme_client.cpp"
    # shellcheck disable=SC2086 # the flags are words
    g++ -std=c++17 -Wall -Wextra -Wpedantic -Werror "$1/readme_client.cpp" $flags -o "$1/readme_client"
    (cd "$1" && LD_LIBRARY_PATH="$1/lib" ./readme_client)
}

# Nothing of GMP, and no path of the build, may reach the installed text files.
check_texts() { # PREFIX
    if grep -rn 'gmp' "$1/include"; then echo "GMP shows in a public header"; exit 1; fi
    # With the slash: a checkout may lie in a folder whose name begins that of an installed one.
    if grep -rnIF -e "$root/" -e "$1/" -e "$work/" "$1/include" "$1/lib"; then echo "a path of the build is installed"; exit 1; fi
}

# The shared library and the command are those of the release build, which the other checks use as well. The static
# one is little optimised: what is tested is the package. Set each time: a run that failed leaves its own directories.
configure() { # KIND LIBDIR PREFIX
    if [[ $1 == shared ]]; then
        cmake --preset release -DCMAKE_INSTALL_PREFIX="$3" -DCMAKE_INSTALL_LIBDIR="$2" >/dev/null
    else
        cmake -S "$root" -B "$root/build/static" -G Ninja -DCMAKE_BUILD_TYPE=Release -DBUILD_SHARED_LIBS=OFF \
            -DCMAKE_CXX_FLAGS_RELEASE="-O0 -DNDEBUG" -DKIVO2D_BUILD_TESTS=OFF -DKIVO2D_BUILD_EXAMPLES=OFF \
            -DKIVO2D_BUILD_CLI=OFF -DCMAKE_INSTALL_PREFIX="$3" -DCMAKE_INSTALL_LIBDIR="$2" >/dev/null
    fi
}
cd "$root"
declare -A build=([shared]="$root/build/release" [static]="$root/build/static")
declare -A targets=([shared]="kivo2d kivo2d_cli" [static]="kivo2d")
for kind in shared static; do
    echo "== $kind library"
    configure $kind lib /usr/local
    # shellcheck disable=SC2086 # a list of words
    cmake --build "${build[$kind]}" --target ${targets[$kind]}
    DESTDIR="$work/stage-$kind" cmake --install "${build[$kind]}" >/dev/null
    prefix="$work/moved-$kind"
    mv "$work/stage-$kind/usr/local" "$prefix"
    check_texts "$prefix"
    check_cmake "$prefix"
    check_examples "$prefix"
    check_pkgconfig "$prefix"
done
"$work/moved-shared/bin/kivo2d" --version

if nm -D --defined-only -C "$work/moved-shared/lib/libkivo2d.so" | grep -E ' (__gmp|TESK_KIVO2D::(VertexVault|MeshStore|TeskTest)::)'; then
    echo "the shared library exports what it should hide"
    exit 1
fi

echo "== absolute library directory"
configure shared "$work/elsewhere/lib64" "$work/absolute"
cmake --build "${build[shared]}" --target kivo2d kivo2d_cli # what is linked has room for the folder's name
cmake --install "${build[shared]}" >/dev/null
configure shared lib /usr/local
"$work/absolute/bin/kivo2d" --version
PKG_CONFIG_PATH="$work/elsewhere/lib64/pkgconfig" pkg-config --cflags --libs kivo2d | tr ' ' '\n' | sed -n 's/^-[IL]//p' |
    while read -r folder; do test -d "$folder"; done
cmake -S "$root/tests/consumer" -B "$work/absolute/consumer" -G Ninja -DKivo2D_DIR="$work/elsewhere/lib64/cmake/Kivo2D" >/dev/null
cmake --build "$work/absolute/consumer"
"$work/absolute/consumer/consumer"
echo "== the installed package works both ways"
