#pragma once

#include <sys/types.h>

#include <string>

/// The memory of an emulated program, in kB, as the target's kernel would count it in VmRSS: the used part of
/// the program's own 4 GiB of addresses. They start at a multiple of 4 GiB; the emulator's own memory is
/// elsewhere.
/// @param program  its file
long TargetsMemory(pid_t process, const std::string& program);

/// What makes a program give no memory back, so that its use at any time is its peak so far.
constexpr const char* kNothingGivenBack = "glibc.malloc.mmap_max=0:glibc.malloc.trim_threshold=2147483647";
