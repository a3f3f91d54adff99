# SPDX-License-Identifier: Apache-2.0
"""A header of the exported interface as data: its declarations, each group with the comment before it.

A line that does not fit ends the run: it would be missing in the manual.
"""

import re
import sys
from dataclasses import dataclass, field
from pathlib import Path

# Lines that say nothing to a reader of the manual.
SKIPPED = re.compile(r"// NOLINT|#pragma pack|#ifndef|#define|#endif|#include|ZELDB_(BEGIN|END)_DECLS"
                     r"|ZELDB_(LAYOUT|OFFSET|ASSERT)")
HEADING_WORDS = 5  # a sentence of so many words at the beginning of a comment that stands alone is its heading


@dataclass
class Group:
    """Declarations with one comment; a comment alone is the introduction of those that follow."""

    comment: list = field(default_factory=list)  # paragraphs
    declarations: list = field(default_factory=list)  # of the lines of each
    for_cplusplus: bool = False

    def is_record(self):
        return any(lines[0].startswith(("typedef", "enum")) for lines in self.declarations)

    def functions(self):
        return [re.search(r"(\w+)\(", " ".join(lines))[1] for lines in self.declarations
                if not lines[0].startswith(("typedef", "enum", "extern"))]


@dataclass
class Header:
    name: str
    summary: list = field(default_factory=list)
    groups: list = field(default_factory=list)

    def title(self):
        return self.summary[0].split(". ")[0].rstrip(".")


def paragraphs_of(comment):
    """The paragraphs of the text between /* and */, without the licence line."""
    lines = [re.sub(r"^ ?\* ?", "", line).strip() for line in comment.split("\n")]
    texts = re.split(r"\n\s*\n", "\n".join(lines).strip())
    return [" ".join(text.split()) for text in texts if text and "SPDX-License" not in text]


class Reader:
    def __init__(self, path):
        self.header = Header(Path(path).name)
        self.text = Path(path).read_text(encoding="utf-8")
        self.group = None  # the one that a declaration would join
        self.for_cplusplus = False

    def start_group(self, comment):
        self.group = Group(comment, [], self.for_cplusplus)
        self.header.groups.append(self.group)

    def comment(self, text):
        paragraphs = paragraphs_of(text)
        if not self.header.summary:
            self.header.summary = paragraphs
        elif paragraphs:
            self.start_group(paragraphs)

    def declaration(self, text):
        if self.group is None:
            self.start_group([])
        self.group.declarations.append(text.replace("ZELDB_API ", "").split("\n"))

    def line(self, line):
        if line.startswith("#ifdef __cplusplus"):
            self.for_cplusplus = True
        elif not SKIPPED.match(line):
            sys.exit(f"{self.header.name}: not understood: {line}")

    def read(self):
        rest = self.text
        while rest:
            if rest.startswith("\n"):
                self.group = None
                rest = rest[1:]
                continue
            if rest.startswith("/*"):
                item, rest = rest.split("*/", 1)
                self.comment(item[2:])
            elif SKIPPED.match(rest) or rest.startswith("#"):
                item, rest = rest.split("\n", 1)
                # A macro or a check may go on in further lines.
                while item.endswith("\\") or item.count("(") > item.count(")"):
                    more, rest = rest.split("\n", 1)
                    item += more
                self.line(item)
                continue
            else:
                match = re.match(r"[^;{]*(\{[^}]*\}[^;]*)?;", rest)
                if not match:
                    sys.exit(f"{self.header.name}: not understood: {rest[:80]}")
                self.declaration(match[0])
                rest = rest[match.end():]
            rest = rest.removeprefix("\n")
        return self.header


def read(path):
    return Reader(path).read()


def heading_and_text(comment):
    """Of a comment that stands alone."""
    first, _, more = re.sub(r"^-+ | -+$", "", comment[0]).partition(". ")
    first = first.rstrip(".")
    if len(first.split()) > HEADING_WORDS or ":" in first:
        return "", comment
    return first, ([more] if more else []) + comment[1:]
