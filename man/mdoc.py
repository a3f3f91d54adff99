# SPDX-License-Identifier: Apache-2.0
"""Text as the mdoc language of manual pages takes it."""

import os
import re
import tempfile
import textwrap
from pathlib import Path

# Of two or three letters, and so perhaps the name of a macro, which a word on a macro's line would call.
MACRO_LIKE = re.compile(r"(?<!\S)(?=[A-Z%][a-z0-9]{1,2}(?!\S))")


def escape(text):
    return text.replace("\\", "\\e")


def words(text):
    """The rest of a macro's line."""
    return MACRO_LIKE.sub(r"\\&", escape(text)).replace('"', "\\(dq")


def code(text):
    """Text that is typed as it stands: a hyphen is no dash."""
    return escape(text).replace("-", "\\-")


def literal(lines):
    """A block of code; lines may hold mdoc escapes already."""
    return [".Bd -literal", *(guard(line) for line in lines), ".Ed"]


def guard(line):
    return "\\&" + line if line.startswith((".", "'")) else line


def filled(text):
    """Each sentence begins on a line of its own: the formatter puts the space between them."""
    lines = []
    for sentence in re.split(r"(?<=[.!?]) (?=[A-Z])", escape(text)):
        lines += textwrap.wrap(sentence, 78, break_long_words=False, break_on_hyphens=False)
    return [guard(line) for line in lines]


def paragraphs(texts):
    lines = []
    for text in texts:
        lines += ([".Pp"] if lines else []) + filled(text)
    return lines


def see_also(pages):
    """pages: (name, section), in the order of sections and names."""
    ordered = sorted(pages, key=lambda page: (page[1], page[0]))
    last = len(ordered) - 1
    return [f".Xr {name} {section}" + ("" if i == last else " ,") for i, (name, section) in enumerate(ordered)]


def fill_template(path, values):
    """Lines that are @NAME@ become the lines of values["NAME"]; @NAME@ inside a line its text."""
    lines = []
    for line in Path(path).read_text(encoding="utf-8").splitlines():
        whole = re.fullmatch(r"@(\w+)@", line)
        if whole and isinstance(values[whole[1]], list):
            lines += values[whole[1]]
        else:
            lines.append(re.sub(r"@(\w+)@", lambda match: values[match[1]], line))
    return lines


def write(path, lines):
    """Whole or not at all: an interrupted build must not take half a page for a finished one."""
    path = Path(path)
    path.parent.mkdir(parents=True, exist_ok=True)
    with tempfile.NamedTemporaryFile("w", encoding="utf-8", dir=path.parent, delete=False) as file:
        file.write("\n".join(lines) + "\n")
    os.chmod(file.name, 0o644)
    os.replace(file.name, path)
