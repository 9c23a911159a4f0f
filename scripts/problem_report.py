# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0

"""Reports the problems that the checks of the source tree find."""

import os


def report(problems, arguments):
    """Prints each of problems(root) on a line. Returns the exit status: 1 if there was a problem.

    The root is the first argument, or the project that this file belongs to.
    """
    root = arguments[1] if len(arguments) > 1 else os.path.join(os.path.dirname(__file__), "..")
    found = list(problems(root))
    for problem in found:
        print(problem)
    return 1 if found else 0
