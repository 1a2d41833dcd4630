"""The simulated recorders that the faults are played against, each in a network of its own."""

import os
import pathlib
import subprocess

HERE = pathlib.Path(__file__).resolve().parent
RECORDER = "dvr --protocol {protocol} --seed {seed} --recorder --events single-file --transfer-time 50"
ALONE = ["unshare", "-Urn", "sh", "-c", 'ip link set lo up && exec "$@"', "sh"]
AT_ONCE = 8 * os.cpu_count()  # they mostly wait


def commit():
    """A number that the commit chooses; 1 where there is none."""
    asked = subprocess.run(["git", "rev-parse", "--short=7", "HEAD"], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    return int(asked.stdout, 16) if asked.returncode == 0 else 1


def weaknesses():
    """Each weakness with the case that finds it."""
    lines = (HERE / "weaknesses.txt").read_text().splitlines()
    return [[cell.strip() for cell in line.split("|")] for line in lines if line and line[0] != "#"]


def command(program, options, out, recorder=""):
    """velloran-rig run with these options, with a good recorder, or one with these options of its own."""
    dvr = f"{program} {RECORDER} {recorder}"
    return ALONE + [program, "run", *options, "--bare", "--connect-timeout", "20", "--dvr", dvr, "--out", out]
