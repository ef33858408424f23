#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Fails when a function of the contract (src/host) has no line that says thread, context, ownership and failure, or when
the contract or the kit has a type whose size differs between systems."""
import re
import sys
from pathlib import Path

DECLARES = re.compile(r"^(\[\[|static |virtual |explicit |KROD_API |void |bool |[A-Za-z_:<>]+[&*]? |[A-Z]\w*\().*\w\(")
EXEMPT = re.compile(r"= default;|= delete;|\boverride\b|\bfinal\b|~|operator=|operator==|^(return|if|for|while|else|friend|"
                    r"template|using|extern|static_assert|std::swap|touch|held|TextResult result)\b")
SYSTEM_SIZE = re.compile(r"^(?!\s*//)(?:[^/\"]|/(?!/))*?\b(unsigned\s+)?long\b(?!\s+double)")
LINE = re.compile(r"^\s*/// \[(any|load|host)\b.*?\]")


def functions(text):
    """Line number, declaration and whether a contract line stands above it in the same block, for public functions."""
    lines, access, said = text.splitlines(), True, False
    for number, line in enumerate(lines, 1):
        stripped = line.strip()
        if re.match(r"(class|struct)\b", stripped):
            access = True
        if stripped in ("public:", "protected:", "private:"):
            access = stripped != "private:"
        if not stripped:
            said = False
        if LINE.match(line):
            said = True
        if access and DECLARES.match(stripped) and not EXEMPT.search(stripped):
            yield number, stripped, said


def main(root):
    headers = sorted((Path(root) / "src/host").rglob("*.h"))
    missing = [f"{header}:{number}: no contract line: {declaration}" for header in headers
               for number, declaration, said in functions(header.read_text(encoding="utf-8")) if not said]
    kit = sorted((Path(root) / "src/plugin").rglob("*.h"))
    missing += [f"{header}:{number}: {SYSTEM_SIZE.match(line)[0].strip()}: a long has 32 or 64 bits; say std::int64_t"
                for header in headers + kit
                for number, line in enumerate(header.read_text(encoding="utf-8").splitlines(), 1) if SYSTEM_SIZE.match(line)]
    total = sum(1 for header in headers for _ in functions(header.read_text(encoding="utf-8")))
    print("\n".join(missing) or f"{total} functions of {len(headers)} headers say thread, context, ownership and failure.")
    return 1 if missing or not total else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
