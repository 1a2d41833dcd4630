#!/usr/bin/env python3
"""Start to listening, and resident size: the harness against the listeners that a user would write instead.

Usage: start.py VELLORAN ROUNDS    (inside a network namespace of its own, with the loopback device up)
Prints one line of JSON: for each program the median seconds from its start until it listens,
and its resident kilobytes then.
"""
import json
import os
import signal
import socket
import statistics
import subprocess
import sys
import time

HERE = os.path.dirname(os.path.abspath(__file__))
DEADLINE = 10


def is_listening():
    for table in ('/proc/net/tcp', '/proc/net/tcp6'):
        with open(table, encoding='ascii') as lines:
            if any(':1389 ' in line and ' 0A ' in line for line in lines):
                return True
    return False


def resident_kilobytes(process):
    with open(f'/proc/{process}/status', encoding='ascii') as lines:
        return next(int(line.split()[1]) for line in lines if line.startswith('VmRSS:'))


def measure(command):
    start = time.perf_counter()
    process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)
    while not is_listening():
        if time.perf_counter() - start > DEADLINE or process.poll() is not None:
            sys.exit(f'start.py: expected {command[0]} to listen on port 5001 within {DEADLINE} s, found that it does not')
    seconds = time.perf_counter() - start
    size = resident_kilobytes(process.pid)
    process.send_signal(signal.SIGKILL)
    process.wait()
    while is_listening():
        pass
    return seconds, size


def main():
    velloran, rounds = sys.argv[1], int(sys.argv[2])
    programs = {'velloran': [velloran, '-p', '2'],
                'socat': ['socat', 'TCP4-LISTEN:5001', 'STDIO'],
                'python': [sys.executable, os.path.join(HERE, '..', 'peer', 'backend.py')]}
    found = {name: [] for name in programs}
    for _ in range(rounds):
        for name, command in programs.items():
            found[name].append(measure(command))
    print(json.dumps({name: {'seconds': statistics.median(seconds for seconds, _ in each),
                             'kilobytes': statistics.median(size for _, size in each)}
                      for name, each in found.items()}))


main()
