#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
# metrics_test.py ZELDB PROJECT PROMTOOL: what `zeldb metrics` writes about the sample controller, an empty inventory and
# hostile texts, on both engines.
import os
import pathlib
import re
import shutil
import sqlite3
import subprocess
import sys
import time
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "support"))
from sample_inventory import PROJECT, SAMPLES, Inventory, rows, zeldb  # noqa: E402

SERIES = re.compile(r'(\w+)(?:\{(.*)\})? (\S+)')
LABEL = re.compile(r'(\w+)="((?:[^"\\]|\\.)*)"')


def read(text):
    """Of each metric the values by their labels."""
    metrics = {}
    for line in text.splitlines():
        if not line.startswith("#"):
            name, labels, value = SERIES.fullmatch(line).groups()
            metrics.setdefault(name, {})[frozenset(LABEL.findall(labels or ""))] = float(value)
    return metrics


def value(metrics, name, **labels):
    found = [number for known, number in metrics.get(name, {}).items() if set(labels.items()) <= known]
    assert len(found) == 1, (name, labels, found)
    return found[0]


class Metrics(Inventory):
    def checked(self, *options):
        text = zeldb("metrics", *options)
        tool = subprocess.run([sys.argv[3], "check", "metrics"], input=text, capture_output=True, text=True)
        self.assertEqual((tool.returncode, tool.stdout + tool.stderr), (0, ""), text)
        for labels in (labels for series in read(text).values() for labels in series):
            for _, shown in labels:
                self.assertLessEqual(len(shown.replace("\\\\", "\\").replace('\\"', '"')), 64)
        return read(text)

    def test_on_both_engines(self):
        documented = set(re.findall(r"^\| `(zeldb_\w+)`", (PROJECT / "docs/metrics.md").read_text(), re.M))
        for engine in self.engines():
            empty = self.checked()
            self.assertNotIn("zeldb_part_info", empty)
            self.load_sample()
            metrics = self.checked("--baseline", SAMPLES / "baseline.json")
            self.assertEqual(set(metrics), documented)
            self.values(metrics)
            for text in self.hostile():
                with self.subTest(engine=engine, text=text):
                    self.assertGreater(len(self.checked()["zeldb_part_info"]), 20)

    def values(self, metrics):
        slot = next(row for row in rows("slots") if (row["Location"], row["SlotNo"]) == (1, 1))
        part = dict(kind="adapter", place="1:1", pci=slot["Address"], card=slot["CardName"], serial=slot["SerialNo"],
                    firmware=slot["FirmwareVersion"])
        self.assertEqual(value(metrics, "zeldb_part_info", **part), 1)
        for place, state in ("1:8", "warning"), ("1:1", "ok"):
            for other in "ok", "warning", "critical", "unknown":
                self.assertEqual(value(metrics, "zeldb_part_health", place=place, state=other), float(other == state))
        disk = next(row for row in rows("disks") if row["Location"] == "Bay 1")
        self.assertEqual(value(metrics, "zeldb_drive_life_left_ratio", place="Bay 1"), disk["RemainLife"] / 100)
        self.assertEqual(value(metrics, "zeldb_drive_temperature_celsius", place="Bay 1"), disk["Temperature"])
        self.assertEqual(value(metrics, "zeldb_drive_size_bytes", place="Bay 1"), 960e9)
        self.assertEqual(value(metrics, "zeldb_port_up", function="00040000"), 1)
        self.assertEqual(value(metrics, "zeldb_port_up", function="00040001"), 0)
        self.assertEqual(value(metrics, "zeldb_port_speed_bytes_per_second", function="01310000"), 25e9 / 8)
        self.assertEqual(value(metrics, "zeldb_firmware_update_failed", place="1:8"), 1)
        self.assertEqual(value(metrics, "zeldb_firmware_update_pending", place="1:10"), 1)
        self.assertEqual(value(metrics, "zeldb_pending_settings"), len(rows("pending")))
        self.assertEqual(value(metrics, "zeldb_table_rows", table="Processor"), len(rows("processors")))
        self.assertEqual(value(metrics, "zeldb_part_change", change="replaced", place="DIMM 3, slot 3"), 1)
        self.assertLess(abs(time.time() - value(metrics, "zeldb_inventory_changed_timestamp_seconds")), 600)
        self.assertEqual(sum(metrics["zeldb_section_up"].values()), len(metrics["zeldb_section_up"]))

    def test_a_file_is_replaced_and_bounds_hold(self):
        next(self.engines())
        self.load_sample()
        file = self.path / "zeldb.prom"
        file.write_text("old")
        self.load("".join(f"INSERT INTO Memory (SlotNo, MemSize, DevLocator) VALUES ({slot}, 1024, 'D{slot}');"
                          for slot in range(100, 2100)))
        self.assertEqual(zeldb("metrics", "--mask", file), "")
        self.assertEqual(file.stat().st_mode & 0o777, 0o644)
        exported = self.path / "export"
        zeldb("export", exported)
        with sqlite3.connect(exported) as database:
            database.execute("UPDATE ZeldbExport SET Written='2001-09-09 01:46:40'")
        aged = read(zeldb("metrics", "--from", exported))
        self.assertEqual(value(aged, "zeldb_inventory_changed_timestamp_seconds"), 1e9)
        fleet = [option for name in (exported, SAMPLES / "none", self.path / 'o"ne.db') for option in ("--from", name)]
        shutil.copy(exported, fleet[-1])
        done = subprocess.run([sys.argv[1], "metrics", *fleet], capture_output=True, text=True)
        self.assertEqual((done.returncode, done.stderr.count("\n")), (1, 1), done.stderr)
        self.assertEqual(subprocess.run([sys.argv[3], "check", "metrics"], input=done.stdout, text=True).returncode, 0)
        many = read(done.stdout)
        for name, series in aged.items():
            for labels, number in series.items():
                for machine in "export", r"o\"ne":
                    self.assertEqual(many[name][labels | {("machine", machine)}], number)
            self.assertEqual(len(many[name]), 2 * len(series))
        text = file.read_text()
        metrics = read(text)
        self.assertEqual(len(metrics["zeldb_part_info"]), 2000)
        self.assertGreater(value(metrics, "zeldb_series_left_out"), 0)
        for row in rows("slots"):
            self.assertNotIn(row["SerialNo"] or "-none-", text)

    def test_what_cannot_be_read_leaves_the_rest(self):
        next(self.engines())
        self.load_sample()
        self.load("DROP TABLE PCISetting;")
        done = subprocess.run([sys.argv[1], "metrics"], capture_output=True, text=True)
        self.assertEqual(done.returncode, 1)
        self.assertIn("settings", done.stderr)
        metrics = read(done.stdout)
        self.assertEqual(value(metrics, "zeldb_section_up", section="settings"), 0)
        self.assertEqual(value(metrics, "zeldb_section_up", section="parts"), 1)
        self.assertEqual(value(metrics, "zeldb_port_up", function="00040000"), 1)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
