#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Makes the pictures of scripts/demo and runs the commands of README.md, and fails where one of them says anything: a
warning, or that there are notes."""
import re
import subprocess
import sys
import tempfile
from pathlib import Path

FUNCTION = re.compile(r"^picture\(\) \{.*?^\}$", re.M | re.S)
PICTURES = re.compile(r"^# ---- the pictures.*?^# -{30,}$", re.M | re.S)
README = re.compile(r"^build/release/bin/(plime .*)$", re.M)
LEAST = 20  # pictures of the demo
HEAD = """set -euo pipefail
say() { :; }
fail() { echo "$*" >&2; exit 1; }
made=()
mkdir out
"""


def run(script, folder, plime):
    """What a script says on standard error, and with which exit code it ends unless that is 0."""
    script = f"plime() {{ {plime} \"$@\"; }}\nplime={plime}\n{script}"
    ran = subprocess.run(["bash", "-c", script], cwd=folder, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
    return ran.stderr + (f"exit code {ran.returncode}\n" if ran.returncode else "")


def main(plime, root):
    root = Path(root).resolve()
    demo = (root / "scripts/demo").read_text(encoding="utf-8")
    readme = README.findall((root / "README.md").read_text(encoding="utf-8"))
    with tempfile.TemporaryDirectory() as folder:
        (Path(folder) / "examples").symlink_to(root / "examples")
        said = run(HEAD + FUNCTION.search(demo)[0] + "\n" + PICTURES.search(demo)[0], folder, plime)
        made = len(list((Path(folder) / "out").iterdir()))
        said += "".join(run(command, folder, plime) for command in readme)
    if made < LEAST or not readme:
        said += f"{made} pictures and {len(readme)} commands of the README, expected at least {LEAST} and 1.\n"
    print(said, end="")
    return 1 if said else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
