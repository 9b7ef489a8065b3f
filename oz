#!/usr/bin/env bash
# The developer's loop of libozdevice. `./oz help` lists the verbs.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

packages=(
    build-essential cmake ninja-build ccache pkg-config
    qt6-base-dev qt6-sensors-dev libcli11-dev rapidjson-dev libjsoncpp-dev libmnl-dev libsystemd-dev
    libxcb-randr0-dev libwayland-dev wayland-protocols libudev-dev modemmanager-dev libncurses-dev
    qt6-declarative-dev qt6-declarative-dev-tools qt6-tools-dev qt6-l10n-tools
    lowdown
    libgtest-dev libgmock-dev
)
# What the QML of examples and tests imports.
qml_packages=(
    qml6-module-qtquick qml6-module-qtquick-controls qml6-module-qtquick-layouts qml6-module-qtquick-templates
    qml6-module-qtquick-window qml6-module-qtqml qml6-module-qtqml-workerscript qml6-module-qttest
)
test_packages=(
    xvfb xserver-xephyr xserver-xorg-core xserver-xorg-video-dummy x11-xserver-utils iproute2 zsh fish
    dbus libumockdev-dev libglib2.0-bin python3-dbusmock upower udisks2 iio-sensor-proxy sway modemmanager
    systemd e2fsprogs network-manager procps python3-pytest
    "${qml_packages[@]}"
)
bench_packages=(libbenchmark-dev dbus libumockdev-dev upower qml6-module-qtquick qml6-module-qtqml qml6-module-qtqml-workerscript)
fuzz_packages=(clang libclang-rt-dev)
lint_packages=(clang-format clang-tidy git "${qml_packages[@]}")
docs_packages=(doxygen)
package_packages=(debhelper dpkg-dev lintian "${docs_packages[@]}")
package_check_packages=(debootstrap)
# What docs/pictures runs.
picture_packages=(xvfb xterm imagemagick x11-utils fonts-dejavu-core "${qml_packages[@]}")
abi_packages=(abigail-tools git)

