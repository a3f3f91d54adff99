# SPDX-License-Identifier: Apache-2.0
"""What can be counted of a run, so that it is the same each time: instructions, calls of the table access, allocations,
system calls, bytes written; and memory."""
import os
import pathlib
import re
import shutil
import subprocess
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
SAMPLES = ROOT / "samples"


class Scene:
    """A folder with databases; its programs are those of one build."""

    def __init__(self, build):
        self.programs = pathlib.Path(build).resolve() / "bin"
        self.folder = pathlib.Path(tempfile.mkdtemp())
        self.environment = {**os.environ, "ZEL_DB_URL": f"sqlite://{self.folder}", "ZEL_PLATFORM_DIR": str(SAMPLES),
                            "VREL_LOG": "/dev/null", "LC_ALL": "C.UTF-8",
                            # The C library must not choose functions by the processor: counts would differ.
                            "GLIBC_TUNABLES": "glibc.cpu.hwcaps=-AVX,-AVX2,-AVX512F,-AVX512VL,-ERMS,-FSRM"}

    def __enter__(self):
        return self

    def __exit__(self, *_):
        shutil.rmtree(self.folder)

    def run(self, words, before=(), **environment):
        """What it prints."""
        command = [*before, self.programs / words[0], *words[1:]]
        done = subprocess.run(command, env={**self.environment, **environment}, stdout=subprocess.PIPE, check=True)
        return done.stdout.decode(errors="replace")

    def memory(self, words, **environment):
        """The KiB that a program has at most."""
        return int(self.run(["bench_work", "peak", self.programs / words[0], *words[1:]], **environment))

    def fill(self, rows):
        self.run(["bench_work", "fill", str(rows)])

    def fill_sample(self):
        self.run(["zeldb", "init"])
        tables = [SAMPLES / f"{name}.sql" for name in ("inventory", "adapters", "processors", "drives", "firmware")]
        self.run(["zeldb", "load", *tables])
        self.run(["zeldb", "load", "--database", "propertiesdb", SAMPLES / "properties.sql"])

    def calls(self, words):
        """Of the table access, a line each."""
        trace = self.folder / "trace"
        trace.unlink(missing_ok=True)
        self.run(words, ZEL_DB_TRACE=str(trace))
        return trace.read_text(errors="replace").splitlines() if trace.exists() else []

    def own_calls(self, words):
        """Those of them that the program makes, and not a function of the library for it."""
        count = self.folder / "own"
        self.run(words, LD_PRELOAD=str(self.programs.parent / "lib" / "libbench_own_calls.so"), BENCH_OWN_CALLS=str(count))
        return int(count.read_text())

    def instructions(self, words):
        """Of a work of bench_work, or of a whole program."""
        notes = self.folder / "callgrind"
        only = ["--toggle-collect=measured_work"] if words[0] == "bench_work" else []
        self.run(words, ["valgrind", "-q", "--tool=callgrind", f"--callgrind-out-file={notes}", "--log-file=/dev/null", *only])
        found = re.search(r"^(?:summary|totals): (\d+)", notes.read_text(), re.M)
        return int(found[1])

    def system_calls(self, words):
        """Their number, and the bytes that they wrote to files: of a work of bench_work, or of a whole program. Those
        for memory are left out, whose layout differs from run to run, and the looks at files that the clock causes."""
        notes = self.folder / "strace"
        self.run(words, ["strace", "-f", "-o", notes])
        lines = notes.read_text(errors="replace").splitlines()
        marks = [place for place, line in enumerate(lines) if "getppid()" in line]
        if words[0] == "bench_work":
            lines = lines[marks[0] + 1:marks[1]]
        sizes = [int(found[1]) for line in lines if (found := re.search(r" pwrite64\(.* = (\d+)$", line))]
        ignored = re.compile(r"\d+ +(brk|mmap|munmap|madvise|mremap|newfstatat\(AT_FDCWD)")
        calls = [line for line in lines if not ignored.match(line)]
        return len(calls), sum(size for size in sizes if size > 1)  # single bytes make room in the index of the log

    def heap(self, words):
        """Allocations of a work of bench_work, and the bytes that it held at most."""
        return [int(number) for number in self.run(words).split()]
