#!/usr/bin/env bash
# The developer's loop of libozdevice. `./oz help` lists the verbs; scripts/ has what is longer than a few lines.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
. scripts/common.sh

usage() {
    cat <<'TEXT'
Usage: ./oz VERB [--preset PRESET] [ARGUMENT...]

  demo      builds what it shows, starts a simulated phone of its own and shows all of it, live, for half a minute; with
            --real, what this machine has: what feeds each facility, what it says, and what changes for a while
  test      builds and runs every test; further arguments go to ctest (-R NAME, --rerun-failed, ...)
  radios    runs the tests that need Wi-Fi radios, in a virtual machine with simulated ones, whose kernel it fetches the
            first time; further arguments go to ctest
  build     builds everything, the tests too
  run       builds and runs the ozdevice command with the arguments
  fresh     runs verbs in a minimal Debian that has nothing else, on a clone of HEAD (as root): by default demo, then
            test; a verb with arguments is one word ('test -R Battery'), --user runs them as a user with sudo
  bench     builds the bench preset and runs the benchmarks; the results also go to build/bench/bench/*.json. It fails
            where an aim is missed by more than the noise of the run
  fuzz      feeds what reads text of strangers arbitrary input; --seconds N (default 60)
  lint      checks formatting, public headers and documentation, QML, Python, and all sources with clang-tidy; --changed
            [BASE] looks with clang-tidy at what has changed since BASE alone, --fix formats
  pictures  takes the pictures in docs/ anew: of the control panel, and of the console
  pages     writes the parts of docs/, of the simulated phone's file and of the test kits that come from the facilities'
            tables; --check writes nothing, and fails if something is stale
  docs      builds the public headers' documentation in build/docs; what has none is an error
  abi       compares the installed libraries' binary interface with that of a commit (by default the last tag, or the
            commit that this work began from)
  coverage  runs the tests and prints the line coverage of the libraries and programs
  package   builds the Debian packages in build/packages, or with --output in another folder, and has lintian look at
            them; --check also installs, uses, removes and purges them in a clean system (as root); --update-symbols
            writes down the symbols that libraries have gained
  install   installs the release preset; the arguments go to cmake --install (--prefix DIR)
  setup     installs the Debian packages that the verbs need
  clean     removes build/
  help      this text

TEXT
    # shellcheck disable=SC2046
    echo "Presets: $(echo $(presets) | sed 's/ /, /g; s/^dev/dev (the default)/')." \
        "Each verb installs the Debian packages it lacks."
}

verb=${1:-help}
[ $# -eq 0 ] || shift
case $verb in --help | -h) verb=help ;; esac
# shellcheck disable=SC2046
verbs | grep -Fxq -- "$verb" || wrong_use "unknown verb '$verb'; there are" $(verbs)
preset=dev arguments=()
while [ $# -gt 0 ]; do
    case $1 in
        --preset) [ $# -gt 1 ] || wrong_use "--preset wants a name"; preset=$2; shift 2 ;;
        --preset=*) preset=${1#*=}; shift ;;
        --) shift; arguments+=("$@"); break ;;
        *) arguments+=("$1"); shift ;;
    esac
done
# shellcheck disable=SC2046
presets | grep -Fxq -- "$preset" || wrong_use "unknown preset '$preset'; there are" $(presets)
set -- "${arguments[@]+"${arguments[@]}"}"

case $verb in
    demo)
        need "${build_packages[@]}"
        configure_command "$preset"
        build "$preset" ozdevice_command
        [ "${1:-}" != --real ] || exec scripts/real-demo "$preset"
        exec "build/$preset/bin/ozdevice" demo "$@" ;;
    test)
        need "${product_packages[@]}" "${test_packages[@]}"
        configure "$preset" -DOZ_BUILD_TESTS=ON
        build "$preset"
        say "testing ($preset)"
        exec scripts/test "build/$preset" "$@" ;;
    radios)
        need "${product_packages[@]}" "${radio_packages[@]}"
        scripts/fetch-kernel
        configure "$preset" -DOZ_BUILD_TESTS=ON
        build "$preset" ozdevice_command
        say "testing among simulated radios ($preset)"
        exec scripts/test "build/$preset" --build-config radios --label-regex '^radios$' "$@" ;;
    build)
        need "${product_packages[@]}" "${test_packages[@]}"
        configure "$preset"
        build "$preset" ;;
    run)
        need "${build_packages[@]}" >&2
        configure_command "$preset" >&2
        build "$preset" ozdevice_command >&2
        exec "build/$preset/bin/ozdevice" "$@" ;;
    bench)
        need "${product_packages[@]}" "${bench_packages[@]}"
        configure bench
        build bench
        say "measuring"
        exec bench/run build/bench "$@" ;;
    fuzz)
        seconds=60
        [ "${1:-}" != --seconds ] || { seconds=${2:?oz: --seconds wants a number}; shift 2; }
        need "${build_packages[@]}" "${fuzz_packages[@]}"
        configure fuzz "${only_command[@]}"
        build fuzz pps_text_fuzz cast_fuzz
        say "fuzzing for $seconds seconds"
        for target in cast pps_text; do
            mkdir -p "build/fuzz/found/$target"
            "build/fuzz/bin/${target}_fuzz" "build/fuzz/found/$target" "fuzz/corpus/$target" \
                -max_total_time="$((seconds / 2))" -max_len=8192 -print_final_stats=1 -artifact_prefix=build/fuzz/ "$@"
        done ;;
    pages)
        need "${build_packages[@]}"
        configure_command "$preset"
        build "$preset" ozpages
        exec "build/$preset/bin/ozpages" "$@" . ;;
    pictures)
        need "${product_packages[@]}" "${test_packages[@]}" "${picture_packages[@]}"
        configure dev
        build dev ozdevice_panel ozdevice_command ozcast test_sink
        panel/pictures build/dev
        exec docs/pictures build/dev ;;
    coverage)
        need "${product_packages[@]}" "${coverage_packages[@]}"
        configure coverage -DOZ_BUILD_TESTS=ON
        build coverage
        scripts/test build/coverage
        exec gcovr --root . --filter '(arguments|cast|client|support|device|models|mock|sensors|services|testing|tools)/' build/coverage "$@" ;;
    install)
        need "${product_packages[@]}"
        configure release
        build release
        exec cmake --install build/release "$@" ;;
    setup)
        need "${product_packages[@]}" "${test_packages[@]}" "${radio_packages[@]}" "${bench_packages[@]}" \
            "${fuzz_packages[@]}" \
            "${lint_packages[@]}" "${docs_packages[@]}" "${abi_packages[@]}" "${package_packages[@]}" \
            "${clean_system_packages[@]}" "${picture_packages[@]}" "${coverage_packages[@]}" ;;
    clean)
        rm -rf build ;;
    help)
        usage ;;
    *)
        exec "scripts/$verb" "$@" ;;
esac
