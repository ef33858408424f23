#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Fails unless a plug-in defines exactly one symbol and imports exactly the OpenGL calls named: LIBRARY ENTRY [CALL…]."""
import re
import subprocess
import sys


def symbols(library, which):
    """The dynamic symbols that `nm` lists, without versions."""
    listed = subprocess.run(["nm", "-D", which, library], check=True, capture_output=True, text=True).stdout
    return sorted(line.split()[-1].split("@")[0] for line in listed.splitlines())


def main(library, entry, *calls):
    defined = symbols(library, "--defined-only")
    imported = [name for name in symbols(library, "--undefined-only") if re.match(r"e?gl[A-Z]", name)]
    wrong = []
    if defined != [entry]:
        wrong.append(f"{library}: defines {', '.join(defined) or 'nothing'}; expected {entry} alone")
    if imported != sorted(calls):
        wrong.append(f"{library}: imports {', '.join(imported) or 'nothing'} of OpenGL; expected {', '.join(sorted(calls))}")
    print("\n".join(wrong) or f"{library}: defines {entry} and imports {', '.join(imported)} of OpenGL.")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
