# Sourced by tests that are scripts. Gives each a folder of its own, removed at its end, the ways to fail and the way to be left
# out. They start in the checkout, and test the build in BINARY, which is build/debug where ctest does not say.
set -euo pipefail

script=$(readlink -f "$0")
SOURCE=$(readlink -f "$(dirname "${BASH_SOURCE[0]}")/../..")
BINARY=${BINARY-$SOURCE/build/debug}
cd "$SOURCE"
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
failed=0

# Says what is wrong, and goes on; `exit "$failed"` ends such a test.
complain() {
    printf '%s: %s\n' "${script##*/}" "$*" >&2
    failed=1
}

fail() {
    complain "$@"
    exit 1
}

# expect_equal WHAT ACTUAL EXPECTED
expect_equal() {
    [ "$2" = "$3" ] || fail "$1: expected \"$3\", found \"$2\""
}

# Ends a test that cannot be tried on this machine. In CI, that is a failure.
leave_out() {
    [ -z "${CI-}" ] || fail "in CI no test may be left out: $*"
    echo "${script##*/}: left out: $*"
    exit 77
}

# needs COMMAND|FILE...
needs() {
    local wanted
    for wanted; do
        [[ $wanted == */* && -e $wanted ]] || command -v "$wanted" >/dev/null || leave_out "no $wanted here; scripts/setup ci installs it"
    done
}
