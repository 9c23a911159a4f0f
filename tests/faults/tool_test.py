# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Checks when the campaigns type an answer: a slow program must have printed its prompt, and a
program that could not print its prompt must wait for the answer."""

import sys
import unittest

import tool

# Turns echo off, runs for a while, prints the prompt given as argument, and reads a line. Prints how
# many bytes were typed before the prompt, and the line.
PROGRAM = """
import fcntl, struct, sys, termios, time
modes = termios.tcgetattr(0)
modes[3] &= ~termios.ECHO
termios.tcsetattr(0, termios.TCSANOW, modes)
end = time.monotonic() + 0.5
while time.monotonic() < end:
    pass
early = struct.unpack("i", fcntl.ioctl(0, termios.FIONREAD, bytes(4)))[0]
print(sys.argv[1], end="", flush=True)
line = sys.stdin.readline().rstrip()
modes[3] |= termios.ECHO
termios.tcsetattr(0, termios.TCSANOW, modes)
print(f"{early} bytes before, then {line}")
"""


def ask(prompt):
    """Returns what is on the terminal after the program has ended."""
    line = tool.CommandLine("ask", ["-c", PROGRAM, prompt], answers=[b"yes\n"])
    result = tool.run([sys.executable, *line.arguments], tool.environment(), line)
    assert result.status == 0, result
    return result.out


class AnswerTest(unittest.TestCase):
    def setUp(self):
        self.addCleanup(setattr, tool, "SECONDS_WITHOUT_PROMPT", tool.SECONDS_WITHOUT_PROMPT)
        tool.SECONDS_WITHOUT_PROMPT = 0.05

    def test_is_typed_after_the_prompt_of_a_slow_program(self):
        self.assertEqual(ask("Password: "), b"Password: 0 bytes before, then yes\r\n")

    def test_is_typed_without_a_prompt_if_the_program_waits(self):
        self.assertEqual(ask(""), b"0 bytes before, then yes\r\n")


if __name__ == "__main__":
    unittest.main()
