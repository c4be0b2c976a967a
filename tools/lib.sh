# shellcheck shell=bash
# What the scripts in this folder share. To be sourced; leaves the caller at the root of the repository.

set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."

# One job a processor, unless the caller knows better.
export CMAKE_BUILD_PARALLEL_LEVEL=${CMAKE_BUILD_PARALLEL_LEVEL:-$(nproc)}

# Debian packages, by purpose.
packages_build=(g++ cmake ninja-build libssl-dev libxml2-dev libxslt1-dev zlib1g-dev)
packages_tests=(python3 pkg-config dpkg-dev googletest locales tzdata libxml2-utils xsltproc
    libarchive-tools p7zip-full)
packages_windows=(g++-mingw-w64-x86-64-posix libz-mingw-w64-dev wine64)
packages_bench=(python3 libbenchmark-dev rapidjson-dev nlohmann-json3-dev libsimdjson-dev libboost-json1.81-dev
    libicu-dev libspdlog-dev libarchive-tools)
# clang 14, which Debian calls "clang", has no std::source_location.
packages_fuzz=(clang-16 libclang-rt-16-dev llvm-16)
packages_lint=(clang-tidy-16 python3)
packages_format=(clang-format)
packages_coverage=(gcovr)
packages_docs=(doxygen)

say() {
    printf '== %s\n' "$*"
}

fail() {
    printf '%s: %s\n' "${0##*/}" "$*" >&2
    exit 1
}

as_root() {
    if [[ $(id -u) -eq 0 ]]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        fail "this needs root or sudo: $*"
    fi
}

# need PACKAGE... : installs what is missing. Asks the package manager nothing where nothing is.
need() {
    command -v dpkg-query >/dev/null || fail "packages are installed on Debian only; missing perhaps: $*"
    local installed package missing=()
    installed=$(dpkg-query -W -f='${db:Status-Status} ${Package}\n' "$@" 2>/dev/null || true)
    for package in "$@"; do
        grep -qxF "installed $package" <<<"$installed" || missing+=("$package")
    done
    if [[ ${#missing[@]} -gt 0 ]]; then
        say "installing ${missing[*]}"
        as_root apt-get update -q </dev/null
        as_root env DEBIAN_FRONTEND=noninteractive \
            apt-get install -q -y --no-install-recommends "${missing[@]}" </dev/null
    fi
}

# need_locale NAME LANGUAGE : generates NAME.UTF-8 where it is missing.
need_locale() {
    if ! locale -a 2>/dev/null | grep -qix "$1\.utf-\?8"; then
        say "generating the locale $1.UTF-8"
        as_root localedef -i "$1" -f UTF-8 "$1.UTF-8"
    fi
}

# configure PRESET : runs CMake where the build tree is missing or older than the presets. Everything else
# that changes makes Ninja run it.
configure() {
    if [[ ! -e build/$1/build.ninja || CMakePresets.json -nt build/$1/CMakeCache.txt ]]; then
        say "configuring $1"
        # A cache of older presets may hold what the present ones no longer say.
        rm -f "build/$1/CMakeCache.txt"
        cmake --preset "$1" >"build/.configure-$1.log" 2>&1 || {
            cat "build/.configure-$1.log"
            say "CMake failed for $1"
            return 1
        }
    fi
}

# build PRESET [TARGET...]
build() {
    local preset=$1
    shift
    mkdir -p build
    # Where the caller asks for the outcome, bash does not stop by itself.
    configure "$preset" || return 1
    say "building $preset${*:+ ($*)}"
    cmake --build --preset "$preset" ${*:+--target "$@"}
}
