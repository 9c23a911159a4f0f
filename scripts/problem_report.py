# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0

"""What every check of the source tree does with the problems that it finds."""

import os


def report(problems, arguments):
    """Prints what problems(root) finds, one a line; the exit status is 1 when it found something.

    The root is the first argument, or the project that this file belongs to.
    """
    root = arguments[1] if len(arguments) > 1 else os.path.join(os.path.dirname(__file__), "..")
    found = list(problems(root))
    for problem in found:
        print(problem)
    return 1 if found else 0
