# Shared by the scripts: what they install and how they build. Sourced, not run.
set -eu
cd "$(dirname "$0")/.."

build_packages="g++ cmake ninja-build qt6-base-dev libqt6opengl6-dev qt6-charts-dev qt6-svg-dev fonts-dejavu-core"
test_packages="pkg-config doxygen dpkg-dev file mmdebstrap"
windows_packages="g++-mingw-w64-x86-64-posix wine wine64 dpkg-dev clang libc++-dev"
bench_packages="libbenchmark-dev"

# Installs the Debian packages that are missing; needs no network when nothing is.
install_missing() {
    missing=""
    for package in "$@"; do
        state=$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null) || state=""
        [ "$state" = installed ] || missing="$missing $package"
    done
    [ -n "$missing" ] || return 0
    echo "Installing:$missing"
    as_root=""
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || {
            echo "Run as root, or install these packages yourself:$missing" >&2
            exit 1
        }
        as_root=sudo
    fi
    $as_root apt-get update -q
    # shellcheck disable=SC2086 # a list of words
    $as_root env DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends $missing
}

# configure PRESET [OPTION...]; uses ccache where there is one.
configure() {
    if command -v ccache >/dev/null; then
        export CMAKE_CXX_COMPILER_LAUNCHER=ccache
    fi
    cmake --preset "$@"
}
