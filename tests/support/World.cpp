#include "tests/support/World.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace {

void Check(int result, const std::string& what) {
    if (result == -1) {
        throw std::runtime_error(
            "no world for this test: " + what + ": " + std::strerror(errno) +
            "; allow unprivileged user namespaces (sysctl kernel.unprivileged_userns_clone=1, "
            "kernel.apparmor_restrict_unprivileged_userns=0, user.max_user_namespaces=1000) "
            "or run in a container that permits unshare and mount");
    }
}

void WriteProcess(const std::string& name, const std::string& text) {
    const std::string path = "/proc/self/" + name;
    const int fd = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    Check(fd, path);
    const ssize_t written = write(fd, text.data(), text.size());
    const int error = errno;
    close(fd);
    errno = error;
    Check(written == -1 ? -1 : 0, path);
}

/// Becomes root of a user namespace. Once per process: namespaces nest only 32 deep, and one is enough. Root
/// does without if there is none to be had. An emulated process is already in one: its emulator has threads,
/// so it could not make one itself.
void EnterUserNamespace() {
    static bool entered = false;
    if (entered) {
        return;
    }
    const std::string user = std::to_string(geteuid());
    const std::string group = std::to_string(getegid());
    const int result = unshare(CLONE_NEWUSER);
    if (result == -1 and geteuid() == 0) {
        entered = true;
        return;
    }
    Check(result, "user namespace");
    WriteProcess("setgroups", "deny");
    WriteProcess("uid_map", "0 " + user + " 1");
    WriteProcess("gid_map", "0 " + group + " 1");
    entered = true;
}

void Move(const std::string& device, const std::string& folder) {
    const std::string target = folder + "/" + device;
    const int fd = open(target.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0644);
    Check(fd, target);
    close(fd);
    Check(mount(("/dev/" + device).c_str(), target.c_str(), nullptr, MS_BIND, nullptr), target);
}

/// Builds the new /dev on the new disk, while the old one still has the devices, and then moves it into
/// place. So no test's log reaches the machine's syslog.
void MountDisks() {
    MountEmpty("/mnt");
    Check(mkdir("/mnt/dev", 0755), "/mnt/dev");
    MountEmpty("/mnt/dev");
    for (const char* device : {"null", "zero", "full", "random", "urandom"}) {
        Move(device, "/mnt/dev");
    }
    Check(mount("/mnt/dev", "/dev", nullptr, MS_MOVE, nullptr), "/dev");
    Check(rmdir("/mnt/dev"), "/mnt/dev");
    Check(mkdir("/mnt/hd", 0755), "/mnt/hd");
}

/// One request to the network device `name`, with an address for those that take one.
void ConfigureDevice(unsigned long request, const std::string& name, ifreq device = {}) {
    name.copy(device.ifr_name, sizeof device.ifr_name - 1);
    const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    Check(fd, "socket");
    const int result = ioctl(fd, request, &device);
    const int error = errno;
    close(fd);
    errno = error;
    Check(result, "network device " + name);
}

}  // namespace

void MountEmpty(const char* path) {
    Check(mount("none", path, "tmpfs", 0, "mode=755"), path);
}

World::World() {
    EnterUserNamespace();
    Check(unshare(CLONE_NEWNET | CLONE_NEWNS), "network and mount namespace");
    Check(mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr), "private mounts");
    MountDisks();
    ifreq up = {};
    up.ifr_flags = IFF_UP | IFF_LOOPBACK | IFF_RUNNING;
    ConfigureDevice(SIOCSIFFLAGS, "lo", up);
}

World::~World() {
    umount2("/dev", MNT_DETACH);
    umount2("/mnt", MNT_DETACH);
}

void World::AddAddress(const std::string& address) {
    ifreq device = {};
    sockaddr_in ip = {};
    ip.sin_family = AF_INET;
    ASSERT_EQ(1, inet_pton(AF_INET, address.c_str(), &ip.sin_addr)) << address;
    std::memcpy(&device.ifr_addr, &ip, sizeof ip);
    ConfigureDevice(SIOCSIFADDR, "lo:" + std::to_string(++addresses_), device);
}

bool FileExists(const std::string& path) {
    return access(path.c_str(), F_OK) == 0;
}
