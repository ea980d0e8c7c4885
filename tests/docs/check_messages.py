#!/usr/bin/env python3
"""Holds docs/troubleshooting.md to the sources: what it quotes is printed, and what is printed is quoted.

Forwards: each text in the first column of a table headed `message` is cut at its placeholders, and each fixed part must
stand in a string literal of the sources. Backwards: each literal of two words or more, in a statement that can reach a
user as a message, must stand on the page.
"""

import pathlib
import re
import sys

from cpp_literals import statements

REPOSITORY = pathlib.Path(__file__).resolve().parents[2]
PAGE = REPOSITORY / "docs" / "troubleshooting.md"

# What says or throws something when all is not well. In packing/, reasons are put together in many ways: there every
# text counts that is no progress.
FAULT = re.compile(r"\bthrow\b|CommandFailure|\b(fail|fault|refuse|error|throw_disk_error)\(|\btoo_many_locals\b"
                   r"|\bfaults_\.|Report\.(warnings|errors)|\b(console|cerr) ")
PROGRESS = re.compile(r"Report\.(verbose|debug|statistics)|\bsay\(|static_assert")
FOLDERS = {"packing": None, **dict.fromkeys(("driver", "texture", "tools/kst", "source/utility/xml", "source/utility/image",
                                             "source/utility/filesystem", "script/language", "script/value", "script/vm",
                                             "script/binding", "script/runtime", "objects"), FAULT)}
# Findings, which tell their cure themselves.
LEFT_OUT = "driver/check/"
# A word that the parser's skeleton says and that becomes another one; and who made the program.
NO_MESSAGES = re.compile("memory exhausted|mosaicer - packs textures")


def one_line(text):
    return re.sub(r"\s+", " ", text).strip()


def sources(folders):
    for folder in folders:
        for file in sorted((REPOSITORY / folder).rglob("*")):
            if file.suffix in (".cpp", ".h", ".y"):
                yield file.relative_to(REPOSITORY).as_posix(), file.read_text(encoding="utf-8")


def quoted_messages(page):
    in_table = False
    for line in page.splitlines():
        if line.startswith("| message"):
            in_table = True
        elif not line.startswith("|"):
            in_table = False
        elif in_table:
            yield from re.findall(r"`([^`]+)`", line.split(" | ")[0])


def printed_messages():
    """File and text of all literals of two words or more that can reach a user."""
    for folder, wanted in FOLDERS.items():
        for file, text in sources([folder]):
            for code, literals in statements(text):
                if file.startswith(LEFT_OUT) or PROGRESS.search(code) or wanted and not wanted.search(code):
                    continue
                for literal in map(one_line, literals):
                    if " " in literal and len(re.findall(r"[A-Za-z]{2,}", literal)) >= 2 and not NO_MESSAGES.match(literal):
                        yield file, literal


def main():
    page = PAGE.read_text(encoding="utf-8")
    literals = {one_line(literal) for _, text in sources([*FOLDERS, "source/utility"])
                for _, found in statements(text) for literal in found}
    faults = []
    messages = list(quoted_messages(page))
    for message in messages:
        parts = [one_line(part) for part in re.split(r"<[a-z][a-z, ]*>", message)]
        faults += [f'the page quotes "{part}", which no source prints' for part in parts
                   if re.search(r"[A-Za-z]{2}", part) and not any(part in literal for literal in literals)]

    told = one_line(page)
    printed = list(printed_messages())
    faults += [f'{file} prints "{literal}", which is not on the page' for file, literal in printed if literal not in told]

    # So that a change of the page's form, or of the sources', can't make the test pass by finding nothing.
    if len(messages) < 100 or len(printed) < 100:
        faults.append(f"only {len(messages)} messages on the page and {len(printed)} in the sources were found")
    for fault in faults:
        print(f"{PAGE.name}: {fault}", file=sys.stderr)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