usage() {
    cat <<'TEXT'
Usage: ./oz VERB [--preset PRESET] [ARGUMENTS]

  demo      builds what it shows, starts a simulated phone of its own and shows all of it, live, for half a minute; with
            --real, what this machine has: what feeds each facility, what it says, and what changes for a while
  test      builds and runs every test; further arguments go to ctest (-R NAME, --rerun-failed, ...). With the release
            preset, what is installed is what is tested
  build     builds
  run       builds and runs the ozdevice command with the arguments
  bench     builds the bench preset and runs the benchmarks; the results also go to build/bench/bench/*.json. It fails
            where an aim is missed by more than the noise of the run
  fuzz      feeds the text decoder arbitrary input; --seconds N (default 60)
  lint      checks the formatting and the public headers' documentation, and runs QML's tools and clang-tidy;
            --changed [BASE] runs that on what has changed since BASE (the main branch) alone, --fix formats
  pictures  takes the pictures in docs/ anew: of the control panel, and of the console
  docs      builds the public headers' documentation in build/docs; what has none is an error
  abi       compares the libraries' binary interface with that of the last tag
  coverage  runs the tests and prints the line coverage of the libraries and programs
  package   builds the Debian packages in build/packages, or with --output in another folder, and has lintian look at
            them; --check also installs, uses, removes and purges them in a clean system (as root); --update-symbols
            writes down the symbols that libraries have gained
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

# configure PRESET [CMAKE ARGUMENT...]
configure() {
    local log="build/$1.log"
    mkdir -p build
    cmake --preset "$@" >"$log" 2>&1 || { cat "$log" >&2; exit 1; }
}

# build PRESET [PACKAGE...]; what is in build_targets, else everything; with what is in configure_options.
build_targets=()
configure_options=()
build() {
    need "${packages[@]}" "${@:2}"
    say "building ($1)"
    configure "$1" "${configure_options[@]+"${configure_options[@]}"}"
    cmake --build --preset "$1" ${build_targets[@]+--target "${build_targets[@]}"} ||
        { echo "oz: the build failed" >&2; exit 1; }
}

product_sources() {
    git ls-files -- 'support/*.cpp' 'device/*.cpp' 'models/*.cpp' 'mock/*.cpp' 'sensors/*.cpp' 'services/*.cpp' \
        'testing/*.cpp' 'tools/*.cpp'
}

# The product's sources that have changed since the commit $1, or include a header that has.
changed_sources() {
    local changed header names=()
    changed=$(git diff --name-only --diff-filter=d "$1" -- '*.cpp' '*.hpp')
    for header in $(grep '\.hpp$' <<<"$changed"); do
        names+=(-e "[/\"<]$(basename "$header")[\">]")
    done
    {
        grep -Fxf <(echo "$changed") <(product_sources)
        [ ${#names[@]} -eq 0 ] || product_sources | xargs grep -l "${names[@]}"
        true # finding none is no failure
    } | sort -u
}

# The commit that this work began from.
base_commit() {
    local base
    base=$(git merge-base HEAD origin/main 2>/dev/null || git merge-base HEAD main 2>/dev/null || git rev-parse HEAD)
    if [ "$base" = "$(git rev-parse HEAD)" ]; then base=$(git rev-parse HEAD^ 2>/dev/null || echo "$base"); fi
    echo "$base"
}

# A library with everything that abidiff compares. build_for_abi SOURCE BUILD
build_for_abi() {
    cmake -S "$1" -B "$2" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DOZ_BUILD_TESTS=OFF >"$2.log" 2>&1 &&
        cmake --build "$2" --target ozsupport ozdevice ozmodels >>"$2.log" 2>&1 ||
        { tail -n 20 "$2.log" >&2; exit 1; }
}

check_docs() {
    need "${packages[@]}" "${docs_packages[@]}"
    say "documentation of the public headers"
    configure "$preset"
    docs/api/build "build/$preset/include" build/docs
}

# The packages of what is in the tree, in the folder $1.
build_packages() {
    local output version stage
    output=$(realpath -m "$1")
    version=$(sed -n 's/^project(.* VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
    [ "$(dpkg-parsechangelog -S Version)" = "$version" ] || {
        echo "oz: debian/changelog is about another version than CMakeLists.txt, which has $version" >&2
        exit 1
    }
    say "building the packages of $version"
    rm -rf build/package "$output"
    stage=build/package/ozdevice-$version
    mkdir -p "$stage" "$output"
    git ls-files -z --cached --others --exclude-standard | tar --create --null --ignore-failed-read --files-from=- |
        tar --extract --directory="$stage"
    # The build has a home of its own, where the compiler's cache is not.
    (
        cd "$stage"
        CCACHE_DIR=${CCACHE_DIR:-$(ccache --get-config cache_dir)} DEB_BUILD_OPTIONS=${DEB_BUILD_OPTIONS-nocheck} \
            dpkg-buildpackage --unsigned-source --unsigned-changes
    ) >build/package/log 2>&1 || { tail -n 50 build/package/log >&2; exit 1; }
    find build/package -maxdepth 1 -type f ! -name log -exec mv -t "$output" {} +
    say "lintian"
    lintian --fail-on error,warning --allow-root "$output"/*.changes
    say "the packages are in $output"
}

# What QML's own tools find in the QML files; the format alone where $1 is --fix.
check_qml() {
    local tools file failed=0
    tools=$(qtpaths6 --query QT_HOST_BINS)
    while IFS= read -r file; do
        if [ "${1:-}" = --fix ]; then
            "$tools/qmlformat" "$file" >build/formatted.qml && cp build/formatted.qml "$file"
        else
            "$tools/qmlformat" "$file" | diff -u "$file" - || failed=1
            "$tools/qmllint" -I build/dev/qml "$file" || failed=1
        fi
    done < <(git ls-files '*.qml')
    [ $failed -eq 0 ] || { echo "oz: QML's tools are not content" >&2; exit 1; }
}

# What this machine has, by a daemon of its own that ends with this.
show_real_device() {
    build_targets+=(ozdeviced)
    build "$preset"
    local bin=build/$preset/bin
    OZ_DEVICE_ROOT=$(mktemp -d)
    export OZ_DEVICE_ROOT
    "$bin/ozdeviced" --private --config /dev/null &
    # shellcheck disable=SC2064
    trap "kill $! 2>/dev/null; wait; rm -rf '$OZ_DEVICE_ROOT'" EXIT
    "$bin/ozdevice" wait-ready
    say "what feeds each facility here (ozdevice doctor)"
    "$bin/ozdevice" doctor || true
    # Activity and orientation are one class to applications.
    local shown fed
    shown=$("$bin/ozdevice" doctor | awk '/^$/ { exit } NR > 1 && $3 == "works" { print $1 }' |
        sed 's/^activity$\|^orientation$/device/' | sort -u)
    fed=$("$bin/ozdevice" doctor | awk '/^$/ { exit } NR > 1 && $2 != "none" { print $1 }' |
        sed 's/^activity$\|^orientation$/device/' | sort -u)
    for facility in $shown; do
        say "ozdevice show $facility"
        "$bin/ozdevice" show "$facility" || true
    done
    if [ -n "$fed" ]; then
        say "what changes in ten seconds (ozdevice watch" $fed")"
        # shellcheck disable=SC2086
        timeout 10 "$bin/ozdevice" watch $fed || [ $? -eq 124 ]
    fi
    exit
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
        build_targets=(ozdevice_command)
        [ "${1:-}" != --real ] || show_real_device
        build "$preset"
        exec "build/$preset/bin/ozdevice" demo "$@" ;;
    test)
        configure_options=(-DOZ_BUILD_TESTS=ON)
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
        build_targets=(pps_text_fuzz)
        build fuzz "${fuzz_packages[@]}"
        say "fuzzing for $seconds seconds"
        mkdir -p build/fuzz/found
        exec build/fuzz/bin/pps_text_fuzz build/fuzz/found fuzz/corpus/pps_text \
            -max_total_time="$seconds" -max_len=8192 -print_final_stats=1 -artifact_prefix=build/fuzz/ "$@" ;;
    lint)
        need "${packages[@]}" "${lint_packages[@]}"
        mapfile -t sources < <(git ls-files '*.cpp' '*.hpp')
        if [ "${1:-}" = --fix ]; then
            clang-format -i "${sources[@]}"
            mkdir -p build
            check_qml --fix
            exit 0
        fi
        files=$(product_sources)
        if [ "${1:-}" = --changed ]; then
            base=${2:-$(base_commit)}
            files=$(changed_sources "$base")
        fi
        say "formatting"
        clang-format --dry-run --Werror "${sources[@]}"
        check_docs
        # The module's description is generated; so is what the plugin includes.
        build_targets=(oz_sensors_autogen oz_qml oz_panel)
        build dev
        say "QML"
        check_qml
        [ -n "$files" ] || { say "no source has changed since $base"; exit 0; }
        say "clang-tidy of $(wc -l <<<"$files") sources"
        # Precompiled headers are the compiler's own, and of no use to clang-tidy.
        mkdir -p build/tidy
        sed -E 's/ -Winvalid-pch| -include [^ ]*cmake_pch\.hxx| -fpch-preprocess//g' \
            build/dev/compile_commands.json >build/tidy/compile_commands.json
        xargs -P "$(nproc)" -n 4 clang-tidy -p build/tidy --quiet --warnings-as-errors='*' <<<"$files" ;;
    pictures)
        build_targets=(ozdevice_panel ozdevice_command)
        build dev "${picture_packages[@]}"
        panel/pictures build/dev
        exec docs/pictures build/dev ;;
    docs)
        check_docs
        say "see build/docs/html/index.html" ;;
    abi)
        tag=$(git describe --tags --abbrev=0 2>/dev/null) || {
            say "there is no tag yet whose interface could be compared"
            exit 0
        }
        need "${packages[@]}" "${abi_packages[@]}"
        say "comparing with $tag"
        mkdir -p "build/abi/$tag/source"
        git archive "$tag" | tar -x -C "build/abi/$tag/source"
        build_for_abi "build/abi/$tag/source" "build/abi/$tag/build"
        build_for_abi . build/abi/current
        failed=0
        for library in libozsupport libozdevice libozmodels; do
            old="build/abi/$tag/build/lib/$library.so"
            new="build/abi/current/lib/$library.so"
            if [ "$(readlink "$old")" != "$(readlink "$new")" ]; then
                say "$library has a name of its own in this version, so nothing is to be compared"
                continue
            fi
            # 4 says that something has changed, 8 that it breaks programs, 1 and 2 that abidiff did not work.
            status=0
            abidiff --headers-dir1 "build/abi/$tag/build/include" --headers-dir2 build/abi/current/include \
                "$old" "$new" || status=$?
            [ $((status & ~4)) -eq 0 ] || failed=1
        done
        [ $failed -eq 0 ] || { echo "oz: programs that were built with $tag do not run with this version" >&2; exit 1; }
        say "programs that were built with $tag run with this version" ;;
    coverage)
        build coverage gcovr "${test_packages[@]}"
        ctest --test-dir build/coverage --parallel "$(nproc)" --output-on-failure
        exec gcovr --root . --filter 'support/' --filter 'device/' --filter 'models/' --filter 'mock/' --filter 'sensors/' \
            --filter 'services/' --filter 'testing/' --filter 'tools/' build/coverage "$@" ;;
    package)
        output=build/packages check='' update=''
        while [ $# -gt 0 ]; do
            case $1 in
                --output) output=${2:?oz: --output wants a folder}; shift ;;
                --check) check=1 ;;
                --update-symbols) update=1 ;;
                *) echo "oz: package knows no '$1'" >&2; exit 2 ;;
            esac
            shift
        done
        need "${packages[@]}" "${package_packages[@]}"
        if [ -n "$update" ]; then
            say "building the libraries"
            build_targets=(ozsupport ozdevice ozmodels oztesting)
            configure_options=(-DOZ_BUILD_TESTS=OFF)
            build release
            exec debian/update-symbols build/release/lib
        fi
        build_packages "$output"
        [ -z "$check" ] || { need "${package_check_packages[@]}"; say "in a clean system"; exec debian/check "$output"; } ;;
    install)
        configure_options=(-DOZ_BUILD_TESTS=OFF)
        build release
        exec cmake --install build/release "$@" ;;
    setup)
        need "${packages[@]}" "${test_packages[@]}" "${bench_packages[@]}" "${fuzz_packages[@]}" "${lint_packages[@]}" \
            "${docs_packages[@]}" "${abi_packages[@]}" "${package_packages[@]}" "${package_check_packages[@]}" \
            "${picture_packages[@]}" ;;
    clean)
        rm -rf build ;;
    help | --help | -h)
        usage ;;
    *)
        echo "oz: unknown verb '$verb'" >&2
        usage >&2
        exit 2 ;;
esac
