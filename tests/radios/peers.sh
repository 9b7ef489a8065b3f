# Wi-Fi Direct devices beside the one under test, each with a radio, a network namespace and a wpa_supplicant of its own.
# To be sourced in the machine, after scenarios.sh. NUMBER is that of the radio: 1 or 2.
#
# A peer behaves as a device with a user: it answers requests as it was told (peer_answers), and gives or takes an IP
# address in its groups.
# shellcheck shell=bash disable=SC2154

# peer_address NUMBER: its device address.
peer_address() { cat "$state/peer$1/address"; }

# peer_start NUMBER [NAME [TYPE [WFD]]]: switches it on. WFD is the content of its wireless display subelement 0.
peer_start() {
    local number=$1 name=${2:-Peer $1} type=${3:-10-0050F204-5} display=${4:-} folder=$state/peer$1 phy
    mkdir -p "$folder"
    # Once: a radio stays where it is, and another namespace keeps its addresses from meeting those of others.
    if [ ! -e "/run/netns/peer$number" ]; then
        phy=$(basename "$(readlink -f "/sys/class/net/wlan$number/phy80211")")
        ip netns add "peer$number"
        iw phy "$phy" set netns name "/run/netns/peer$number"
        ip -n "peer$number" link set lo up
    fi
    rm -f "$folder/answer" "$folder/group"
    cat >"$folder/configuration" <<TEXT
ctrl_interface=$folder/control
device_name=$name
device_type=$type
config_methods=display push_button keypad
p2p_disabled=0
TEXT
    : >"$folder/log"
    echo 0 >"$folder/mark"
    ip netns exec "peer$number" wpa_supplicant -B -t -i "wlan$number" -D nl80211 -c "$folder/configuration" \
        -P "$folder/pid" -f "$folder/log"
    eventually 10 "peer $number is ready" peer_tell "$number" PING
    peer_tell "$number" STATUS | sed -n 's/^p2p_device_address=//p' >"$folder/address"
    if [ -n "$display" ]; then
        peer_tell "$number" SET wifi_display 1
        peer_tell "$number" WFD_SUBELEM_SET 0 "$display"
    fi
    peer_live "$number" &
    echo $! >"$folder/life"
}

# peer_tell NUMBER COMMAND [ARGUMENT...]: a command of wpa_supplicant's control interface.
peer_tell() { wpa_tell "$1" "wlan$1" "${@:2}"; }
wpa_tell() {
    local answer
    answer=$(wpa_cli -p "$state/peer$1/control" -i "$2" raw "${@:3}") || return 1
    [[ $answer != FAIL* && $answer != UNKNOWN* ]] || { echo "peer $1 refuses ${*:3}: $answer" >&2; return 1; }
    printf '%s\n' "$answer"
}

# peer_run NUMBER COMMAND [ARGUMENT...]: a command in its network.
peer_run() { ip netns exec "peer$1" "${@:2}"; }

# peer_heard NUMBER PATTERN: whether it logged such a line since the last peer_mark.
peer_heard() { grep_after "$(cat "$state/peer$1/mark")" "$2" "$state/peer$1/log"; }
peer_mark() { stat -c %s "$state/peer$1/log" >"$state/peer$1/mark"; }

# peer_listens NUMBER: others find it. peer_looks NUMBER: it looks for others, who find it, too.
peer_listens() { peer_tell "$1" P2P_STOP_FIND >/dev/null; peer_tell "$1" P2P_LISTEN 600 >/dev/null; }
peer_looks() { peer_tell "$1" P2P_FIND 60 type=social >/dev/null; }
# peer_hides NUMBER: neither.
peer_hides() { peer_tell "$1" P2P_STOP_FIND >/dev/null; }

# peer_answers NUMBER ANSWER [PIN]: how its user answers requests to connect from now on:
#   button       presses the button
#   shows PIN    agrees, and it shows this PIN
#   enters PIN   agrees, and enters the PIN that the other device shows
#   nothing      does not answer, as in the beginning
peer_answers() { echo "${@:2}" >"$state/peer$1/answer"; }

# peer_refuses NUMBER ADDRESS: it refuses what this device asks from now on. It has to have heard of it.
peer_refuses() { peer_tell "$1" P2P_REJECT "$2" >/dev/null; }

# peer_connects NUMBER ADDRESS button|shows PIN|enters PIN [ARGUMENT...]: asks another device. Arguments are those of
# P2P_CONNECT, such as go_intent=15 or join.
peer_connects() {
    local number=$1 address=$2 how=$3
    shift 3
    case $how in
        button) peer_tell "$number" P2P_CONNECT "$address" pbc "$@" ;;
        shows) peer_tell "$number" P2P_CONNECT "$address" "$1" display "${@:2}" ;;
        enters) peer_tell "$number" P2P_CONNECT "$address" "$1" keypad "${@:2}" ;;
    esac >/dev/null
}

# peer_owns NUMBER: makes a group of its own, which others can join.
peer_owns() {
    peer_tell "$1" P2P_GROUP_ADD freq=2437 >/dev/null
    eventually 10 "peer $1 has a group of its own" peer_is "$1" GO
}

