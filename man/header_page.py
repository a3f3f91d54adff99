# SPDX-License-Identifier: Apache-2.0
"""Writes the manual pages of the library from its headers:

    header_page.py TEMPLATE ENVIRONMENT EXAMPLE STATUS_HEADER DATE FOLDER HEADER...

The template is that of the overview, libzeldb(3); each header gets a page of its own, and so does each function with
those that share its comment.
"""

import os
import re
import sys
import textwrap
from pathlib import Path

import header_text
import mdoc

KEPT = "\x01"  # a blank where no line may end

def page_name(header):
    return "zeldb-" + Path(header.name).stem


def prototype(lines):
    """In bold the name, in lines for a terminal."""
    if lines[0].startswith(("typedef", "enum")):
        return [mdoc.code(line) for line in lines]
    text = mdoc.code(" ".join(" ".join(lines).split()))
    # A type and its name stay together.
    text = re.sub(r"(?<!,) ", KEPT, text)
    wrapped = textwrap.wrap(text, 76, subsequent_indent="    ", break_long_words=False, break_on_hyphens=False)
    wrapped = [line.replace(KEPT, " ") for line in wrapped]
    return [re.sub(r"(\w+)\(", r"\\fB\1\\fP(", wrapped[0], count=1), *wrapped[1:]]


def group_lines(group):
    lines = mdoc.literal([line for declaration in group.declarations for line in prototype(declaration)])
    if group.comment:
        lines += [".Bd -ragged -offset indent -compact", *mdoc.paragraphs(group.comment), ".Ed"]
    return lines


def introduction(group):
    heading, texts = header_text.heading_and_text(group.comment)
    lines = [".Ss " + mdoc.words(heading)] if heading else [".Pp"] if texts else []
    return lines + mdoc.paragraphs(texts)


def section(title, groups):
    if not groups:
        return []
    lines = []
    for group in groups:
        lines += group_lines(group) if group.declarations else introduction(group)
    # Nothing is to be set apart right after a heading.
    kept = [line for i, line in enumerate(lines) if not (line == ".Pp" and (i == 0 or lines[i - 1].startswith(".Ss")))]
    return [".Sh " + title, *kept]


def heading(name, header, date, names, title):
    return [
        '.\\" SPDX-License-Identifier: Apache-2.0',
        f'.\\" Made from zeldb/{header.name}.',
        f".Dd {date}",
        f".Dt {name.upper()} 3",
        ".Os",
        ".Sh NAME",
        *(f".Nm {other} ," for other in names[:-1]),
        f".Nm {names[-1]}",
        ".Nd " + mdoc.words(title),
        ".Sh LIBRARY",
        "zeldb inventory library (libzeldb, \\-lzeldb)",
        ".Sh SYNOPSIS",
        f".In zeldb/{header.name}",
    ]


def page(header, headers, date):
    plain = [group for group in header.groups if not group.for_cplusplus]
    return [
        *heading(page_name(header), header, date, [page_name(header)], header.title()),
        ".Sh DESCRIPTION",
        *mdoc.paragraphs(header.summary),
        *section("TYPES", [group for group in plain if group.is_record()]),
        *section("FUNCTIONS", [group for group in plain if not group.is_record()]),
        *section("FUNCTIONS FOR C++", [group for group in header.groups if group.for_cplusplus]),
        ".Sh SEE ALSO",
        *mdoc.see_also([("libzeldb", 3)] + [(page_name(other), 3) for other in headers if other is not header]),
    ]


def records_of(group, header):
    """The records that the functions take, and those inside them, as the header has them."""
    wanted = set(re.findall(r"\w+", " ".join(line for lines in group.declarations for line in lines)))
    found = []
    for record in reversed([other for other in header.groups if other.is_record()]):
        texts = [" ".join(lines) for lines in record.declarations]
        if any(name in wanted for text in texts for name in re.findall(r"(\w+);$", text)):
            wanted.update(word for text in texts for word in re.findall(r"\w+", text))
            found.insert(0, record)
    return found


def function_page(group, before, header, date):
    """before: what the header says of the functions from there on."""
    names = group.functions()
    types = records_of(group, header)
    return [
        *heading(names[0], header, date, names, header.title()),
        *mdoc.literal([line for declaration in group.declarations for line in prototype(declaration)]),
        ".Sh DESCRIPTION",
        *mdoc.paragraphs(group.comment + before + header.summary[1:]),
        *section("TYPES", types),
        ".Sh SEE ALSO",
        *mdoc.see_also([("libzeldb", 3), (page_name(header), 3)]),
    ]


def write_functions(folder, header, date):
    before = []
    for group in header.groups:
        if not group.declarations:
            before = header_text.heading_and_text(group.comment)[1]
        names = group.functions()
        if not names:
            continue
        mdoc.write(folder / f"{names[0]}.3", function_page(group, before, header, date))
        for name in names[1:]:
            os.symlink(f"{names[0]}.3", folder / f"{name}.3")


def sentence(text):
    return text[0].upper() + text[1:] + "."


def status_list(path):
    rows = re.findall(r"^  (\w+) = (\d+),? */\* (.*?) \*/|^  (\w+) = (\d+),?$", Path(path).read_text(encoding="utf-8"),
                      re.M)
    lines = [".Bl -tag -width Ds"]
    for name, value, meaning, bare_name, bare_value in rows:
        lines += [f".It Dv {name or bare_name} Pq {value or bare_value}", *mdoc.filled(sentence(meaning or "success"))]
    return lines + [".El"]


def overview(template, environment, example, status_header, headers, date):
    subsystems = [".Bl -tag -width Ds"]
    for header in headers:
        subsystems += [f".It In zeldb/{header.name}", f".Xr {page_name(header)} 3 :", *mdoc.filled(header.title() + ".")]
    code = [mdoc.code(line) for line in Path(example).read_text(encoding="utf-8").splitlines()[1:]]
    return mdoc.fill_template(template, {
        "DATE": date,
        "SUBSYSTEMS": subsystems + [".El"],
        "STATUSES": status_list(status_header),
        "ENVIRONMENT": Path(environment).read_text(encoding="utf-8").splitlines(),
        "EXAMPLE": mdoc.literal(code),
        "SEE_ALSO": mdoc.see_also([(page_name(header), 3) for header in headers] + [("zeldb", 1), ("ucm_parser", 8)]),
    })


def main():
    template, environment, example, status_header, date, folder, *paths = sys.argv[1:]
    folder = Path(folder)
    headers = [header_text.read(path) for path in paths]
    folder.mkdir(parents=True, exist_ok=True)
    for old in folder.glob("*.3"):
        old.unlink()
    mdoc.write(folder / "libzeldb.3", overview(template, environment, example, status_header, headers, date))
    for header in headers:
        mdoc.write(folder / f"{page_name(header)}.3", page(header, headers, date))
        write_functions(folder, header, date)


if __name__ == "__main__":
    main()
