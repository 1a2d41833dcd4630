# Sourced by tests that change the system: they do so in a copy that ends with them, an overlay in a mount namespace.
copy=/mnt/root # its changes are in /mnt/changes

# Starts this test again as root, unless it is.
become_root() {
    [ "$(id -u)" -ne 0 ] || return 0
    command -v sudo >/dev/null || leave_out "this takes root or sudo"
    sudo --preserve-env=CI,BINARY "$script"
    exit
}

copy_system() {
    local place
    mount -t tmpfs tmpfs /mnt
    mkdir "$copy" /mnt/changes /mnt/work
    mount -t overlay overlay -o lowerdir=/,upperdir=/mnt/changes,workdir=/mnt/work "$copy" ||
        leave_out "this system forbids the overlay to change (in a container: start it with --privileged)"
    mount -t proc proc "$copy/proc"
    for place in run tmp mnt; do
        mount -t tmpfs tmpfs "$copy/$place"
    done
    ip link set lo up
}