# The group that it is in: peer_is NUMBER GO|client, peer_interface, peer_ssid, peer_ip.
peer_is() { [ -s "$state/peer$1/group" ] && [ "$(cut -d' ' -f2 "$state/peer$1/group")" = "$2" ]; }
peer_is_alone() { [ ! -s "$state/peer$1/group" ]; }
peer_interface() { cut -d' ' -f1 "$state/peer$1/group"; }
peer_ssid() { sed -n 's/.* ssid="\([^"]*\)".*/\1/p' "$state/peer$1/group"; }
peer_ip() {
    peer_run "$1" ip -4 -o address show dev "$(peer_interface "$1")" | sed -n 's/.* inet \([0-9.]*\).*/\1/p' | grep .
}

# peer_leaves NUMBER: leaves its group, or removes the one that it owns.
peer_leaves() {
    peer_tell "$1" P2P_GROUP_REMOVE "$(peer_interface "$1")" >/dev/null
    eventually 10 "peer $1 is out of its group" peer_is_alone "$1"
}

# peer_walks_away NUMBER: it is out of range without a word; peer_returns brings it back.
peer_walks_away() { peer_range "$1" 2; }
peer_returns() { peer_range "$1" 1; }
# Radios hear those that have a bit of this mask in common with them.
peer_range() {
    local phy
    phy=$(peer_run "$1" iw dev | sed -n 's/^phy#/phy/p')
    echo "$2" >"/sys/kernel/debug/ieee80211/$phy/hwsim/group"
}

# peer_dies NUMBER: its wpa_supplicant is killed.
peer_dies() {
    peer_end "$1" life
    kill -KILL "$(cat "$state/peer$1/pid")"
    rm -f "$state/peer$1/pid"
}

# Ends a process of which a file of the peer has the id, and what that has started.
peer_end() {
    local file=$state/peer$1/$2
    [ -s "$file" ] || return 0
    pkill -TERM -P "$(cat "$file")" 2>/dev/null || true
    kill -TERM "$(cat "$file")" 2>/dev/null || true
    rm -f "$file"
}

# peer_stop NUMBER: switches it off in order.
peer_stop() {
    local folder=$state/peer$1
    peer_end "$1" life
    peer_end "$1" lease
    if [ -s "$folder/pid" ]; then
        kill -TERM "$(cat "$folder/pid")"
        await 5 fails test -e "$folder/pid" || peer_dies "$1"
    fi
    peer_returns "$1"
    rm -rf "$folder/control"
}

# What its user and its system do, by what its log says.
peer_live() {
    local number=$1 folder=$state/peer$1 line event words
    tail -n +1 -F "$folder/log" 2>/dev/null | while IFS= read -r line; do
        [[ $line =~ (P2P-[A-Z-]+)\ (.*)$ ]] || continue
        event=${BASH_REMATCH[1]}
        read -ra words <<<"${BASH_REMATCH[2]}"
        case $event in
            P2P-GO-NEG-REQUEST) peer_reply "$number" "${words[0]}" ;;
            P2P-PROV-DISC-PBC-REQ | P2P-PROV-DISC-SHOW-PIN | P2P-PROV-DISC-ENTER-PIN) peer_admit "$number" ;;
            P2P-GROUP-STARTED)
                echo "${words[*]}" >"$folder/group"
                peer_lease "$number" "${words[0]}" "${words[1]}" ;;
            P2P-GROUP-REMOVED)
                peer_end "$number" lease
                : >"$folder/group" ;;
        esac
    done >>"$folder/life.log" 2>&1
}

# Answers a request to negotiate a group.
peer_reply() {
    local answer=nothing pin=''
    [ ! -s "$state/peer$1/answer" ] || read -r answer pin <"$state/peer$1/answer"
    case $answer in
        button) peer_connects "$1" "$2" button ;;
        shows | enters) peer_connects "$1" "$2" "$answer" "$pin" ;;
    esac
}

# Answers a request to join the group that it owns. Its own requests to others end with the same events.
peer_admit() {
    local answer=nothing pin='' group
    [ ! -s "$state/peer$1/answer" ] || read -r answer pin <"$state/peer$1/answer"
    peer_is "$1" GO || return 0
    group=$(peer_interface "$1")
    case $answer in
        button) wpa_tell "$1" "$group" WPS_PBC ;;
        shows | enters) wpa_tell "$1" "$group" WPS_PIN any "$pin" ;;
    esac
}

# peer_lease NUMBER INTERFACE ROLE: gives addresses in a group that it owns, or takes one.
peer_lease() {
    local folder=$state/peer$1
    peer_end "$1" lease
    if [ "$3" = GO ]; then
        peer_run "$1" ip address replace 192.168.49.1/24 dev "$2"
        printf '%s\n' 'start 192.168.49.10' 'end 192.168.49.20' "interface $2" "lease_file $folder/leases" \
            "pidfile $folder/udhcpd.pid" 'option subnet 255.255.255.0' 'option router 192.168.49.1' 'option lease 3600' \
            >"$folder/udhcpd.conf"
        : >"$folder/leases"
        ip netns exec "peer$1" busybox udhcpd -f "$folder/udhcpd.conf" &
    else
        ip netns exec "peer$1" busybox udhcpc -f -i "$2" -t 20 -T 1 -s "$state/take-lease" &
    fi
    echo $! >"$folder/lease"
}

mkdir -p "$state"
cat >"$state/take-lease" <<'SCRIPT'
#!/bin/sh
case $1 in
    bound | renew) ip address replace "$ip/$mask" dev "$interface" ;;
    deconfig) ip -4 address flush dev "$interface" ;;
esac
SCRIPT
chmod +x "$state/take-lease"
