# Sourced by the tests of the build. Gives each a folder of its own, removed at its end, and the ways to fail.
set -euo pipefail

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

fail() {
    printf '%s: %s\n' "${0##*/}" "$1" >&2
    exit 1
}

# expect_equal WHAT ACTUAL EXPECTED
expect_equal() {
    [ "$2" = "$3" ] || fail "$1: expected \"$3\", found \"$2\""
}

# configure FOLDER [OPTION...]: the harness alone, as the build that this test is part of would
configure() {
    local into=$1
    shift
    "$CMAKE" -G Ninja -S "$SOURCE" -B "$into" -DCMAKE_CXX_COMPILER="$CXX" -DCMAKE_CXX_FLAGS="$FLAGS" \
        -DVELLORAN_BUILD_RIG=OFF -DVELLORAN_BUILD_TESTS=OFF "$@"
}
