# The device under test: radio 0, with a wpa_supplicant on the system bus and systemd-networkd for addresses, as on a
# device of the product. To be sourced in the machine, after scenarios.sh.
# shellcheck shell=bash disable=SC2154

supplicant=fi.w1.wpa_supplicant1
root=/run/radios/device
export OZ_DEVICE_ROOT=$root
status_file=$root/pps/services/wifi_p2p/manager/status

id ozdevice >/dev/null 2>&1 || useradd --system --no-create-home ozdevice

# On the bus there is what a scenario starts, and nothing that a call to its name starts.
rm -f "/usr/share/dbus-1/system-services/$supplicant.service"
busctl --quiet call org.freedesktop.DBus /org/freedesktop/DBus org.freedesktop.DBus ReloadConfig

has_name() { busctl --quiet call org.freedesktop.DBus /org/freedesktop/DBus org.freedesktop.DBus GetNameOwner s "$1"; }
process_alive() { [ -s "$state/$1.pid" ] && kill -0 "$(cat "$state/$1.pid")" 2>/dev/null; }
end_process() {
    ! process_alive "$1" || kill "-${2:-TERM}" "$(cat "$state/$1.pid")"
    await 10 fails process_alive "$1" || kill -KILL "$(cat "$state/$1.pid")"
    rm -f "$state/$1.pid"
}

# supplicant_start [OPTION...]: as Debian's unit does, without an interface. supplicant_end [SIGNAL].
supplicant_start() {
    wpa_supplicant -u -B -t -O 'DIR=/run/wpa_supplicant GROUP=netdev' -P "$state/supplicant.pid" \
        -f "$state/supplicant.log" "$@"
    eventually 20 "wpa_supplicant is on the bus" has_name $supplicant
}
supplicant_end() { end_process supplicant "$@"; }

networkd_start() {
    mkdir -p /run/systemd/network
    cp "$here"/../../services/data/network/*.network /run/systemd/network/
    install -d -o systemd-network -g systemd-network /run/systemd/netif{,/links,/leases,/lldp}
    /lib/systemd/systemd-networkd >"$state/networkd.log" 2>&1 &
    echo $! >"$state/networkd.pid"
    eventually 20 "networkd is on the bus" has_name org.freedesktop.network1
}

# networkmanager_start: beside the others, with all radios as its own, as on most desktops.
networkmanager_start() {
    # With the rule that the package installs.
    cp "$here/../../services/data/units/polkit.rules" /usr/share/polkit-1/rules.d/60-ozdevice.rules
    /usr/lib/polkit-1/polkitd >"$state/polkitd.log" 2>&1 &
    echo $! >"$state/polkitd.pid"
    eventually 20 "polkit is on the bus" has_name org.freedesktop.PolicyKit1
    printf '%s\n' '[main]' 'plugins=keyfile' 'no-auto-default=*' >"$state/networkmanager.conf"
    NetworkManager --no-daemon --config="$state/networkmanager.conf" >"$state/networkmanager.log" 2>&1 &
    echo $! >"$state/networkmanager.pid"
    eventually 60 "NetworkManager has the radio" networkmanager_has_radio
}
networkmanager_has_radio() { nmcli -t -f DEVICE,STATE device | grep -x wlan0:disconnected >/dev/null; }

# record_bus FILE: records what passes over the bus from now on, one message of JSON per line.
record_bus() {
    busctl --json=short monitor >"$1" 2>"$state/monitor.log" &
    echo $! >"$state/monitor.pid"
    eventually 10 "the monitor listens" grep -q 'Monitoring bus' "$state/monitor.log"
}

# phone_start SCENARIO: all of it and the daemon. The daemon has the rights of its unit: an ordinary user, in the group
# that may speak to wpa_supplicant. It may also read a build tree that is closed to others.
phone_start() {
    local facility sources=()
    rfkill unblock wifi
    supplicant_start
    networkd_start
    [ -z "${record:-}" ] || record_bus "$record/$1.json"
    rm -rf "$root"
    install -d -o ozdevice "$root"
    while read -r facility; do
        [ "$facility" = wifi-direct ] || sources+=(--source "$facility=none")
    done < <("$build/bin/ozdeviced" --list-sources | sed -n 's/^\([a-z-]*\):$/\1/p')
    daemon_sources=(--source wifi-direct=wpa-supplicant "${sources[@]}")
    daemon_launch
    eventually 30 "Wi-Fi Direct is there and enabled" says 'p2p_mgr_enabled:n:0'
}

# daemon_groups=GROUP daemon_launch. An emulated machine needs longer than others to start wpa_supplicant again.
daemon_launch() {
    OZ_GRACE_TIME=20 setpriv --reuid=ozdevice --regid=nogroup --groups="${daemon_groups:-netdev}" \
        --inh-caps=-all,+dac_read_search --ambient-caps=-all,+dac_read_search \
        "$build/bin/ozdeviced" "${daemon_sources[@]}" >>"$state/daemon.log" 2>&1 &
    echo $! >"$state/daemon.pid"
}

phone_stop() {
    local process
    for process in sink watch daemon networkmanager polkitd monitor networkd supplicant xvfb; do end_process "$process"; done
    rm -f "$state/daemon.log"
    rfkill unblock wifi
    [ -e /sys/class/net/wlan0 ] || { "$here/simulated-radio" add && await 5 test -e /sys/class/net/wlan0; }
}

# phone_address: the device address of its radio.
phone_address() {
    iw dev | awk '/^\t[^\t]/ { address = "" } /\taddr / { address = $2 } /type P2P-device/ { print address }'
}

# says PATTERN...: whether the published status matches all of these. Maps have their keys in the order of the alphabet.
says() {
    local pattern
    for pattern in "$@"; do grep -Eq -- "$pattern" "$status_file" || return 1; done
}
is_connected() { says '^connection:.*"status":"connected"'; }
is_connecting() { says '^connection:.*"status":"connecting"'; }
is_disconnected() { says '^connection:.*"status":"disconnected"'; }

# call METHOD [ARGUMENT...]: a request. What it printed is in $state/call.
call() { "$build/bin/ozdevice" call wifi-direct "$@" >"$state/call" 2>&1; }
# answers RESULT METHOD [ARGUMENT...]: a request with this result.
answers() {
    local result=$1
    shift
    call "$@" || true
    grep -q "^$result (" "$state/call" || { cat "$state/call"; return 1; }
}
