#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs every picture command of scripts/demo and every plime command of README.md, and fails where one says anything:
a warning, or that there are notes. Drawings are small."""
import re
import shlex
import subprocess
import sys
import tempfile
from pathlib import Path

PICTURE = re.compile(r"^picture (\S+) ((?:.*\\\n)*.*)$", re.M)
VARIABLE = re.compile(r"^(\w+)=(\S+)", re.M)
README = re.compile(r"^build/release/bin/plime (.*)$", re.M)
LEAST = 20  # commands in all


def demoCommands(text):
    """The words of each "picture NAME …" line, with the script's variables put in."""
    variables = dict(VARIABLE.findall(text))
    for name, command in PICTURE.findall(text):
        command = re.sub(r"\$(\w+)", lambda found: variables[found[1]], command.replace("\\\n", " "))
        yield [*shlex.split(command, comments=True), "-o", f"out/{name}"]


def small(words):
    return [*words, "--size", "160x90"] if words[0] == "render" and "--size" not in words else words


def main(plime, root):
    root = Path(root).resolve()
    commands = [*demoCommands((root / "scripts/demo").read_text(encoding="utf-8")),
                *(shlex.split(line, comments=True) for line in README.findall((root / "README.md").read_text(encoding="utf-8")))]
    loud = 0
    with tempfile.TemporaryDirectory() as folder:
        (Path(folder) / "out").mkdir()
        (Path(folder) / "examples").symlink_to(root / "examples")
        for words in commands:
            ran = subprocess.run([plime, *small(words)], cwd=folder, capture_output=True, text=True)
            if ran.returncode or ran.stderr:
                loud += 1
                print(f"plime {shlex.join(words)}: exit code {ran.returncode}, {ran.stderr.strip()}")
    if len(commands) < LEAST:
        print(f"{len(commands)} commands found, expected at least {LEAST}.")
    return 1 if loud or len(commands) < LEAST else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
