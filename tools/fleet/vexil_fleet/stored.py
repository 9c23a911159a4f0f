# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Stores lines of bytes in little memory.

Results of many hosts are kept until all of them have arrived. Most of their bytes are the names of
the fields, so chunks of lines are stored compressed.
"""

import hashlib
import zlib
from dataclasses import dataclass
from typing import Iterator, List

# Lines are collected until they have this many bytes, then they are compressed together.
_MAX_OPEN = 1 << 16
_FASTEST = 1


@dataclass(frozen=True)
class Chunk:
    """Some lines."""
    count: int
    _data: bytes
    _is_packed: bool

    def text(self) -> bytes:
        return zlib.decompress(self._data) if self._is_packed else self._data

    def lines(self) -> List[bytes]:
        """Returns the lines without line feeds."""
        return self.text().split(b"\n")[:-1]


class StoredLines:
    """A string of bytes to which lines are added."""

    def __init__(self, text: bytes = b"") -> None:
        self._chunks: List[Chunk] = []
        self._open = bytearray()
        self._hash = hashlib.blake2b(digest_size=16)
        self.add(text)

    def add(self, text: bytes) -> None:
        """Adds whole lines. Only the last addition may lack its final line feed."""
        if len(self._open) >= _MAX_OPEN:
            self._pack()
        self._open += text

    def drop_last_byte(self) -> None:
        """Removes the last byte of what was added last, if there is one."""
        del self._open[-1:]

    def chunks(self) -> Iterator[Chunk]:
        yield from self._chunks
        if self._open:
            yield Chunk(self._open.count(b"\n"), bytes(self._open), False)

    @property
    def text(self) -> bytes:
        return b"".join(chunk.text() for chunk in self.chunks())

    @property
    def digest(self) -> bytes:
        """Returns a value that is the same for equal bytes."""
        whole = self._hash.copy()
        whole.update(self._open)
        return whole.digest()

    @property
    def is_ended(self) -> bool:
        """Whether the last line, if there is one, has a line feed."""
        return self._open[-1:] in (b"", b"\n")

    def _pack(self) -> None:
        self._hash.update(self._open)
        self._chunks.append(
            Chunk(self._open.count(b"\n"), zlib.compress(self._open, _FASTEST), True))
        self._open = bytearray()
