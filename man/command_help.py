# SPDX-License-Identifier: Apache-2.0
"""What `zeldb --help` and `zeldb COMMAND --help` say, as data.

Manual page and completion are made from it, so that they offer what the program takes. A line that does not fit
ends the run: it would be missing there.
"""

import re
import subprocess
import sys
from dataclasses import dataclass, field

HELP_COLUMN = 30  # where the explanation of an option begins


@dataclass
class Entry:
    name: str  # "--output", "FILE"; of several spellings the longest one
    value: str  # "COL,..."; empty for a flag or a positional
    choices: list
    help: str
    spelling: str  # as the help text has it: "-h,--help"


@dataclass
class Columns:
    title: str
    rows: list = field(default_factory=list)  # (is_extra, key, help)


@dataclass
class Command:
    name: str
    group: str
    help: str
    usage: str = ""
    sections: dict = field(default_factory=dict)  # title: entries
    columns: list = field(default_factory=list)
    notes: list = field(default_factory=list)

    def entries(self):
        return [entry for entries in self.sections.values() for entry in entries]

    def options(self):
        return [entry for entry in self.entries() if entry.name.startswith("-")]


def split(line):
    """The two columns of a line; the second may be missing."""
    parts = re.split(r"\s{2,}", line.strip(), maxsplit=1)
    if len(parts) == 1 and len(line) > HELP_COLUMN and line[HELP_COLUMN - 1] == " ":
        parts = [line[:HELP_COLUMN].strip(), line[HELP_COLUMN:]]
    return parts[0], parts[1] if len(parts) == 2 else ""


def entry_of(line):
    text, explanation = split(line)
    spelling, _, value = text.partition(" ")
    choices = re.search(r"\{(.*)\}", value)
    return Entry(
        name=max(spelling.split(","), key=len),
        value="" if not spelling.startswith("-") else value.split(" [")[0],
        choices=choices[1].split(",") if choices else [],
        help=explanation,
        spelling=spelling,
    )


class Parser:
    def __init__(self, command):
        self.command = command
        self.entries = None  # of the section that is being read
        self.columns = None
        self.note_ended = True

    def heading(self, line):
        title = line[:-1]
        self.entries = self.columns = None
        if title.startswith("Columns"):
            self.columns = Columns(re.sub(r" \(.*", "", title))
            self.command.columns.append(self.columns)
        else:
            self.entries = self.command.sections.setdefault(title, [])

    def row(self, line):
        if self.columns is not None:
            key, explanation = split(line[2:])
            self.columns.rows.append((line.startswith("*"), key, explanation))
        elif self.entries is None:
            sys.exit(f"help of {self.command.name}: not understood: {line}")
        elif line.startswith(" " * HELP_COLUMN):
            last = self.entries[-1]
            last.help = (last.help + " " + line.strip()).strip()
        else:
            self.entries.append(entry_of(line))

    def note(self, line):
        if self.note_ended or not self.command.notes:
            self.command.notes.append(line)
        else:
            self.command.notes[-1] += " " + line
        self.note_ended = False

    def parse(self, text):
        lines = text.splitlines()
        usage = next(i for i, line in enumerate(lines) if line.startswith("Usage: "))
        self.command.usage = lines[usage].removeprefix("Usage: ")
        for line in lines[usage + 1 :]:
            if not line.strip():
                self.note_ended = True
            elif re.fullmatch(r"\S.*:", line):
                self.heading(line)
            elif line.startswith(("  ", "* ")):
                self.row(line)
            else:
                self.note(line)
        return self.command


def ask(program, *arguments):
    return subprocess.run([*program, *arguments, "--help"], check=True, stdout=subprocess.PIPE, text=True).stdout


def read(program):
    """The program itself and its commands; program: the words that start it."""
    root = Parser(Command("zeldb", "", "")).parse(ask(program))
    commands = []
    for group in [title for title in root.sections if title != "Options"]:
        for entry in root.sections.pop(group):
            command = Command(entry.name, group, entry.help)
            commands.append(Parser(command).parse(ask(program, entry.name)))
    if not commands:
        sys.exit("no commands in the help text")
    return root, commands
