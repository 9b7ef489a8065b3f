# Scenarios among simulated radios: each is a function whose name begins with scenario_. To be sourced in the machine.
# shellcheck shell=bash

state=/run/radios

# await SECONDS COMMAND [ARGUMENT...]: waits until the command succeeds, and fails if it does not in time.
await() {
    local limit=$((${EPOCHREALTIME/./} + $1 * 1000000))
    shift
    until "$@" >/dev/null 2>&1; do
        ((${EPOCHREALTIME/./} < limit)) || return 1
        sleep 0.1
    done
}

# expect WHAT COMMAND [ARGUMENT...]: a check. What the command printed is shown if it fails.
expect() {
    local what=$1 output
    shift
    output=$("$@" 2>&1) || { echo "expected: $what${output:+, but: $output}" >&2; return 1; }
}

# eventually SECONDS WHAT COMMAND [ARGUMENT...]: the same of what takes its time.
eventually() {
    local seconds=$1 what=$2
    shift 2
    await "$seconds" "$@" || { echo "expected within $seconds s: $what" >&2; return 1; }
}

fails() { ! "$@"; }

# grep_after SIZE PATTERN FILE: whether a line matches that the file got after it had this size. Reads to the end, since
# tail would fail of a broken pipe.
grep_after() { tail -c "+$(($1 + 1))" "$3" | grep -E -- "$2" >/dev/null; }

# skip REASON: ends a scenario that does not apply here.
skip() { echo "$1" >&5; exit 77; }

# run_scenarios [NAME...]: runs the scenarios of these names, or all that are defined, and prints the results as the Test
# Anything Protocol does. `set_up` and `tear_down` stand before and after each; `explain` prints what helps to understand
# a failure. Exits with 1 if one failed, and with 77 if all were skipped.
run_scenarios() {
    local name scenarios=() number=0 failed=0 passed=0 status begun took reason=''
    if [ $# -gt 0 ]; then
        for name in "$@"; do
            declare -F "scenario_$name" >/dev/null || { echo "no scenario $name" >&2; exit 2; }
            scenarios+=("scenario_$name")
        done
    else
        # In the order in which they are written.
        shopt -s extdebug
        mapfile -t scenarios < <(declare -F | sed -n 's/^declare -f \(scenario_.*\)/\1/p' |
            while read -r name; do declare -F "$name"; done | sort -n -k 2 | cut -d' ' -f1)
        shopt -u extdebug
    fi
    echo "1..${#scenarios[@]}"
    for name in "${scenarios[@]}"; do
        number=$((number + 1)) status=0 begun=${EPOCHREALTIME/./}
        : >"$state/reason"
        # In the background, as the shell does not heed -e in a condition.
        (
            set -eEuo pipefail
            trap 'echo "at ${BASH_SOURCE[0]##*/}:$LINENO in ${FUNCNAME[0]:-the scenario}: $BASH_COMMAND" >&2' ERR
            set_up "${name#scenario_}"
            "$name"
        ) >"$state/output" 2>&1 5>>"$state/reason" &
        wait $! || status=$?
        took=$(((${EPOCHREALTIME/./} - begun) / 100000))
        took=$((took / 10)).$((took % 10))
        # Only skip() gives a reason.
        [[ $status -ne 77 || -s $state/reason ]] || status=1
        case $status in
            0) passed=$((passed + 1)); echo "ok $number - ${name#scenario_} ($took s)" ;;
            77)
                reason=$(cat "$state/reason")
                echo "ok $number - ${name#scenario_} # SKIP $reason" ;;
            *)
                failed=$((failed + 1))
                echo "not ok $number - ${name#scenario_} ($took s)"
                { cat "$state/output"; explain; } 2>&1 | sed 's/^/# /' ;;
        esac
        tear_down >/dev/null 2>&1 || true
    done
    echo "# $passed passed, $failed failed, $((${#scenarios[@]} - passed - failed)) skipped"
    [ $failed -eq 0 ] || exit 1
    if [ $passed -eq 0 ]; then
        echo "skipped: $reason"
        exit 77
    fi
}

# in_machine SECONDS [OPTION...] -- SCRIPT [ARGUMENT...]: runs the script in the machine, with these options of it, unless
# this is the machine.
in_machine() {
    [ ! -d /run/machine ] || return 0
    exec "$(dirname "${BASH_SOURCE[0]}")/machine" -t "$@"
}
