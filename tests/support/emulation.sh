# Sourced after check.sh by tests of the programs for 32-bit ARM, which run here by emulation.
needs arm-linux-gnueabihf-g++ arm-linux-gnueabihf-readelf qemu-arm
programs=$SOURCE/build/armhf-static/bin
ulimit -c 0

# The command that runs a program under its usual name. Its own 4 GiB of addresses begin at 4 GiB, away from the emulator's.
emulating() {
    echo "qemu-arm -0 $1 -B 0x100000000 -L /usr/arm-linux-gnueabihf"
}

# ctest in the folder of the tests, whose log is not that of the ctest that runs this.
end_to_end() {
    ctest --test-dir "$BINARY/tests" --no-tests=error "$@"
}

# The tests of a file as one regular expression: on each line a regular expression of names, a blank, the reason why they are
# left out.
not_emulated() {
    local pattern reason tests
    while read -r pattern reason; do
        [ -n "$reason" ] || fail "$1: no reason beside $pattern"
        tests=$(end_to_end -N -R "$pattern" | sed -n 's/^Total Tests: //p')
        [ "$tests" -gt 0 ] || fail "$1: no end-to-end test matches $pattern"
        echo "$pattern"
    done < <(grep -v '^#' "$1") | paste -sd '|'
}

# emulate LOG LEFT-OUT [CTEST-OPTION...]: the tests mostly wait for the harness's pauses.
emulate() {
    end_to_end -E "$2" "${@:3}" --output-on-failure --parallel "$((12 * $(nproc)))" >"$1" ||
        fail "end-to-end tests failed, emulated; the log is $1: $(grep -A 20 '\*\*\*' "$1"; tail -n 5 "$1")"
    grep 'tests passed' "$1"
}

# is_static_and_stripped PROGRAM
is_static_and_stripped() {
    local headers
    headers=$(arm-linux-gnueabihf-readelf --wide --file-header --program-headers --sections "$1")
    grep -q 'Machine: *ARM' <<<"$headers" || fail "$1 is not a program for ARM"
    ! grep -q INTERP <<<"$headers" || fail "$1 is not statically linked"
    ! grep -q symtab <<<"$headers" || fail "$1 is not stripped"
    echo "figure: static ${1##*/} for ARM: $(stat -c %s "$1") bytes"
}
