#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Fails when a source includes what it may not see, makes text of numbers elsewhere than in VValueTrait, or wants a lock
to be there before any code has run."""
import re
import sys
from pathlib import Path

# Folder -> first parts of the project includes that its files may use. The longest matching folder holds.
ALLOWED = {
    "src/host/memory": ["host/Export", "host/memory"],
    "src/host/values": ["host/Export", "host/memory", "host/values"],
    "src/host/core": ["host/Export", "host/memory", "host/values", "host/core"],
    "src/host/rendering": ["host/Export", "host/memory", "host/values", "host/core", "host/rendering"],
    "src/host": ["host"],
    "src/plugin": ["host", "plugin"],
    "src/display": ["host", "plugin", "display", "Announced"],
    "src/tile": ["host", "plugin", "tile", "Announced"],
    "src": [],
    "workbench/report": ["workbench/report"],
    "workbench/platform": ["workbench/report", "workbench/platform"],
    "workbench/gl/dialect": ["workbench/report", "workbench/gl/dialect"],
    "workbench/memory": ["host", "workbench/memory", "workbench/report"],
    "workbench/values": ["host", "workbench/memory", "workbench/values", "workbench/report"],
    "workbench/core": ["host", "workbench/memory", "workbench/values", "workbench/core", "workbench/platform",
                       "workbench/report"],
    "workbench/rendering": ["host", "workbench/memory", "workbench/values", "workbench/core", "workbench/rendering",
                            "workbench/report"],
    "workbench/gl": ["host", "workbench"],
    "workbench/files": ["host/rendering/RGBAHalf", "workbench/files", "workbench/platform/ProcessLimits",
                        "workbench/report"],
    "workbench/files/codec": ["host/rendering/RGBAHalf", "workbench/files", "workbench/platform",
                              "workbench/report"],
    "workbench/files/model": ["workbench/files", "workbench/platform", "workbench/report"],
    "workbench/files/reader": ["host/rendering/RGBAHalf", "workbench/files", "workbench/platform",
                               "workbench/report"],
    "workbench/objects": ["host", "plugin", "workbench/objects", "workbench/files", "workbench/report"],
    "apps/plime/terminal": ["host", "workbench", "apps/plime/terminal"],
    "apps/plime/modules": ["host", "workbench", "apps/plime/terminal", "apps/plime/modules"],
    "apps/plime/commandline": ["host", "workbench", "apps/plime/terminal", "apps/plime/modules",
                               "apps/plime/commandline"],
    "apps/plime/pictures": ["host", "workbench", "apps/plime/terminal", "apps/plime/modules", "apps/plime/commandline",
                            "apps/plime/pictures"],
    "apps": ["host", "workbench", "apps"],
}
FORBIDDEN = {  # folder -> system includes that may not stand there
    "src/host": r"GL/|epoxy/",
    "src/tile": r"GL/|epoxy/",
    "src/plugin": r"GL/|epoxy/",
    "src/display": r"epoxy/",
    "workbench/core": r"GL/|epoxy/",
}
NUMBER_TEXT = re.compile(r"std::to_string\(|printf\([^)]*%[0-9.]*[gfe]|std::ostringstream|std::stringstream")
EARLY_LOCK = re.compile(r"constinit\b.*\bstd::(recursive_|timed_|shared_)*(mutex|condition_variable)\b")


def rule_for(path, table):
    folders = [f for f in table if path.startswith(f + "/")]
    return table[max(folders, key=len)] if folders else None


def problems(path, text):
    """Sentences about one file; `path` is relative to the project."""
    allowed, forbidden = rule_for(path, ALLOWED), rule_for(path, FORBIDDEN)
    for number, line in enumerate(text.splitlines(), 1):
        quoted = re.match(r'\s*#\s*include\s+"([^"]+)"', line)
        if quoted and allowed is not None and "/" in quoted[1]:
            include = quoted[1]
            if not any(include == a + ".h" or include.startswith(a + "/") or include.startswith(a + ".") for a in allowed):
                yield f"{path}:{number}: includes {include}; this folder may use {', '.join(allowed) or 'nothing'}"
        angled = re.match(r"\s*#\s*include\s+<([^>]+)>", line)
        if angled and forbidden and re.match(forbidden, angled[1]):
            yield f"{path}:{number}: includes <{angled[1]}>, which only the display frame and krod_gl may"
        if path.startswith("src/") and NUMBER_TEXT.search(line):
            yield f"{path}:{number}: makes text of a number; VValueTrait<T>::Text is the one place for that"
        if EARLY_LOCK.search(line):
            yield f"{path}:{number}: wants a lock to be constant-initialised, which not every system has; make it on first use"


def self_test():
    cases = {
        ("src/display/X.cpp", '#include "workbench/gl/Quad.h"'): 1,
        ("src/tile/X.cpp", '#include "display/DisplayFrame.h"'): 1,
        ("src/host/memory/X.h", '#include "host/core/VObject.h"'): 1,
        ("src/host/gl/X.h", "#include <GL/gl.h>"): 1,
        ("workbench/files/X.h", '#include "workbench/gl/Quad.h"'): 1,
        ("src/display/X.cpp", "auto s = std::to_string(1.5);"): 1,
        ("src/display/X.cpp", '#include "host/gl/GLProgram.h"'): 0,
        ("workbench/memory/X.cpp", "constinit std::mutex X::mutex;"): 1,
        ("workbench/memory/X.cpp", "std::mutex mutex;"): 0,
        ("apps/plime/X.cpp", '#include "src/display/DisplayFrame.h"'): 1,
        ("apps/plime/terminal/X.cpp", '#include "apps/plime/modules/Catalogue.h"'): 1,
        ("apps/plime/pictures/X.cpp", '#include "apps/plime/terminal/Text.h"'): 0,
    }
    wrong = [case for case, count in cases.items() if len(list(problems(*case))) != count]
    for case in wrong:
        print(f"{case[0]}: {case[1]}: not judged as expected")
    return 1 if wrong else 0


def main(arguments):
    if arguments == ["--self-test"]:
        return self_test()
    root = Path(arguments[0])
    files = [f for top in ("src", "workbench", "apps") for f in sorted((root / top).rglob("*")) if f.suffix in (".h", ".cpp")]
    found = [p for f in files for p in problems(f.relative_to(root).as_posix(), f.read_text(encoding="utf-8"))]
    print("\n".join(found) or f"{len(files)} files follow the arrows.")
    return 1 if found or not files else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
