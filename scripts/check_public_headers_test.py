#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Tests of check_public_headers.py, each with its own small tree."""

import os
import tempfile
import unittest

import check_public_headers


class CheckPublicHeadersTest(unittest.TestCase):
    def problems_of(self, listed, files):
        with tempfile.TemporaryDirectory() as root:
            files = {"CMakeLists.txt": "\n".join(listed) + ")\n", **files}
            for path, text in files.items():
                full = os.path.join(root, "include", path)
                os.makedirs(os.path.dirname(full), exist_ok=True)
                with open(full, "w", encoding="utf-8") as file:
                    file.write(text)
            return list(check_public_headers.problems(root))

    def test_accepts_headers_that_are_listed_and_included_indirectly(self):
        self.assertEqual([], self.problems_of(
            ["kestrel/kestrel.h", "kestrel/metaobj/MetaInt.h", "kestrel/metaobj/MetaType.h"],
            {"kestrel/kestrel.h": '#include "kestrel/metaobj/MetaInt.h"\n',
             "kestrel/metaobj/MetaInt.h": '#include "kestrel/metaobj/MetaType.h"\n',
             "kestrel/metaobj/MetaType.h": ""}))

    def test_reports_a_header_that_is_not_listed(self):
        self.assertEqual(
            ["include/CMakeLists.txt does not list kestrel/metaobj/MetaInt.h"],
            self.problems_of(["kestrel/kestrel.h"],
                             {"kestrel/kestrel.h": '#include "kestrel/metaobj/MetaInt.h"\n',
                              "kestrel/metaobj/MetaInt.h": ""}))

    def test_reports_a_header_that_is_not_included(self):
        self.assertEqual(
            ["kestrel.h does not include kestrel/metaobj/MetaInt.h"],
            self.problems_of(["kestrel/kestrel.h", "kestrel/metaobj/MetaInt.h"],
                             {"kestrel/kestrel.h": "", "kestrel/metaobj/MetaInt.h": ""}))

    def test_accepts_that_the_version_is_included_by_name_only(self):
        self.assertEqual([], self.problems_of(
            ["kestrel/kestrel.h", "kestrel/Version.h"],
            {"kestrel/kestrel.h": "", "kestrel/Version.h": ""}))

    def test_accepts_that_the_test_kit_is_included_by_name_only(self):
        self.assertEqual([], self.problems_of(
            ["kestrel/kestrel.h", "kestrel/testing/CommandRun.h"],
            {"kestrel/kestrel.h": "", "kestrel/testing/CommandRun.h": ""}))


if __name__ == "__main__":
    unittest.main()
