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

# All that these folders print.
WHOLE_FOLDERS = ("driver", "texture", "packing")
# Only what is thrown or reported as a fault: other literals are data.
FAULTS_OF = ("tools/kst", "source/utility/xml", "source/utility/image", "source/utility/filesystem", "script/language")
QUOTED_FROM = (*WHOLE_FOLDERS, *FAULTS_OF, "source/utility")

PROGRESS = re.compile(r"Report\.(verbose|debug|statistics)|\bsay\(|static_assert|\busage_text\b")
FAULT = re.compile(r"\bthrow\b|CommandFailure|\b(fail|error|throw_disk_error)\(|\btoo_many_locals\b")
# The database's lines.
NO_MESSAGES = {"texture/TextureDatabase.cpp"}
ATTRIBUTION = "mosaicer - packs textures"
# A word that the parser's skeleton says and that becomes another one.
REPLACED = {"memory exhausted"}
# Assembler listings, and what only the loader of compiled programs says.
NO_FAULTS = {"script/language/Opcodes.h", "script/language/CompiledFile.cpp", "script/language/CompiledFile.h",
             "script/language/Verifier.cpp"}


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
        if not line.startswith("|"):
            in_table = False
        elif line.startswith("| message"):
            in_table = True
        elif in_table:
            yield from re.findall(r"`([^`]+)`", line.split(" | ")[0])


def is_sentence(literal):
    return " " in literal.strip() and len(re.findall(r"[A-Za-z]{2,}", literal)) >= 2


def printed_literals():
    """File and literal of everything that the page has to tell."""
    for file, text in sources(WHOLE_FOLDERS):
        for code, literals in statements(text):
            if file not in NO_MESSAGES and not PROGRESS.search(code):
                yield from ((file, literal) for literal in literals)
    for file, text in sources(FAULTS_OF):
        for code, literals in statements(text):
            if file not in NO_FAULTS and FAULT.search(code):
                yield from ((file, literal) for literal in literals)


def main():
    page = PAGE.read_text(encoding="utf-8")
    literals = {one_line(literal) for _, text in sources(QUOTED_FROM) for _, found in statements(text) for literal in found}
    faults = []
    messages = list(quoted_messages(page))
    for message in messages:
        parts = [one_line(part) for part in re.split(r"<[a-z][a-z, ]*>", message)]
        faults += [f'the page quotes "{part}", which no source prints' for part in parts
                   if re.search(r"[A-Za-z]{2}", part) and not any(part in literal for literal in literals)]

    told = one_line(page)
    printed = [(file, one_line(literal)) for file, literal in printed_literals()
               if is_sentence(literal) and literal not in REPLACED]
    faults += [f'{file} prints "{literal}", which is not on the page' for file, literal in printed
               if literal not in told and not literal.startswith(ATTRIBUTION)]

    # So that a change of the page's form, or of the sources', can't make the test pass by finding nothing.
    if len(messages) < 100 or len(printed) < 100:
        faults.append(f"only {len(messages)} messages on the page and {len(printed)} in the sources were found")
    for fault in faults:
        print(f"{PAGE.name}: {fault}", file=sys.stderr)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
