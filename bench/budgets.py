#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""usage: bench/budgets.py [--show] BUILD_DIRECTORY [ARMHF_BUILD_DIRECTORY]

Holds what runs of a build count against bench/budgets.txt, and fails where it is more; with --show all counts are printed."""
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

sys.dont_write_bytecode = True
from counting import ROOT, Scene

TABLE = ROOT / "bench" / "budgets.txt"
FUNCTIONS = 10000


def output(*words):
    return subprocess.run(words, stdout=subprocess.PIPE, check=True).stdout.decode()


def versions():
    package = "dpkg-query", "-W", "-f=${Version}"
    return f"g++ {output('c++', '-dumpfullversion')}, libsqlite3 {output(*package, 'libsqlite3-0')}, libc {output(*package, 'libc6')}".replace("\n", "")


def stripped_size(library):
    with tempfile.NamedTemporaryFile() as file:
        output("arm-linux-gnueabihf-strip", "-o", file.name, library)
        return pathlib.Path(file.name).stat().st_size


def data_size(library):
    found = re.search(r"\s\.data\s+PROGBITS\s+\S+\s+\S+\s+(\S+)", output("readelf", "-SW", library))
    return int(found[1], 16) if found else 0


FILES = {"size": stripped_size, "data": data_size,
         "relocations": lambda library: len(re.findall(r"R_ARM_", output("readelf", "-rW", library)))}
RUNS = {"calls": lambda scene, words: len(scene.calls(words)), "own": Scene.own_calls, "instructions": Scene.instructions, "memory": Scene.memory,
        "allocations": lambda scene, words: scene.heap(words)[0],
        "system": lambda scene, words: scene.system_calls(words)[0],
        "written": lambda scene, words: scene.system_calls(words)[1]}


def make_parser(scene):
    """Tables and a BIOS of so many functions, all of which are stored."""
    scene.fill(FUNCTIONS)
    scene.environment["ZEL_PLATFORM_DIR"] = str(scene.folder)
    scene.run(["bench_work", "bios", str(FUNCTIONS)])
    scene.run(["ucm_parser"])


def make_thousand(scene):
    scene.fill(1000)
    scene.run(["bench_work", "store", "1000"])


# Addresses in memory differ from run to run, code may grow a little, and now and then the library looks
# whether a file has changed.
SLACK = {"instructions": (0.02, 0), "system": (0.02, 3), "memory": (0.1, 0), "size": (0.02, 0), "relocations": (0.02, 0),
         "allocations": (0.02, 3)}
SCENES = {"sample": Scene.fill_sample, "thousand": make_thousand, "parser": make_parser}


def budgets():
    for line in TABLE.read_text().splitlines():
        if line and not line.startswith("#"):
            kind, limit, scene, *words = line.split()
            yield kind, int(limit), scene, words


def counted(build, armhf):
    """Each budget with what was counted, None where it cannot be."""
    same = versions() in TABLE.read_text() and shutil.which("valgrind")
    if not same:
        print(f"    no instructions: they are those of other versions than {versions()}, or valgrind is missing")
    for scene_name in ("armhf", *SCENES):
        wanted = [budget for budget in budgets() if budget[2] == scene_name]
        if scene_name == "armhf":
            for kind, limit, _, words in wanted:
                yield kind, limit, scene_name, words, FILES[kind](armhf / words[0]) if armhf else None
            continue
        with Scene(build) as scene:
            SCENES[scene_name](scene)
            for kind, limit, _, words in wanted:
                real = [word.replace("FOLDER", str(scene.folder)) for word in words]
                skipped = kind == "instructions" and not same
                yield kind, limit, scene_name, words, None if skipped else RUNS[kind](scene, real)


def main():
    words = sys.argv[1:]
    show = words[0] == "--show" and bool(words.pop(0))
    armhf = pathlib.Path(words[1]) if len(words) > 1 else None
    over = lower = 0
    for kind, limit, scene, what, count in counted(words[0], armhf):
        share, more = SLACK.get(kind, (0, 0))
        is_over = count is not None and count > limit * (1 + share) + more
        over += is_over
        lower += count is not None and count < limit * 0.9
        if show or is_over:
            print(f"    {kind:12} {count if count is not None else '-':>10}, budget {limit:>10}: {scene} {' '.join(what)}", flush=True)
    if lower:
        print(f"    {lower} budgets can be lowered (--show)")
    return 1 if over else 0


sys.exit(main())
