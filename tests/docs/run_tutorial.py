#!/usr/bin/env python3
"""Does what docs/tutorial.md says, in a fresh home directory, and compares the output with the page's.

The page's blocks:
- `console`: each line behind "$ " is run by bash; the lines up to the next one are its output, both streams. A line of
  three dots stands for any lines, three dots at the end of a line for the rest of it. `cd` lasts.
- any block below `<!-- file: PATH -->` is written to that file first.
- a block below `<!-- not run -->` is for people only.

In the home directory, `mosaicer` is this repository, and both programs are on the path.
"""

import argparse
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

REPOSITORY = pathlib.Path(__file__).resolve().parents[2]
BLOCK = re.compile(r"(?:^<!-- (?P<note>[^\n]*?) -->\n+)?^```(?P<kind>\w+)\n(?P<text>.*?)^```$", re.MULTILINE | re.DOTALL)
DOTS = "..."


class Shell:
    """Commands one after the other, as if typed at one prompt."""

    def __init__(self, home, programs):
        self.directory = home
        self.state = home.parent / "directory"
        self.environment = {"HOME": str(home), "PATH": f"{programs}{os.pathsep}{os.environ['PATH']}",
                            "LC_ALL": "C.UTF-8", "LANG": "C.UTF-8"}

    def run(self, command):
        script = f'{command}\ncode=$?; pwd > "{self.state}"; exit $code'
        done = subprocess.run(["bash", "-c", script], cwd=self.directory, env=self.environment, text=True, timeout=120,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
        self.directory = pathlib.Path(self.state.read_text(encoding="utf-8").strip())
        return done.stdout, done.returncode


def matches(wanted, found):
    """Whether lines of the page, with their dots, tell of lines that were printed."""
    if not wanted:
        return not found
    if wanted[0] == DOTS:
        return any(matches(wanted[1:], found[skipped:]) for skipped in range(len(found) + 1))
    same = bool(found) and (wanted[0] == found[0] or
                            wanted[0].endswith(DOTS) and found[0].startswith(wanted[0][:-len(DOTS)]))
    return same and matches(wanted[1:], found[1:])


def commands_of(text):
    """Pairs of a command and the lines of its output."""
    pairs = []
    for line in text.splitlines():
        if line.startswith("$ "):
            pairs.append((line[2:], []))
        else:
            pairs[-1][1].append(line)
    return pairs


class Run:
    def __init__(self, shell):
        self.shell = shell
        self.commands = self.faults = 0

    def block(self, match):
        """Does what a block says. Gives the block as it should stand on the page."""
        note, text = match.group("note") or "", match.group("text")
        if note == "not run":
            return match.group(0)
        if note.startswith("file: "):
            (self.shell.directory / note[len("file: "):]).write_text(text, encoding="utf-8")
        if match.group("kind") != "console":
            return match.group(0)
        seen = "".join(self.command(command, wanted) for command, wanted in commands_of(text))
        return match.group(0).replace(text, seen)

    def command(self, command, wanted):
        self.commands += 1
        output, code = self.shell.run(command)
        found = output.splitlines()
        if not matches(wanted, found):
            self.faults += 1
            print("\n".join(["", f"$ {command}", "the page has:", *wanted, f"the output, with exit code {code}:", *found]))
            wanted = found
        return "\n".join([f"$ {command}", *wanted, ""])


def install(programs, directory):
    """Side by side, as they are on a machine where they were installed: kst looks for mosaicer beside itself."""
    directory.mkdir(exist_ok=True)
    for program in programs:
        shutil.copy2(program, directory)
    return directory


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--page", type=pathlib.Path, default=REPOSITORY / "docs" / "tutorial.md")
    parser.add_argument("--programs", nargs="+", type=pathlib.Path, help="mosaicer and kst",
                        default=[REPOSITORY / "build/release/driver/mosaicer", REPOSITORY / "build/release/tools/kst/kst"])
    parser.add_argument("--update", action="store_true", help="write what was seen into the page")
    parser.add_argument("--keep", type=pathlib.Path, help="make the home directory, DIRECTORY/home, and leave it")
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory() as scratch:
        home = (arguments.keep or pathlib.Path(scratch)).resolve() / "home"
        home.mkdir(parents=True)
        (home / "mosaicer").symlink_to(REPOSITORY)
        run = Run(Shell(home, install(arguments.programs, home.parent / "bin")))
        page = arguments.page.read_text(encoding="utf-8")
        seen = BLOCK.sub(run.block, page)
    if arguments.update and seen != page:
        arguments.page.write_text(seen, encoding="utf-8")
    if run.commands == 0:
        print("no commands were found on the page")
    print(f"{run.commands} commands, {run.faults} with another output")
    return 1 if run.faults or not run.commands else 0


if __name__ == "__main__":
    sys.exit(main())
