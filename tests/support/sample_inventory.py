# SPDX-License-Identifier: Apache-2.0
"""The sample controller for tests in Python: TEST ZELDB PROJECT ..., on SQLite and where there is one on a server."""
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

ZELDB, PROJECT = sys.argv[1], pathlib.Path(sys.argv[2])
SAMPLES = PROJECT / "samples"
TABLES = ["inventory", "adapters", "processors", "drives", "firmware"]
# Columns by which rows find each other or are chosen: without them nothing would be left to be spoiled.
KEPT = re.compile(r"\w*Key|_id|Location(Id)?|Slot(No)?|BayNo|\w*Idx|Presence|AIMSupported|FunType|HardwareId|HardwareTypeId|"
                  r"DriveTypeId|InfoMask|NumberofPhysicalPorts|GPUChipIndex|RAIDCtrlId|ControllerUID|CtrlSlot|SettingID|propName")
TEXTS = ["\x01\x1b[31m\"'<&>\\ {}$%s\n../../etc", "\xfc\xff\x80 " * 5, "x" * 16, "Unknown", "0x", "0000-00-00",
         "zz:zz:zz:zz:zz:zz"]
NUMBERS = [0, -1, 127, 255, 65535, 2**31 - 1, 2**32 - 1]


def zeldb(*arguments, status=0):
    done = subprocess.run([ZELDB, *map(str, arguments)], capture_output=True, text=True)
    assert done.returncode == status, (arguments, done.returncode, done.stderr)
    return done.stdout if status == 0 else done.stderr


def rows(*command):
    return json.loads(zeldb(*command, "--json"))["rows"]


def hostile_statements(text, number):
    """Statements that spoil the columns of every table."""
    table = None
    for line in (PROJECT / "docs/tables.md").read_text().splitlines():
        table = line[3:] if line.startswith("## ") else table
        column = re.match(r"\| `(\w+)` \| (?:(number)|(unsigned)|text (\d+))", line)
        if not column or table == "ZeldbSchema" or KEPT.fullmatch(column[1]):
            continue
        if column[4]:
            quoted = text[:int(column[4])].replace("'", "''")
            yield f"UPDATE {table} SET {column[1]}='{quoted}';"
        elif column[2] or number >= 0:
            yield f"UPDATE {table} SET {column[1]}={number};"


class Inventory(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.path = pathlib.Path(folder.name)
        os.environ.update(ZEL_PLATFORM_DIR=str(SAMPLES), VREL_LOG="/dev/null")

    def engines(self):
        """Makes databases that are empty, on one engine after the other."""
        server = os.environ.get("ZELDB_TEST_MARIADB")
        prefix = f"&prefix=p{os.getpid()}{self._testMethodName[-8:]}_"
        for url in [f"sqlite://{self.path}/inventory", *([server + prefix] if server else [])]:
            os.environ["ZEL_DB_URL"] = url
            zeldb("init")
            yield url.split(":")[0]

    def load(self, statements):
        file = self.path / "statements.sql"
        file.write_text(statements, encoding="latin1")
        zeldb("load", file)

    def load_sample(self):
        zeldb("load", *(SAMPLES / f"{table}.sql" for table in TABLES))
        zeldb("load", "--database", "propertiesdb", SAMPLES / "properties.sql")

    def hostile(self):
        """Spoils the inventory in one way after the other."""
        for text, number in zip(TEXTS, NUMBERS):
            self.load("\n".join(hostile_statements(text, number)))
            yield text
