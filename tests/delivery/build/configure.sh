# Sourced by the tests that build, with what ctest says about the build that they are part of.
. "$(dirname "${BASH_SOURCE[0]}")/../../support/check.sh"

# configure FOLDER [OPTION...]: the harness alone, as the build that this test is part of would
configure() {
    local into=$1
    shift
    "$CMAKE" -G Ninja -S "$SOURCE" -B "$into" -DCMAKE_CXX_COMPILER="$CXX" -DCMAKE_CXX_FLAGS="$FLAGS" \
        -DVELLORAN_BUILD_RIG=OFF -DVELLORAN_BUILD_TESTS=OFF "$@"
}
