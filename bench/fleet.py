#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""usage: [build/dev/bin/with_mariadb] bench/fleet.py BUILD_DIRECTORY [MACHINES]

How long commands take for a thousand exports of the sample controller, of which one in 25 has other firmware, and how
much memory the largest of their processes; collected into SQLite, and under with_mariadb on that server, once, again
unchanged, and with other firmware. Fails beyond 10 seconds or 200 MB for a thousand."""
import os
import pathlib
import resource
import shutil
import sqlite3
import subprocess
import sys
import tempfile
import time

SAMPLES = pathlib.Path(__file__).resolve().parent.parent / "samples"
ZELDB = pathlib.Path(sys.argv[1]).resolve() / "bin" / "zeldb"
COUNT = int(sys.argv[2]) if len(sys.argv) > 2 else 1000


def make_fleet(folder):
    os.environ.update(ZEL_DB_URL=f"sqlite://{folder}/inventory", ZEL_PLATFORM_DIR=str(SAMPLES), VREL_LOG="/dev/null")
    tables = [SAMPLES / f"{name}.sql" for name in ("inventory", "adapters", "processors", "drives", "firmware")]
    for words in (["init"], ["load", *tables], ["load", "--database", "propertiesdb", SAMPLES / "properties.sql"],
                  ["export", folder / "one.zeldb"]):
        subprocess.run([ZELDB, *words], check=True)
    shutil.copy(folder / "one.zeldb", folder / "other.zeldb")
    with sqlite3.connect(folder / "other.zeldb") as other:
        other.execute("UPDATE AimDisks SET FwVersion='older' WHERE Location='Bay 1'")
    (folder / "fleet").mkdir()
    for number in range(COUNT):
        source = "other" if number % 25 == 0 else "one"
        shutil.copy(folder / f"{source}.zeldb", folder / "fleet" / f"machine-{number}.zeldb")


def measure(words, label=None):
    """Whether it is within the limits. The memory is that of this process's largest child so far."""
    start, before = time.monotonic(), resource.getrusage(resource.RUSAGE_CHILDREN)
    done = subprocess.run([ZELDB, *words], stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
    seconds = time.monotonic() - start
    used = resource.getrusage(resource.RUSAGE_CHILDREN)
    processor = used.ru_utime + used.ru_stime - before.ru_utime - before.ru_stime
    megabytes = used.ru_maxrss / 1024
    label = label or " ".join(word for word in words if isinstance(word, str))
    print(f"{label:28} {seconds:6.1f} s, {processor:5.1f} s of processors, {megabytes:4.0f} MB at most", flush=True)
    return not done.stderr and seconds <= max(10, COUNT / 100) and megabytes <= 200


def collect(folder, url):
    """The same files three times; before the third, one in 25 has become another."""
    fleet = folder / "fleet"
    words = ["collect", "--to", url, fleet]
    engine = url.partition(":")[0]
    is_good = measure(words, f"collect, {engine}")
    is_good = measure(words, "collect, unchanged") and is_good
    for number in range(0, COUNT, 25):
        shutil.copy(folder / "one.zeldb", fleet / f"machine-{number}.zeldb")
    is_good = measure(words, "collect, one in 25 changed") and is_good
    for number in range(0, COUNT, 25):
        shutil.copy(folder / "other.zeldb", fleet / f"machine-{number}.zeldb")
    return is_good


def main():
    folder = pathlib.Path(tempfile.mkdtemp())
    try:
        make_fleet(folder)
        fleet = folder / "fleet"
        print(f"{COUNT} machines:")
        works = [["memory", "--from", fleet], ["slots", "--from", fleet], ["disks", "--from", fleet],
                 ["check", "--from", fleet], ["diff", folder / "one.zeldb", "--from", fleet], ["diff", "--fleet", fleet], ["functions", "--json", "--from", fleet]]
        urls = [f"sqlite://{folder}/fleet.sqlite", os.environ.get("ZELDB_TEST_MARIADB")]
        results = [collect(folder, url) for url in urls if url] + [measure(words) for words in works]
        return 0 if all(results) else 1
    finally:
        shutil.rmtree(folder)


sys.exit(main())
