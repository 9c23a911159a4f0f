# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Reads the declarations of the commands in a built tool with `vexil command describe`."""

import json
import subprocess

TIMEOUT_SECONDS = 20


class Tool:
    """A built tool and the folder with its plug-ins."""

    def __init__(self, program, plugin_dir):
        self.prefix = [program, "--plugin-dir", plugin_dir]

    def result(self, *words):
        """Runs a command and returns its result. Raises CalledProcessError if it fails."""
        done = subprocess.run(self.prefix + ["--formatter", "json", *words], check=True,
                              capture_output=True, text=True, timeout=TIMEOUT_SECONDS)
        return json.loads(done.stdout)

    def paths(self):
        """Returns the dotted paths of all commands, sorted."""
        return sorted(f"{row['Namespace']}.{row['Command']}"
                      for row in self.result("vexil", "command", "list"))

    def commands(self):
        """Yields the dotted path and the description of each command."""
        for path in self.paths():
            yield path, self.result("vexil", "command", "describe", "--path", path)


def changes_something(command):
    """Whether the command declares that it changes the machine."""
    return {"Name": "changes", "Value": "true"} in command["Meta Data"]
