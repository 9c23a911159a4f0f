#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""check_guide.py GUIDE FOLDER: checks that the guide quotes the example plug-in completely.

The blocks marked `cpp file=FOLDER/Hello.cpp`, joined in order, must equal that file byte for byte,
and likewise the blocks marked `cmake file=FOLDER/CMakeLists.txt`. The licence at the top of the
files is ignored.
"""

import difflib
import os
import re
import sys


def quoted(guide, language, path):
    """Returns the blocks of the guide that are marked with this path, joined in order."""
    blocks = re.findall(rf"^```{language} file={re.escape(path)}\n(.*?)^```$", guide,
                        re.MULTILINE | re.DOTALL)
    return "".join(blocks)


def without_licence(text):
    return re.sub(r"^(?:(?://|#) SPDX-.*\n)+\n?", "", text)


def main(guide_path, folder):
    with open(guide_path, encoding="utf-8") as file:
        guide = file.read()
    differs = False
    for language, name in (("cpp", "Hello.cpp"), ("cmake", "CMakeLists.txt")):
        path = os.path.join(folder, name)
        with open(path, encoding="utf-8") as file:
            text = without_licence(file.read())
        blocks = quoted(guide, language, path)
        lines = list(difflib.unified_diff(text.splitlines(), blocks.splitlines(), path, guide_path,
                                          lineterm=""))
        differs = differs or bool(lines) or blocks != text
        print("\n".join(lines or [f"{path}: quoted whole"]))
    return 1 if differs else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
