# Sourced by the checks of the recipes in lab/. After enter_lab and make_lab there are two rigs on this machine, each with a network, a
# name and an /mnt/hd of its own, on one wire with the check, which is in namespaces too. What they start ends with it.
. tests/support/check.sh

# Starts the check again in its namespaces.
enter_lab() {
    [ -z "${IN_LAB-}" ] || return 0
    [ "$(id -u)" -eq 0 ] || leave_out "expected root, found another user: daemons change the user"
    unshare --net --mount --pid --fork true 2>/dev/null || leave_out "expected a system that allows namespaces"
    local status=0
    IN_LAB=yes unshare --net --mount --pid --fork --kill-child --mount-proc "$script" "$@" || status=$?
    exit "$status"
}

declare -A rigs
# add_rig NAME ADDRESS
add_rig() {
    unshare --net --mount --uts sh -c 'hostname "$1" && ip link set lo up && mount -t tmpfs tmpfs /mnt && mkdir /mnt/hd &&
        touch "$2" && exec sleep 1800' sh "$1" "$folder/$1" &
    rigs[$1]=$!
    until [ -e "$folder/$1" ]; do sleep 0.1; done
    ip link add "$1" type veth peer name eth0 netns "${rigs[$1]}"
    ip link set "$1" master lab up
    on "$1" sh -c "ip addr add $2/24 dev eth0 && ip link set eth0 up"
}

# on RIG COMMAND...
on() {
    nsenter --target "${rigs[$1]}" --net --mount --uts "${@:2}"
}

make_lab() {
    ip link set lo up
    ip link add lab type bridge
    ip addr add 10.77.0.1/24 dev lab
    ip link set lab up
    mount -t tmpfs tmpfs /run  # daemons want folders there
    mkdir /run/sshd
    add_rig rig1 10.77.0.11
    add_rig rig2 10.77.0.12
}

# The merged campaign has exactly these cases, all passed. Usage: expect_passed FOLDER CASE...
expect_passed() {
    expect_equal "cases of $1" "$(python3 -c '
import json, sys
campaign = json.load(open(sys.argv[1] + "/campaign.json"))
print(*(case["id"] + ":" + case["outcome"] for case in campaign["cases"]))' "$1")" "$(printf '%s:PASS ' "${@:2}" | sed 's/ $//')"
    [ -s "$1/junit.xml" ] || fail "no $1/junit.xml"
}
export PATH=$BINARY/bin:$PATH
