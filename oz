#!/usr/bin/env bash
# The developer's loop of libozdevice. `./oz help` lists the verbs.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

packages=(
    build-essential cmake ninja-build ccache pkg-config
    qt6-base-dev qt6-sensors-dev libcli11-dev rapidjson-dev libjsoncpp-dev libmnl-dev libsystemd-dev
    libxcb-randr0-dev
    libgtest-dev libgmock-dev
)
test_packages=(xvfb xserver-xephyr xserver-xorg-core xserver-xorg-video-dummy x11-xserver-utils iproute2)
bench_packages=(libbenchmark-dev dbus)
fuzz_packages=(clang libclang-rt-dev)
lint_packages=(clang-format clang-tidy git)

usage() {
    cat <<'TEXT'
Usage: ./oz VERB [--preset PRESET] [ARGUMENTS]

  demo      builds, starts a simulated phone of its own and shows a live SD card for a short tour
  test      builds and runs every test; further arguments go to ctest (-R NAME, --rerun-failed, ...)
  build     builds
  run       builds and runs the ozdevice command with the arguments
  bench     builds the bench preset and runs the benchmarks; the results also go to build/bench/bench/*.json
  fuzz      feeds the text decoder arbitrary input; --seconds N (default 60)
  lint      checks the formatting and runs clang-tidy; --fix formats
  coverage  runs the tests and prints the line coverage of the libraries and programs
  install   installs the release preset; the arguments go to cmake --install (--prefix DIR)
  setup     installs the Debian packages that the verbs need
  clean     removes build/
  help      this text

Presets: dev (the default), release, bench, asan, tsan, coverage, fuzz. Each verb installs the Debian packages it lacks.
TEXT
}

say() { printf '\033[1m== %s\033[0m\n' "$*" | if [ -t 1 ]; then cat; else sed 's/\x1b\[[0-9;]*m//g'; fi; }

need() {
    local missing=()
    for package in "$@"; do
        [ "$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null)" = installed ] || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return
    say "installing ${missing[*]}"
    local root=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || { echo "oz: please install as root: apt-get install ${missing[*]}" >&2; exit 1; }
        root=(sudo)
    fi
    "${root[@]}" apt-get update -qq
    "${root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

build() {
    need "${packages[@]}" "${@:2}"
    say "building ($1)"
    local log="build/$1.log"
    mkdir -p build
    cmake --preset "$1" >"$log" 2>&1 || { cat "$log" >&2; exit 1; }
    cmake --build --preset "$1" || { echo "oz: the build failed" >&2; exit 1; }
}

verb=${1:-help}
[ $# -gt 0 ] && shift
preset=dev
arguments=()
while [ $# -gt 0 ]; do
    case $1 in
        --preset) [ $# -gt 1 ] || { echo "oz: --preset wants a name" >&2; exit 2; }; preset=$2; shift 2 ;;
        --preset=*) preset=${1#*=}; shift ;;
        --) shift; arguments+=("$@"); break ;;
        *) arguments+=("$1"); shift ;;
    esac
done
grep -q "\"name\": \"$preset\", \"displayName\"" CMakePresets.json || {
    echo "oz: unknown preset '$preset'; known are dev, release, bench, asan, tsan, coverage, fuzz" >&2
    exit 2
}
set -- "${arguments[@]+"${arguments[@]}"}"

case $verb in
    demo)
        build "$preset"
        exec "build/$preset/bin/ozdevice" demo "$@" ;;
    test)
        build "$preset" "${test_packages[@]}"
        say "testing ($preset)"
        exec ctest --test-dir "build/$preset" --parallel "$(nproc)" --output-on-failure --no-tests=error "$@" ;;
    build)
        build "$preset" ;;
    run)
        build "$preset" >&2
        exec "build/$preset/bin/ozdevice" "$@" ;;
    bench)
        build bench "${bench_packages[@]}"
        say "measuring"
        exec bench/run build/bench "$@" ;;
    fuzz)
        seconds=60
        [ "${1:-}" = --seconds ] && { seconds=${2:?oz: --seconds wants a number}; shift 2; }
        build fuzz "${fuzz_packages[@]}"
        say "fuzzing for $seconds seconds"
        mkdir -p build/fuzz/found
        exec build/fuzz/bin/pps_text_fuzz build/fuzz/found fuzz/corpus/pps_text \
            -max_total_time="$seconds" -max_len=8192 -print_final_stats=1 -artifact_prefix=build/fuzz/ "$@" ;;
    lint)
        need "${packages[@]}" "${lint_packages[@]}"
        mapfile -t sources < <(git ls-files '*.cpp' '*.hpp')
        if [ "${1:-}" = --fix ]; then
            exec clang-format -i "${sources[@]}"
        fi
        say "formatting"
        clang-format --dry-run --Werror "${sources[@]}"
        build dev
        say "clang-tidy"
        # Precompiled headers are the compiler's own, and of no use to clang-tidy.
        mkdir -p build/tidy
        sed -E 's/ -Winvalid-pch| -include [^ ]*cmake_pch\.hxx| -fpch-preprocess//g' \
            build/dev/compile_commands.json >build/tidy/compile_commands.json
        git ls-files 'support/*.cpp' 'device/*.cpp' 'mock/*.cpp' 'sensors/*.cpp' 'services/*.cpp' 'tools/*.cpp' |
            xargs -P "$(nproc)" -n 4 clang-tidy -p build/tidy --quiet --warnings-as-errors='*' ;;
    coverage)
        build coverage gcovr "${test_packages[@]}"
        ctest --test-dir build/coverage --parallel "$(nproc)" --output-on-failure
        exec gcovr --root . --filter 'support/' --filter 'device/' --filter 'mock/' --filter 'sensors/' --filter 'services/' \
            --filter 'tools/' build/coverage "$@" ;;
    install)
        build release
        exec cmake --install build/release "$@" ;;
    setup)
        need "${packages[@]}" "${test_packages[@]}" "${bench_packages[@]}" "${fuzz_packages[@]}" "${lint_packages[@]}" ;;
    clean)
        rm -rf build ;;
    help | --help | -h)
        usage ;;
    *)
        echo "oz: unknown verb '$verb'" >&2
        usage >&2
        exit 2 ;;
esac
