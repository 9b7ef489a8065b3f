# What `oz` and its scripts share. To be sourced in the project's folder, with `set -euo pipefail`.
# shellcheck shell=bash disable=SC2034

# The Debian packages of each verb.
build_packages=(
    build-essential cmake ninja-build ccache pkg-config
    qt6-base-dev qt6-sensors-dev libcli11-dev rapidjson-dev libmnl-dev libsystemd-dev
    libxcb-randr0-dev libwayland-dev wayland-protocols libudev-dev modemmanager-dev libncurses-dev
    libgstreamer1.0-dev libgstreamer-plugins-base1.0-dev
)
# What is shipped besides: QML, panel and manual.
product_packages=(
    "${build_packages[@]}"
    qt6-declarative-dev qt6-declarative-dev-tools qt6-tools-dev qt6-l10n-tools lowdown
)
# What the QML of examples and tests imports.
qml_packages=(
    qml6-module-qtquick qml6-module-qtquick-controls qml6-module-qtquick-layouts qml6-module-qtquick-templates
    qml6-module-qtquick-window qml6-module-qtqml qml6-module-qtqml-workerscript qml6-module-qttest
)
test_packages=(
    libgtest-dev libgmock-dev
    xvfb xserver-xephyr xserver-xorg-core xserver-xorg-video-dummy x11-xserver-utils iproute2 zsh fish
    dbus umockdev libumockdev-dev libglib2.0-bin python3-dbusmock upower udisks2 iio-sensor-proxy sway swaybg modemmanager
    systemd e2fsprogs network-manager procps python3-pytest python3-pytest-xdist
    gstreamer1.0-plugins-base gstreamer1.0-plugins-good gstreamer1.0-plugins-bad gstreamer1.0-plugins-ugly
    gstreamer1.0-libav gstreamer1.0-x gstreamer1.0-tools
    xwayland pipewire wireplumber gstreamer1.0-pipewire
    "${qml_packages[@]}"
)
# The virtual machine with simulated radios, and what runs in it.
radio_packages=(
    qemu-system-x86 busybox-static xz-utils udev iw rfkill wpasupplicant polkitd python3 "${test_packages[@]}"
)
# The benchmarks build the rigs of the tests.
bench_packages=(libbenchmark-dev "${test_packages[@]}")
fuzz_packages=(clang libclang-rt-dev)
lint_packages=(clang-format clang-tidy git mypy "${bench_packages[@]}")
docs_packages=(doxygen)
package_packages=(debhelper dh-python dpkg-dev lintian "${docs_packages[@]}")
clean_system_packages=(debootstrap util-linux git)
# What docs/pictures runs.
picture_packages=(xvfb xterm imagemagick x11-utils fonts-dejavu-core "${qml_packages[@]}")
abi_packages=(abigail-tools git)
coverage_packages=(gcovr "${test_packages[@]}")

say() { if [ -t 1 ]; then printf '\033[1m== %s\033[0m\n' "$*"; else printf '== %s\n' "$*"; fi; }
fail() { printf 'oz: %s\n' "$*" >&2; exit 1; }
wrong_use() { printf 'oz: %s\n' "$*" >&2; exit 2; }

# need PACKAGE...: installs those that are missing.
need() {
    local package log missing=() root=()
    for package in "$@"; do
        [ "$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null)" = installed ] || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return
    mapfile -t missing < <(printf '%s\n' "${missing[@]}" | sort -u)
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || fail "please install as root: apt-get install ${missing[*]}"
        root=(sudo)
    fi
    say "installing ${missing[*]}"
    "${root[@]}" apt-get update -qq || fail "apt-get update failed"
    log=$(mktemp)
    "${root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends \
        "${missing[@]}" >"$log" 2>&1 || {
        grep '^E: ' "$log" >&2 || tail -n 20 "$log" >&2
        rm -f "$log"
        fail "apt-get could not install ${missing[*]}"
    }
    rm -f "$log"
}

# A build tree for the command and its daemon alone, which needs fewer packages.
only_command=(-DOZ_BUILD_TESTS=OFF -DOZ_BUILD_QML=OFF)

# The commit that this work began from.
base_commit() {
    local base
    base=$(git merge-base HEAD origin/main 2>/dev/null || git merge-base HEAD main 2>/dev/null || git rev-parse HEAD)
    if [ "$base" = "$(git rev-parse HEAD)" ]; then base=$(git rev-parse HEAD^ 2>/dev/null || echo "$base"); fi
    echo "$base"
}

# The names of the verbs, as the help in `oz` lists them, and of the presets: one a line.
verbs() { sed -n 's/^  \([a-z]*\)  .*/\1/p' oz; }
presets() { sed -n 's/.*"name": "\([a-z]*\)", "displayName".*/\1/p' CMakePresets.json; }

# configure PRESET [CMAKE ARGUMENT...]
configure() {
    local log="build/$1.log"
    mkdir -p build
    cmake --preset "$@" >"$log" 2>&1 || { cat "$log" >&2; fail "the configuration failed"; }
}

# The same, for the command alone if nobody has configured the tree for more.
configure_command() {
    local options=("${only_command[@]}")
    ! grep -qs '^OZ_BUILD_QML:BOOL=ON' "build/$1/CMakeCache.txt" || options=()
    configure "$1" "${options[@]}"
}

# build PRESET [TARGET...]: what is configured.
build() {
    local preset=$1
    shift
    say "building ($preset)"
    cmake --build --preset "$preset" ${1:+--target "$@"} || fail "the build failed"
}
