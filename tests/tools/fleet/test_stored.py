# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Lines that are stored in compressed form."""

import random
import tracemalloc
import unittest

import modules  # noqa: F401  pylint: disable=unused-import

from vexil_fleet.stored import StoredLines

_LINES = [b'{"Name":"volume-%d","Size":%d}\n' % (number, number) for number in range(20_000)]


def stored(*lines: bytes) -> StoredLines:
    result = StoredLines()
    for line in lines:
        result.add(line)
    return result


class Stored(unittest.TestCase):
    """The bytes that come back, and the memory for them."""

    def test_all_bytes_come_back(self) -> None:
        for lines in ([], [b""], [b"a"], [b"\n"], [b"\x00\n", b"\xff"], [b"x" * 200_000 + b"\n"] * 3,
                      _LINES, [*_LINES, b"no end"]):
            result = stored(*lines)
            self.assertEqual(b"".join(lines), result.text)
            self.assertEqual(b"".join(lines).endswith(b"\n") or not any(lines), result.is_ended)

    def test_chunks_have_whole_lines(self) -> None:
        chunks = list(stored(*_LINES).chunks())
        self.assertGreater(len(chunks), 5)
        self.assertEqual([line[:-1] for line in _LINES],
                         [line for chunk in chunks for line in chunk.lines()])
        for chunk in chunks:
            self.assertEqual(chunk.count, len(chunk.lines()))
            self.assertLess(len(chunk.text()), 66_000)

    def test_the_memory_is_in_proportion_to_the_bytes(self) -> None:
        noise = random.Random(16)
        noisy = [noise.randbytes(40) for _ in range(20_000)]
        for lines, most in ((_LINES, 0.5), (noisy, 1.2)):
            tracemalloc.start()
            result = stored(*lines)
            memory, _ = tracemalloc.get_traced_memory()
            tracemalloc.stop()
            size = len(result.text)
            self.assertGreater(size, 600_000)
            self.assertLess(memory, most * size)

    def test_equal_bytes_have_the_same_digest_however_they_were_added(self) -> None:
        whole = StoredLines(b"".join(_LINES))
        self.assertEqual(whole.digest, stored(*_LINES).digest)
        self.assertEqual(whole.digest, whole.digest)
        self.assertNotEqual(whole.digest, stored(*_LINES[1:], _LINES[0]).digest)

    def test_the_last_byte_can_be_dropped(self) -> None:
        for length in range(65_520, 65_550):  # the first chunk becomes full
            result = stored(b"x" * length, b"\n")
            result.drop_last_byte()
            self.assertEqual(b"x" * length, result.text)
        empty = StoredLines()
        empty.drop_last_byte()
        self.assertEqual(b"", empty.text)


if __name__ == "__main__":
    unittest.main()
