# SPDX-License-Identifier: Apache-2.0
"""Writes the bash completion of zeldb: bash_completion.py TEMPLATE OUTPUT PROGRAM..."""

import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "man"))
import command_help  # noqa: E402
import mdoc  # noqa: E402

FILES = "<file>"
COLUMNS = "<columns>"
# Kinds of words that come from the inventory; the template knows how to read them.
INVENTORY = {"SLOT": "<slots>", "PLACE": "<places>", "KEY": "<functions>", "ID": "<settings>", "ID=VALUE": "<settings>="}
ADAPTERS = "<adapters>"


def quoted(text):
    return "'" + text.replace("'", "'\\''") + "'"


def case(pattern, text):
    return f"    {quoted(pattern)}) REPLY={quoted(text)} ;;"


def value_kind(entry):
    if entry.choices:
        return " ".join(entry.choices)
    if entry.value.startswith("COL"):
        return COLUMNS
    if entry.name == "--adapter":
        return ADAPTERS
    return FILES if entry.value == "FILE" else INVENTORY.get(entry.value, "")


def option_cases(commands):
    return [case(command.name, " ".join(option.name for option in command.options())) for command in commands]


def value_cases(commands):
    """An option with a value of which nothing is known gets nothing: not what could stand there instead."""
    return [case(f"{command.name} {option.name}", value_kind(option) or " ")
            for command in commands for option in command.options() if option.value or option.choices]


def argument_cases(commands):
    listings = " ".join(command.name for command in commands if command.columns)
    known = {"FILE": FILES, "FOLDER": FILES, "FILE...": FILES, "COMMAND": listings, **INVENTORY}
    return [case(command.name, known[entry.name]) for command in commands for entry in command.entries()
            if entry.name in known]


def column_cases(commands):
    lines = []
    for command in commands:
        for columns in command.columns:
            view = columns.title.removeprefix("Columns").removeprefix(" with")
            lines.append(case(command.name + view, "all " + " ".join(key for _, key, _ in columns.rows)))
    return lines


def main():
    template, output, *program = sys.argv[1:]
    root, commands = command_help.read(program)
    names = " ".join(command.name for command in commands)
    general = " ".join(option.name for option in root.options())
    mdoc.write(output, mdoc.fill_template(template, {
        "COMMANDS": f"{names} {general}",
        "OPTIONS": option_cases(commands),
        "VALUES": value_cases(commands),
        "ARGUMENTS": argument_cases(commands),
        "COLUMNS": column_cases(commands),
    }))


if __name__ == "__main__":
    main()
