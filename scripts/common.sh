# shellcheck shell=sh
# Shared by the scripts: what they install and how they build. Sourced, not run.
set -eu
cd "$(dirname "$0")/.."

# shellcheck disable=SC2034 # used by the scripts that source this one
{
    build_packages="g++ cmake ninja-build qt6-base-dev qtkeychain-qt6-dev libqt6opengl6-dev qt6-charts-dev qt6-svg-dev fonts-dejavu-core"
    test_packages="pkg-config doxygen dpkg-dev file mmdebstrap fuse3 python3 python3-fusepy lintian shellcheck codespell dbus-daemon gnome-keyring libsecret-1-0 parallel"
    windows_packages="g++-mingw-w64-x86-64-posix wine wine64 dpkg-dev clang libc++-dev"
    arm64_packages="g++-aarch64-linux-gnu qemu-user qt6-base-dev:arm64 qtkeychain-qt6-dev:arm64"
    bench_packages="libbenchmark-dev"
}

# as_root OTHERWISE COMMAND...: runs it as root, or through sudo, or says what to do otherwise.
as_root() {
    otherwise=$1
    shift
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        echo "Run as root, or $otherwise" >&2
        exit 1
    fi
}

# is_installed PACKAGE[:ARCHITECTURE]: for the machine's own architecture, or for the one named.
is_installed() {
    case $1 in
    *:*) architecture=${1#*:} ;;
    *) architecture=$(dpkg --print-architecture) ;;
    esac
    # a line for each architecture that the package is known for
    dpkg-query -W -f '${Architecture} ${db:Status-Status}\n' "$1" 2>/dev/null |
        grep -qxE "($architecture|all) installed"
}

# Installs the Debian packages that are missing; needs no network when nothing is.
install_missing() {
    missing=""
    for package in "$@"; do
        is_installed "$package" || missing="$missing $package"
    done
    [ -n "$missing" ] || return 0
    echo "Installing:$missing"
    by_hand="install these packages yourself:$missing"
    as_root "$by_hand" apt-get update -q
    # shellcheck disable=SC2086 # a list of words
    as_root "$by_hand" env DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends $missing
}

# Lets packages of another architecture be installed beside the machine's own.
add_architecture() {
    if [ "$(dpkg --print-architecture)" = "$1" ]; then
        echo "This machine is $1 itself: run scripts/test" >&2
        exit 2
    fi
    ! dpkg --print-foreign-architectures | grep -qx "$1" || return 0
    echo "Adding the architecture $1 to dpkg (to remove it again: docs/$1.md)"
    as_root "add the architecture yourself: dpkg --add-architecture $1" dpkg --add-architecture "$1"
}

# configure PRESET [OPTION...]; uses ccache where there is one, which finds what another copy of the sources has built.
configure() {
    if command -v ccache >/dev/null; then
        export CMAKE_CXX_COMPILER_LAUNCHER=ccache CCACHE_BASEDIR="${CCACHE_BASEDIR-$PWD}"
    fi
    cmake --preset "$@"
}
