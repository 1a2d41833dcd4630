#!/usr/bin/env python3
"""A whole export: its wall time against the pauses that the harness must make.

Usage: export.py VELLORAN VELLORAN-RIG DIALECT    (inside namespaces of its own: loopback up, /mnt a tmpfs with hd)
Prints one line of JSON. The harness's pauses follow from its log: 250 ms after each message that it reads, as the
simulated DVR's messages arrive in one piece, and one second after each file request that a line says is not the last.
"""
import json
import re
import signal
import subprocess
import sys
from datetime import datetime

READ_PAUSE = 0.25
FILE_PAUSE = 1.0


def seconds(line):
    return datetime.strptime(line.split()[0], '%Y-%m-%dT%H:%M:%S.%fZ').timestamp()


def main():
    velloran, rig, dialect = sys.argv[1:4]
    harness = subprocess.Popen([velloran, '-p', dialect], stdout=subprocess.PIPE, text=True)
    dvr = subprocess.run([rig, 'dvr', '--protocol', dialect, '--transfer-time', '0'], capture_output=True, check=False)
    harness.send_signal(signal.SIGINT)
    lines = harness.communicate()[0].splitlines()
    if dvr.returncode != 0 or harness.returncode != 44:
        sys.exit(f'export.py: expected a whole export, found status {dvr.returncode} of the DVR: {dvr.stderr.decode()}')

    connected = next(line for line in lines if 'Connected to: ' in line)
    done = next(line for line in lines if 'Sending DONE' in line)
    until_done = lines[lines.index(connected):lines.index(done)]
    messages = sum('read success:' in line for line in until_done)
    left = [int(found[1]) for line in until_done if (found := re.search(r'filesToReceive size = (\d+)', line))]
    pauses = messages * READ_PAUSE + sum(count > 1 for count in left) * FILE_PAUSE
    wall = seconds(done) - seconds(connected)
    requests = sum('hdr[0]= ' in line for line in until_done)
    print(json.dumps({'wall': wall, 'pauses': pauses, 'messages': messages, 'requests': requests}))


main()
