#!/usr/bin/env python3
"""Tests of check_layers.py over small source trees made for each."""

import os
import tempfile
import unittest

import check_layers


class CheckLayersTest(unittest.TestCase):
    def problems_of(self, files):
        with tempfile.TemporaryDirectory() as root:
            for path, text in files.items():
                full = os.path.join(root, path)
                os.makedirs(os.path.dirname(full), exist_ok=True)
                with open(full, "w", encoding="utf-8") as file:
                    file.write(text)
            return list(check_layers.problems(root))

    def test_accepts_its_own_layer_and_those_above(self):
        self.assertEqual([], self.problems_of({
            "include/kestrel/Export.h": "",
            "include/kestrel/metaobj/MetaInt.h": '#include <string>\n#include "kestrel/Export.h"\n',
            "include/kestrel/callspec/Input.h": "",
            "callspec/Input.cpp": '#include "kestrel/callspec/Input.h"\n'
                                  '#include <boost/regex.hpp>\n'
                                  '#include "callspec/TextValue.h"\n'
                                  '#include "kestrel/metaobj/MetaInt.h"\n',
            "callspec/TextValue.h": "",
        }))

    def test_refuses_an_include_of_a_layer_below(self):
        self.assertEqual(
            ['metaobj/MetaInt.cpp: includes "kestrel/callspec/Input.h": '
             'layer values may not use contract'],
            self.problems_of({
                "include/kestrel/callspec/Input.h": "",
                "metaobj/MetaInt.cpp": '#include "kestrel/callspec/Input.h"\n',
            }))

    def test_tells_the_classes_of_autocli_apart(self):
        self.assertEqual(
            ['autocli/TableFormatter.cpp: includes "kestrel/autocli/Dispatcher.h": '
             'layer format may not use dispatch'],
            self.problems_of({
                "include/kestrel/autocli/Dispatcher.h": "",
                "include/kestrel/autocli/Formatter.h": "",
                "autocli/TableFormatter.cpp": '#include "kestrel/autocli/Formatter.h"\n'
                                              '#include "kestrel/autocli/Dispatcher.h"\n',
            }))

    def test_sees_a_private_header_named_by_its_own_folder(self):
        self.assertEqual(
            ['callspec/TextValue.h: includes "../autocli/EchoGuard.h": '
             'layer contract may not use call'],
            self.problems_of({
                "autocli/EchoGuard.h": "",
                "callspec/TextValue.h": '#include "../autocli/EchoGuard.h"\n',
            }))

    def test_refuses_a_file_that_no_layer_holds(self):
        self.assertEqual(
            ["autocli/Stray.cpp: no layer of the table in scripts/check_layers.py holds this file"],
            self.problems_of({"autocli/Stray.cpp": ""}))

    def test_refuses_a_cycle_of_headers(self):
        self.assertEqual(
            ["cycle of headers: include/kestrel/metaobj/MetaList.h -> "
             "include/kestrel/metaobj/MetaStruct.h -> include/kestrel/metaobj/MetaList.h"],
            self.problems_of({
                "include/kestrel/metaobj/MetaList.h": '#include "kestrel/metaobj/MetaStruct.h"\n',
                "include/kestrel/metaobj/MetaStruct.h": '#include "kestrel/metaobj/MetaList.h"\n',
            }))

    def test_accepts_sources_that_include_each_others_headers(self):
        self.assertEqual([], self.problems_of({
            "include/kestrel/metaobj/MetaList.h": "",
            "include/kestrel/metaobj/MetaStruct.h": "",
            "metaobj/MetaList.cpp": '#include "kestrel/metaobj/MetaStruct.h"\n',
            "metaobj/MetaStruct.cpp": '#include "kestrel/metaobj/MetaList.h"\n',
        }))

    def test_reserves_the_hosts_headers_for_their_layers(self):
        self.assertEqual(
            ["autocli/Util.cpp: includes libxml/tree.h, which is reserved for: extend",
             "callspec/Input.cpp: includes termios.h, which is reserved for: call"],
            self.problems_of({
                "autocli/EchoGuard.cpp": "#include <termios.h>\n",
                "autocli/Util.cpp": "#include <libxml/tree.h>\n",
                "autocli/XmlUtil.cpp": "#include <libxml/tree.h>\n",
                "callspec/Input.cpp": "#  include <termios.h>\n",
            }))

    def test_keeps_public_headers_to_the_standard_library(self):
        self.assertEqual(
            ["include/kestrel/callspec/Input.h: a public header includes boost/regex.hpp, "
             "which is not of the standard library",
             "include/kestrel/callspec/Input.h: a public header includes the private "
             "callspec/TextValue.h"],
            self.problems_of({
                "callspec/TextValue.h": "",
                "include/kestrel/callspec/Input.h": "#include <boost/regex.hpp>\n"
                                                    '#include "callspec/TextValue.h"\n'
                                                    "#include <vector>\n",
            }))

    def test_keeps_the_umbrella_header_out_of_the_library(self):
        self.assertEqual(
            ["callspec/Input.cpp: includes the umbrella header, which is for users"],
            self.problems_of({
                "include/kestrel/kestrel.h": "",
                "callspec/Input.cpp": '#include "kestrel/kestrel.h"\n',
                "plugins/hello/Hello.cpp": "#include <kestrel/kestrel.h>\n",
            }))

    def test_keeps_private_headers_out_of_the_tool_and_the_plugins(self):
        self.assertEqual(
            ["plugins/hello/Hello.cpp: includes kestrel/platform/Zoluser.h, "
             "which is private to the library",
             "vexil/main.cpp: includes autocli/EchoGuard.h, which is private to the library"],
            self.problems_of({
                "autocli/EchoGuard.h": "",
                "plugins/hello/Hello.cpp": "#include <kestrel/platform/Zoluser.h>\n"
                                           '#include "Hello.h"\n',
                "plugins/hello/Hello.h": "",
                "vexil/main.cpp": '#include "autocli/EchoGuard.h"\n',
            }))

    def test_reports_a_folder_without_sources(self):
        with tempfile.TemporaryDirectory() as root:
            self.assertEqual([f"{root}: no sources of the library found"],
                             list(check_layers.problems(root)))


if __name__ == "__main__":
    unittest.main()
