#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""usage: bench/growth.py BUILD_DIRECTORY [ROWS...]

What a row costs where there are 1,000, 10,000 or 100,000 of them, on SQLite: instructions, calls of the table access,
allocations, and KiB of memory for all of them. What costs more than 1.1 times as much as with the fewest has a mark."""
import sys

sys.dont_write_bytecode = True
from counting import Scene

# The words for a work of so many rows.
WORKS = {
    "fresh": lambda rows: ["bench_work", "store", rows],
    "again": lambda rows: ["bench_work", "store", rows],
    "keyed": lambda rows: ["bench_work", "keyed", rows, "warm"],
    "wide": lambda rows: ["bench_work", "wide", rows, "warm"],
    **{name: lambda _, name=name: ["bench_work", name, "0", "warm"]
       for name in ("settings", "adapters", "drives", "backplane", "merged", "components")},
    **{f"zeldb {name}": lambda _, name=name: ["zeldb", name] for name in ("functions", "disks", "slots", "vpd")},
}
MOST = {"zeldb vpd": 10000}  # more would take hours


def costs(scene, words):
    """Instructions, calls, allocations, KiB."""
    instructions = scene.instructions(words)
    if words[0] == "zeldb":
        return instructions, len(scene.calls(words)), None, scene.memory(words)
    allocations, peak = scene.heap(words)
    return instructions, len(scene.calls(words[:3])), allocations, peak // 1024


def main():
    sizes = [int(word) for word in sys.argv[2:]] or [1000, 10000, 100000]
    least = {}
    print(f"{'':16} {'rows':>7} {'instructions':>13} {'calls':>8} {'allocations':>12} {'KiB':>8}  for a row, KiB for all")
    for rows in sizes:
        with Scene(sys.argv[1]) as scene:
            scene.fill(rows)
            for name, words in WORKS.items():
                if rows > MOST.get(name, rows):
                    continue
                *each, memory = costs(scene, words(str(rows)))
                each = [value / rows if value is not None else None for value in each]
                grown = each[0] / least.setdefault(name, each[0])
                shown = [f"{value:.2f}" if value is not None else "-" for value in each]
                print(f"{name:16} {rows:>7} {float(shown[0]):>13.0f} {shown[1]:>8} {shown[2]:>12} {memory:>8}"
                      f"  {f'{grown:.1f} times as much' if grown > 1.1 else ''}", flush=True)


main()
