#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs every command of a page of recipes on small inputs and looks at what comes out.

Each command runs in a folder of its own that holds files of the names the page uses. Sizes and tiles above 1000 pixels
are drawn with three digits. Whatever a command names after -o or > must be there then: a picture that shows something,
or a shader text. No command may say anything, neither a warning nor that there are notes.
"""
import math
import os
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

RECIPE = re.compile(r"^## (.*?)\n+```sh\n(.*?)^```$", re.S | re.M)
OUTPUT = re.compile(r"(?:-o|>)\s+'?([^\s';]+)")
LARGE = re.compile(r"(?<=--size )\d{4,}x\d{4,}|(?<=--tile )\d{4,}")
LEAST = {"cookbook.md": 10, "posters.md": 4}  # recipes

BLACK = """## Black

```sh
plime render model.obj -q -o black.png --display Display/HSVAdjust -p value=0
```

## Nothing

```sh
true -o missing.png
```

## Noisy

```sh
plime render model.obj -o noisy.png --samples 3
```
"""


def small(command):
    return LARGE.sub(lambda found: re.sub(r"\d+", lambda size: size[0][:3], found[0]), command)


def modelText():
    """A ring with its normals left to the reader, 24 x 12 patches."""
    around, across, lines = 24, 12, []
    for i in range(around):
        for j in range(across):
            u, v = 2 * math.pi * i / around, 2 * math.pi * j / across
            wide = 2 + 0.7 * math.cos(v)
            lines.append(f"v {wide * math.cos(u):.4f} {wide * math.sin(u):.4f} {0.7 * math.sin(v):.4f}")
    for i in range(around):
        for j in range(across):
            corners = (i, j), (i + 1, j), (i + 1, j + 1), (i, j + 1)
            lines.append("f " + " ".join(str(a % around * across + b % across + 1) for a, b in corners))
    return "\n".join(lines) + "\n"


def starsText():
    """A spiral of 300 points, brighter inside."""
    rows = [f"{math.cos(0.3 * n) * n / 300:.4f},{math.sin(0.3 * n) * n / 300:.4f},0,{300 / (n + 1):.3f}" for n in range(300)]
    return "\n".join(["x,y,z,intensity", *rows]) + "\n"


def prepare(folder, plime, vignette):
    (folder / "model.obj").write_text(modelText(), encoding="utf-8")
    (folder / "stars.csv").write_text(starsText(), encoding="utf-8")
    (folder / "shots").mkdir()
    shutil.copy(vignette, folder / "vignette.frag")
    # Panoramas have no alpha, and nor have HDR files.
    for command in (["render", "demo:galaxy", "--size", "256x128", "-o", "drawn.hdr"],
                    ["process", "drawn.hdr", "-o", "panorama.exr", "--with", "Hollywood/ColorGammaCorrection"]):
        subprocess.run([plime, "-q", *command, "--no-network"], cwd=folder, check=True)
    for copy in "gigapixel.exr", "shots/dawn.exr", "shots/dusk.exr":
        shutil.copy(folder / "panorama.exr", folder / copy)


def fault(path):
    """What is wrong with an output, or nothing."""
    if path.suffix == ".frag":
        return "" if "void main" in path.read_text(encoding="utf-8") else "is no shader text"
    stats = subprocess.run(["oiiotool", "--stats", path], capture_output=True, text=True)
    most = re.search(r"Stats Max: (.*?) \(", stats.stdout)
    if stats.returncode or not most:
        return f"is no picture: {stats.stdout}{stats.stderr}"
    if not any(float(value) > 0 for value in most[1].split()[:3]):
        return "is all black"
    return "" if "Constant: No" in stats.stdout else "is the same everywhere"


def tried(command, template, plime):
    """Runs one command in a copy of the folder of inputs; the faults found."""
    with tempfile.TemporaryDirectory() as scratch:
        folder = Path(scratch) / "here"
        shutil.copytree(template, folder)
        environment = dict(os.environ, PATH=f"{Path(plime).parent}:{os.environ['PATH']}")
        ran = subprocess.run(["bash", "-ec", command], cwd=folder, env=environment, capture_output=True, text=True)
        if ran.returncode:
            return [f"exit code {ran.returncode}: {ran.stderr.strip()}"]
        faults = [f"says {ran.stderr.strip()}"] if ran.stderr else []
        for name in OUTPUT.findall(command):
            made = sorted(folder.glob(re.sub(r"\{\w+\}|\$\w+", "*", name)))
            faults += [f"{path.name} {fault(path)}" for path in made if fault(path)]
            faults += [] if made else [f"{name} is not there"]
        return faults or ([] if OUTPUT.search(command) else ["names no output"])


def faultsOf(page, plime, vignette):
    """The faults of each recipe of a page, by its title."""
    with tempfile.TemporaryDirectory() as scratch:
        prepare(Path(scratch), plime, vignette)
        return {title: tried(small(command), scratch, plime) for title, command in RECIPE.findall(page)}


def main(plime, vignette, page):
    if page == "--self-test":
        found = faultsOf(BLACK, plime, vignette)
        print(found)
        expected = {"Black": ["black.png is all black"], "Nothing": ["missing.png is not there"],
                    "Noisy": ["says plime: warning: --samples: has no effect without a --display."]}
        return 0 if found == expected else 1
    found = faultsOf(Path(page).read_text(encoding="utf-8"), plime, vignette)
    for title, faults in found.items():
        print(f"{title}: {'; '.join(faults) or 'as the page says'}")
    least = LEAST[Path(page).name]
    if len(found) < least:
        print(f"{page} holds {len(found)} recipes, expected at least {least}.")
    return 1 if any(found.values()) or len(found) < least else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
