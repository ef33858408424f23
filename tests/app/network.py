#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Holds docs/network.md and docs/network.schema.json against the program.

The example of the page is run; it and everything that the program saves is valid, and what the schema refuses the
program refuses, too.
"""
import json
import re
import subprocess
import sys
import tempfile
from pathlib import Path

import jsonschema

PLIME, DOCS = sys.argv[1], Path(sys.argv[2])
SCHEMA = json.loads((DOCS / "network.schema.json").read_text())
PAGE = (DOCS / "network.md").read_text()

DISPLAYS = ["Display/CMYK", "Display/Depth@DisplayDepth", "Display/Depth@HDRObjectDisplay", "Display/Blurred"]

# One change each to the example: where, and what stands there instead.
MISTAKES = [
    (["version"], 2),
    (["colour"], "red"),
    (["objects", 0, "name"], "a.b"),
    (["objects", 0, "name"], ""),
    (["objects", 0, "creator"], ""),
    (["objects", 0, "parameters"], {"intensity": [2.0]}),
    (["objects", 0, "inputs"], "soft"),
    (["objects", 1, "unset"], "samples"),
    (["shared", 0], ["soft.width"]),
    (["shared", 0], ["soft.width", "soft.width"]),
    (["shared", 0, 0], "soft"),
    (["views", 0, "picture"], "a.exr"),
    (["views", 0, "size"], [160, 0]),
    (["views", 0, "size"], [160]),
    (["views", 0, "size"], [160.5, 90]),
    (["views", 1, "camera"], {"eye": [0, 0, 1]}),
    (["views", 1, "camera", "fieldOfView"], 180),
    (["views", 1, "background"], [0, 0, 0]),
    (["views", 0, "depth"], "uint12"),
    (["views", 0, "depth"], 8),
    (["views", 0, "srgb"], "yes"),
    (["views", 0, "name"], "a\u202eb"),
    (["views", 0, "name"], "a\u009bb"),
    (["objects", 0, "name"], "a\nb"),
    (["objects", 0, "parameters"], {"intensity": "\u001b[2J"}),
    (["objects", 1, "unset"], ["samples\u0000"]),
    (["views", 1, "tiles"], {"overlap": 3}),
    (["views", 0], {"name": "photo", "picture": "a.exr", "processorTiles": {"size": [8, 8]}}),
    (["views", 1, "tiles"], {"size": [64, 64], "overlap": -1}),
]


def plime(folder, *words, code=0):
    done = subprocess.run([PLIME, *words, "-q"], cwd=folder, capture_output=True, text=True)
    assert done.returncode == code, f"{' '.join(words)} ended with {done.returncode}: {done.stderr}"
    return done.stdout


def isValid(network):
    return jsonschema.Draft202012Validator(SCHEMA).is_valid(network)


def changed(network, place, value):
    copy = json.loads(json.dumps(network))
    inner = copy
    for step in place[:-1]:
        inner = inner[step]
    inner[place[-1]] = value
    return copy


def checkExample(folder):
    text = re.search(r"```json\n(.*?)```", PAGE, re.S)[1]
    command = re.search(r"```sh\nplime (.*?)\n```", PAGE)[1].split()
    (folder / "galaxy.json").write_text(text)
    plime(folder, *command)
    for view in "plain", "glow":
        assert '"width": "15.0"' in plime(folder, "info", f"{view}.exr", "--network") or view == "plain"
    example = json.loads(text)
    assert isValid(example)
    for place, value in MISTAKES:
        wrong = changed(example, place, value)
        assert not isValid(wrong), f"the schema takes {place}: {value}"
        (folder / "wrong.json").write_text(json.dumps(wrong))
        plime(folder, "run", "wrong.json", "-o", "wrong_{view}.exr", code=8)


def checkSaved(folder):
    displays = [word for key in DISPLAYS for word in ("--display", key)]
    plime(folder, "render", "demo:galaxy", "-o", "a.exr", "--size", "96x80", "--tile", "64", "--overlap", "4", *displays,
          "--unset", "samples", "-d", "float", "--srgb", "--with", "Hollywood/PixelBlur", "-p", "width=3", "--save-network", "a.json")
    plime(folder, "process", "a.exr", "-o", "b.exr", "--with", "Hollywood/TileProgram", "--save-network", "b.json")
    for name in "a.json", "b.json":
        jsonschema.validate(json.loads((folder / name).read_text()), SCHEMA, jsonschema.Draft202012Validator)


jsonschema.Draft202012Validator.check_schema(SCHEMA)
with tempfile.TemporaryDirectory() as name:
    checkExample(Path(name))
    checkSaved(Path(name))
