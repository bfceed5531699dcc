#!/usr/bin/env python3
"""Lists the cases of a folder of Python tests for ctest.

    list_cases.py FOLDER PREFIX FILE COMMAND...

Writes a file of CMake's with one test PREFIX.CLASS.OUTCOME for each method test_OUTCOME that unittest finds in FOLDER's
*_test.py, which is COMMAND followed by MODULE.CLASS.METHOD. A module that can't be imported has one case, which says why
when it is run, and fails. The environment variables named in KEPT are handed on to the cases.
"""

import importlib
import os
import sys
import unittest
from pathlib import Path

KEPT = ("KESTRAV_PROGRAMS", "KESTRAV_LONG_WAIT", "PYTHONPATH", "PYTHONDONTWRITEBYTECODE")


def cases_of(module):
    """(name, what run_case.py is to be told) of each case that stands in this module itself."""
    try:
        members = vars(importlib.import_module(module)).values()
    except Exception:  # pylint: disable=broad-except; whatever a module does while it is imported
        return [(f"{module}.is_imported", module)]
    loader = unittest.TestLoader()
    return [(f"{kind.__name__}.{method.removeprefix('test_')}", f"{module}.{kind.__name__}.{method}")
            for kind in members
            if isinstance(kind, type) and issubclass(kind, unittest.TestCase) and kind.__module__ == module
            for method in loader.getTestCaseNames(kind)]


def quoted(words):
    return " ".join(f"[==[{word}]==]" for word in words)


def listing(folder, prefix, command):
    properties = ["TIMEOUT", "180", "SKIP_RETURN_CODE", "77", "WORKING_DIRECTORY", str(folder),
                  "ENVIRONMENT", ";".join(f"{name}={os.environ[name]}" for name in KEPT if name in os.environ)]
    lines = []
    for file in sorted(folder.glob("*_test.py")):
        for name, told in cases_of(file.stem):
            lines.append(f"add_test({quoted([f'{prefix}.{name}', *command, told])})")
            lines.append(f"set_tests_properties({quoted([f'{prefix}.{name}'])} PROPERTIES {quoted(properties)})")
    return "".join(line + "\n" for line in lines)


def main():
    folder, prefix, file, *command = sys.argv[1:]
    folder = Path(folder)
    sys.path.insert(0, str(folder))
    text = listing(folder, prefix, command)
    if not text:
        sys.exit(f"{folder} has no cases.")
    Path(file).write_text(text, encoding="utf-8")


if __name__ == "__main__":
    main()
