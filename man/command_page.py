# SPDX-License-Identifier: Apache-2.0
"""Writes zeldb(1): command_page.py TEMPLATE ENVIRONMENT DATE OUTPUT PROGRAM..."""

import sys
from pathlib import Path

import command_help
import mdoc

SHARED = "Output"  # the options that every listing has: explained once


def option_item(entry):
    names = [f"Fl {mdoc.code(name[1:])}" for name in entry.spelling.split(",")]
    value = " Ar " + mdoc.words(entry.value.lstrip(":")) if entry.value else ""
    return [".It " + " , ".join(names) + value, *mdoc.filled(entry.help + ".")]


def entry_list(entries):
    lines = [".Bl -tag -width Ds"]
    for entry in entries:
        lines += option_item(entry) if entry.name.startswith("-") else positional(entry)
    return lines + [".El"]


def positional(entry):
    return [".It Ar " + mdoc.words(entry.name), *mdoc.filled(entry.help + ".")]


def column_list(columns):
    width = max(len(key) for _, key, _ in columns.rows) + 2
    extra = ", those marked with * only when asked for" if any(row[0] for row in columns.rows) else ""
    lines = [".Pp", *mdoc.filled(columns.title + extra + ":"), f".Bl -tag -width {'n' * width} -compact"]
    for is_extra, key, explanation in columns.rows:
        lines += [".It " + mdoc.words(("* " if is_extra else "") + key), *mdoc.filled(explanation + ".")]
    return lines + [".El"]


def usage(command):
    lines = [".Nm Ic " + command.name]
    for word in command.usage.split()[2:]:
        lines.append(".Op Ar options" if word == "[OPTIONS]" else
                     ".Op Ar " + word[1:-1] if word.startswith("[") else ".Ar " + word)
    return lines


def is_own(entry):
    return entry.name != "--help"


def command_lines(command, shared):
    lines = [".Ss " + mdoc.words(command.name), *usage(command), ".Pp", *mdoc.filled(command.help.rstrip(".") + ".")]
    own = [entry for title, entries in command.sections.items() if not (title == SHARED and entries == shared)
           for entry in entries if is_own(entry)]
    if command.sections.get(SHARED) == shared:
        lines += mdoc.filled("Takes the output options.")
    if own:
        lines += entry_list(own)
    for i, columns in enumerate(command.columns):
        same = next((other for other in command.columns[:i] if other.rows == columns.rows), None)
        lines += [".Pp", *mdoc.filled(columns.title + ": as above.")] if same else column_list(columns)
    for note in command.notes:
        lines += [".Pp", *mdoc.filled(note)]
    return lines


def overview(commands):
    lines = [".Bl -tag -width Ds"]
    for group in dict.fromkeys(command.group for command in commands):
        names = [f".Sx {mdoc.words(command.name)}" for command in commands if command.group == group]
        lines += [".It " + mdoc.words(group), *(name + " ," for name in names[:-1]), names[-1]]
    return lines + [".El"]


def main():
    template, environment, date, output, *program = sys.argv[1:]
    root, commands = command_help.read(program)
    shared = next(command.sections[SHARED] for command in commands if SHARED in command.sections)
    lines = mdoc.fill_template(template, {
        "DATE": date,
        "OVERVIEW": overview(commands),
        "OPTIONS": entry_list(root.options()),
        "OUTPUT_OPTIONS": entry_list(shared),
        "COMMANDS": [line for command in commands for line in command_lines(command, shared)],
        "ENVIRONMENT": Path(environment).read_text(encoding="utf-8").splitlines(),
    })
    mdoc.write(output, lines)


if __name__ == "__main__":
    main()
