#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Keeps what benchmarks printed in docs/performance.md: document.py PLIME RESULTS NAME...

RESULTS/NAME.md replaces what stands between "<!-- bench:NAME -->" and the next "<!-- end -->". Lines of it that begin with
"@" are figures with a limit; they go to the table of limits, in place of those that the same benchmark left there. The
machine is described anew.
"""
import json
import os
import platform
import re
import subprocess
import sys
from pathlib import Path

PAGE = Path(__file__).resolve().parent.parent / "docs/performance.md"
HEAD = ["| what | wanted | measured | kept | benchmark |", "|---|---|---|---|---|"]
PACKAGES = {"Mesa": "libgl1-mesa-dri", "OpenEXR": "libopenexr-3-1-30", "OpenImageIO (oiiotool)": "openimageio-tools",
            "vips": "libvips-tools", "ImageMagick (Q16 HDRI)": "imagemagick-?.q16hdri", "G'MIC": "gmic",
            "VTK": "python3-vtk9", "Google Benchmark": "libbenchmark-dev"}


def answer(*words):
    """The first line that a program says, or nothing."""
    try:
        said = subprocess.run(words, capture_output=True, text=True, check=True).stdout.splitlines()
        return said[0] if said else ""
    except (OSError, subprocess.CalledProcessError):
        return ""


def entry(path, name):
    """The value of the first line "name : value" or "name=value" of a file."""
    found = re.search(rf"^{name}\s*[:=]\s*(.*)$", Path(path).read_text(), re.M)
    return found[1].strip('"') if found else "unknown"


def driver(plime):
    """The software driver, as plime doctor names it."""
    said = subprocess.run([plime, "--gpu", "software", "doctor", "--json"], capture_output=True, text=True, check=False)
    found = json.loads(said.stdout)["opengl"]
    return f"{found['renderer']}, {found['version']}, {found['samples']} samples"


def machine(plime):
    memory = round(int(entry("/proc/meminfo", "MemTotal").split()[0]) / 2**20)
    rows = [("processor", f"{entry('/proc/cpuinfo', 'model name')}, {os.cpu_count()} cores, {memory} GB"),
            ("system", f"{entry('/etc/os-release', 'PRETTY_NAME')}, Linux {platform.release()}"),
            ("compiler", answer("c++", "--version")), ("OpenGL", driver(plime))]
    for label, package in PACKAGES.items():
        version = answer("dpkg-query", "-W", "-f", "${Version}", package)
        rows.append((label, version or "not installed"))
    return "\n".join(["| part | version |", "|---|---|"] + [f"| {part} | {what} |" for part, what in rows])


def replaced(page, name, text):
    """The page with what stands under a mark replaced; a page without the mark is an error."""
    mark = re.compile(rf"(<!-- bench:{name} -->\n).*?(<!-- end -->)", re.S)
    if not mark.search(page):
        sys.exit(f"document.py: {PAGE} has no mark \"<!-- bench:{name} -->\"; add it where the table belongs.")
    return mark.sub(lambda match: f"{match[1]}{text.strip()}\n{match[2]}", page)


def limits(page, name, lines):
    """The table of limits with the lines of one benchmark replaced, in the order in which the page shows benchmarks."""
    table = re.search(r"<!-- bench:limits -->\n(.*?)<!-- end -->", page, re.S)[1]
    rows = [row for row in table.splitlines()[2:] if not row.endswith(f"| `{name}` |")]
    rows += [f"{line[2:].strip()} `{name}` |" for line in lines]
    order = re.findall(r"<!-- bench:(\w+) -->", page)
    rows.sort(key=lambda row: order.index(re.search(r"`(\w+)` \|$", row)[1]))
    return replaced(page, "limits", "\n".join(HEAD + rows))


def main():
    plime, results, *names = sys.argv[1:]
    page = PAGE.read_text()
    page = replaced(page, "machine", machine(plime))
    for name in names:
        lines = Path(results, f"{name}.md").read_text().splitlines()
        page = replaced(page, name, "\n".join(line for line in lines if not line.startswith("@")))
        page = limits(page, name, [line for line in lines if line.startswith("@")])
    PAGE.write_text(page)


if __name__ == "__main__":
    main()
