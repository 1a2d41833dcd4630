"""What scripts/judge-defects and scripts/judge-switches share: exports of the simulated DVR to the harness, many at a
time, each in a world of its own, and the verdicts of velloran-rig judge on their logs."""

import json
import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import time
from concurrent.futures import ThreadPoolExecutor

ROOT = pathlib.Path(__file__).resolve().parent.parent
TABLES = ROOT / "doc" / "tables"
WORLD = [str(ROOT / "scripts" / "world")]
AT_ONCE = 40  # exports; they mostly wait
DEADLINE = 30  # seconds for one export
QUIET = 1.5  # seconds without a line: longer than any pause that the harness makes on its own
ENDLESS = 1 << 20  # bytes of a log: the harness repeats a line forever
PATIENCE = 1  # seconds, for judge: less than QUIET


class Problem(Exception):
    """What went wrong, in one line: expected, found, where."""


def programs(folder):
    """The two programs of a build folder."""
    found = [pathlib.Path(folder).resolve() / "bin" / name for name in ("velloran", "velloran-rig")]
    for program in found:
        if not os.access(program, os.X_OK):
            raise Problem(f"expected a program, found none at {program}; build it or name another build folder")
    return found


def make_recordings(folder):
    """Two events: one of three files, so that there is a pause (-s) and a last file, and one of two."""
    for event, files in {"Event1": ["Front.ts", "Rear.ts"], "Event2": ["Front.ts"]}.items():
        place = pathlib.Path(folder) / event
        place.mkdir(parents=True)
        (place / f"{event}.xml").write_text(f'<recording of="{event}"/>\n')
        for file in files:
            (place / file).write_text(f"{event} {file}\n")


def wait_until(fact, deadline):
    """Whether the fact came to hold before the deadline, in seconds of the monotonic clock."""
    while not fact():
        if time.monotonic() >= deadline:
            return False
        time.sleep(0.02)
    return True


def nothing_more_comes(harness, log, deadline):
    """Waits until the harness has ended, or has logged nothing for a while."""
    size, since = -1, time.monotonic()

    def is_quiet():
        nonlocal size, since
        if log.stat().st_size != size:
            size, since = log.stat().st_size, time.monotonic()
        return harness.poll() is not None or size > ENDLESS or time.monotonic() - since >= QUIET

    if not wait_until(is_quiet, deadline):
        raise Problem(f"expected the harness to fall silent within {DEADLINE} s, found it still writing {log}")


def export_inside(harness_command, dvr_command, log):
    """One export in the world that this process is in. The log gets standard error as well."""
    deadline = time.monotonic() + DEADLINE
    log = pathlib.Path(log)
    with open(log, "ab") as out, open(log.with_suffix(".dvr"), "wb") as transcript:
        harness = subprocess.Popen(harness_command, stdout=out, stderr=out)
        try:
            dvr = subprocess.run(dvr_command, stdout=transcript, stderr=transcript, timeout=DEADLINE, check=False)
        except subprocess.TimeoutExpired as late:
            raise Problem(f"expected the DVR to end within {DEADLINE} s, found it running: {log}") from late
        if dvr.returncode == 2:
            raise Problem(log.with_suffix(".dvr").read_text().strip())
        nothing_more_comes(harness, log, deadline)
        harness.send_signal(signal.SIGINT)
        status = harness.wait(timeout=DEADLINE)
    log.with_suffix(".status").write_text(f"{status}\n")


def export(folder, name, dialect, switches, dvr_options, tools):
    """Plays one export and leaves NAME.log, NAME.dvr (the DVR's transcript) and NAME.status in the folder."""
    log = pathlib.Path(folder) / f"{name}.log"
    harness = [str(tools[0]), "-p", dialect, *switches]
    dvr = [str(tools[1]), "dvr", "--protocol", dialect, "--recordings", str(pathlib.Path(folder) / "recordings"),
           "--timeout", "3", "--frame-timeout", "1", "--seed", "1", *dvr_options]
    inside = [sys.executable, __file__, json.dumps([harness, dvr, str(log)])]
    ended = subprocess.run(WORLD + inside, stderr=subprocess.PIPE, text=True, check=False)
    if ended.returncode != 0:
        raise Problem(ended.stderr.strip() or f"expected an export ({name}), found status {ended.returncode}")
    sys.stderr.write(ended.stderr)  # of scripts/world, where the export ran in place
    return log


def verdict(log, tools):
    """The one run of the log as velloran-rig judge gives it in JSON."""
    report = log.with_suffix(".json")
    command = [str(tools[1]), "judge", "--patience", str(PATIENCE), "--json", str(report), str(log)]
    ended = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, check=False)
    if ended.returncode not in (0, 1, 2, 3):
        raise Problem(f"expected a verdict on {log}, found status {ended.returncode}: {ended.stderr.strip()}")
    return json.loads(report.read_text())


def with_verdict(result, name):
    """Check and finding of all checks of all runs that have this verdict."""
    return [(check["id"], check["found"]) for run in result["runs"] for check in run["checks"]
            if check["verdict"] == name]


def at_once(jobs):
    """Runs the jobs, many at a time. @return their results in order"""
    with ThreadPoolExecutor(AT_ONCE) as pool:
        return list(pool.map(lambda job: job(), jobs))


def keep_page(page, head, text, check):
    """Writes the text to the page, after its head. @return whether it was there already; with `check` nothing is
    written."""
    made = f"{head}\n\n{text}"
    is_same = page.exists() and page.read_text() == made
    if not is_same and not check:
        page.write_text(made)
    return is_same


def work_folder(keep):
    """A folder for logs, with recordings in it; removed at the end unless the user named it."""
    folder = tempfile.TemporaryDirectory(prefix="judging-") if keep is None else None
    path = pathlib.Path(folder.name if folder else keep).resolve()
    path.mkdir(parents=True, exist_ok=True)
    make_recordings(path / "recordings")
    return folder, path


if __name__ == "__main__":
    try:
        export_inside(*json.loads(sys.argv[1]))
    except Problem as problem:
        sys.exit(str(problem))
