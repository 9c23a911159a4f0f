#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Tests of check_layers.py, each with its own small source tree."""

import os
import re
import tempfile
import unittest

import check_layers


PAGE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "docs", "architecture.md")


class CheckLayersTest(unittest.TestCase):
    def found(self, look, files):
        with tempfile.TemporaryDirectory() as root:
            for path, text in files.items():
                full = os.path.join(root, path)
                os.makedirs(os.path.dirname(full), exist_ok=True)
                with open(full, "w", encoding="utf-8") as file:
                    file.write(text)
            return list(look(root))

    def problems_of(self, files):
        return self.found(check_layers.problems, files)

    def test_accepts_includes_of_a_files_own_folder_and_of_earlier_ones(self):
        self.assertEqual([], self.problems_of({
            "include/kestrel/Export.h": "",
            "include/kestrel/metaobj/MetaInt.h": '#include <string>\n#include "kestrel/Export.h"\n',
            "include/kestrel/callspec/Input.h": "",
            "metaobj/MetaInt.cpp": "",
            "callspec/Input.cpp": '#include "kestrel/callspec/Input.h"\n'
                                  '#include <boost/regex.hpp>\n'
                                  '#include "callspec/TextValue.h"\n'
                                  '#include "kestrel/metaobj/MetaInt.h"\n',
            "callspec/TextValue.h": "",
        }))

    def test_refuses_an_include_of_a_later_folder(self):
        self.assertEqual(
            ['metaobj/MetaInt.cpp: includes "kestrel/callspec/Input.h": '
             'metaobj may not use callspec, which is above it'],
            self.problems_of({
                "include/kestrel/callspec/Input.h": "",
                "callspec/Input.cpp": "",
                "metaobj/MetaInt.cpp": '#include "kestrel/callspec/Input.h"\n',
            }))

    def test_finds_the_folder_of_a_public_header_by_its_source(self):
        self.assertEqual(
            ['autocli/formatters/TableFormatter.cpp: includes "kestrel/autocli/Dispatcher.h": '
             'autocli/formatters may not use autocli/dispatch, which is above it'],
            self.problems_of({
                "include/kestrel/autocli/Dispatcher.h": "",
                "include/kestrel/autocli/Formatter.h": "",
                "autocli/dispatch/Dispatcher.cpp": "",
                "autocli/formatters/Formatter.cpp": "",
                "autocli/formatters/TableFormatter.cpp":
                    '#include "kestrel/autocli/Formatter.h"\n'
                    '#include "kestrel/autocli/Dispatcher.h"\n',
            }))

    def test_puts_a_public_header_without_a_source_into_the_highest_folder_that_it_includes(self):
        self.assertEqual(
            ['autocli/formatters/Formatter.cpp: includes "kestrel/autocli/PluginEntryPoint.h": '
             'autocli/formatters may not use autocli/tree, which is above it'],
            self.problems_of({
                "include/kestrel/Export.h": "",
                "include/kestrel/autocli/Namespace.h": "",
                "include/kestrel/autocli/PluginEntryPoint.h":
                    '#include "kestrel/Export.h"\n#include "kestrel/autocli/Namespace.h"\n',
                "autocli/tree/Namespace.cpp": "",
                "autocli/formatters/Formatter.cpp":
                    '#include "kestrel/autocli/PluginEntryPoint.h"\n',
            }))

    def test_refuses_a_public_header_without_a_source_and_without_includes(self):
        self.assertEqual(
            ["include/kestrel/autocli/Stray.h: is in none of the folders of "
             "scripts/check_layers.py"],
            self.problems_of({"include/kestrel/autocli/Stray.h": ""}))

    def test_finds_a_header_that_is_named_relative_to_the_including_file(self):
        self.assertEqual(
            ['callspec/TextValue.h: includes "../autocli/process/EchoGuard.h": '
             'callspec may not use autocli/process, which is above it'],
            self.problems_of({
                "autocli/process/EchoGuard.h": "",
                "callspec/TextValue.h": '#include "../autocli/process/EchoGuard.h"\n',
            }))

    def test_refuses_a_file_in_no_folder_of_the_list(self):
        self.assertEqual(
            ["autocli/Stray.cpp: is in none of the folders of scripts/check_layers.py"],
            self.problems_of({"autocli/Stray.cpp": "", "metaobj/MetaInt.cpp": ""}))

    def test_keeps_the_areas_of_the_host_plugin_apart(self):
        self.assertEqual(
            ['plugins/host/frame/Parameter.cpp: includes "plugins/host/system/Cpus.h": '
             'plugins/host/frame may not use plugins/host/system, which is above it',
             'plugins/host/network/Netlink.cpp: includes "plugins/host/system/Cpus.h": '
             'plugins/host/network may not use plugins/host/system, which is beside it'],
            self.problems_of({
                "metaobj/MetaInt.cpp": "",
                "plugins/host/HostPlugin.cpp": '#include "plugins/host/system/Cpus.h"\n',
                "plugins/host/frame/Parameter.cpp": '#include "plugins/host/system/Cpus.h"\n',
                "plugins/host/network/Netlink.cpp": '#include "plugins/host/system/Cpus.h"\n',
                "plugins/host/system/Cpus.h": "",
            }))

    def test_refuses_a_cycle_of_headers(self):
        self.assertEqual(
            ["cycle of headers: include/kestrel/metaobj/MetaList.h -> "
             "include/kestrel/metaobj/MetaStruct.h -> include/kestrel/metaobj/MetaList.h"],
            self.problems_of({
                "include/kestrel/metaobj/MetaList.h": '#include "kestrel/metaobj/MetaStruct.h"\n',
                "include/kestrel/metaobj/MetaStruct.h": '#include "kestrel/metaobj/MetaList.h"\n',
                "metaobj/MetaList.cpp": "",
                "metaobj/MetaStruct.cpp": "",
            }))

    def test_accepts_sources_that_include_each_others_headers(self):
        self.assertEqual([], self.problems_of({
            "include/kestrel/metaobj/MetaList.h": "",
            "include/kestrel/metaobj/MetaStruct.h": "",
            "metaobj/MetaList.cpp": '#include "kestrel/metaobj/MetaStruct.h"\n',
            "metaobj/MetaStruct.cpp": '#include "kestrel/metaobj/MetaList.h"\n',
        }))

    def test_reserves_the_hosts_headers_for_their_folders(self):
        self.assertEqual(
            ["autocli/text/Panic.cpp: includes libxml/tree.h, "
             "which is reserved for: autocli/descriptors, autocli/descriptors/libxml2, tools/lint",
             "callspec/Input.cpp: includes termios.h, which is reserved for: autocli/process"],
            self.problems_of({
                "autocli/process/EchoGuard.cpp": "#include <termios.h>\n",
                "autocli/text/Panic.cpp": "#include <libxml/tree.h>\n",
                "autocli/descriptors/XmlUtil.cpp": "#include <libxml/tree.h>\n",
                "callspec/Input.cpp": "#  include <termios.h>\n",
            }))

    def test_refuses_public_headers_that_include_private_or_foreign_headers(self):
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

    def test_keeps_headers_for_users_out_of_the_library(self):
        self.assertEqual(
            ["autocli/tree/NamespaceNode.cpp: includes kestrel/autocli/Util.h, "
             "which is for users",
             "callspec/Input.cpp: includes kestrel/kestrel.h, which is for users"],
            self.problems_of({
                "include/kestrel/kestrel.h": '#include "kestrel/autocli/Util.h"\n',
                "include/kestrel/autocli/Util.h": "",
                "autocli/text/Panic.cpp": '#include "kestrel/autocli/Util.h"\n',
                "autocli/tree/NamespaceNode.cpp": '#include "kestrel/autocli/Util.h"\n',
                "callspec/Input.cpp": '#include "kestrel/kestrel.h"\n',
                "plugins/hello/Hello.cpp": "#include <kestrel/kestrel.h>\n",
            }))

    def test_keeps_private_headers_out_of_the_tool_and_the_plugins(self):
        self.assertEqual(
            ["plugins/hello/Hello.cpp: includes kestrel/platform/Zoluser.h, "
             "which is private to the library",
             "vexil/main.cpp: includes autocli/process/EchoGuard.h, "
             "which is private to the library"],
            self.problems_of({
                "autocli/process/EchoGuard.h": "",
                "platform/include/kestrel/platform/Zoluser.h": "",
                "plugins/hello/Hello.cpp": "#include <kestrel/platform/Zoluser.h>\n"
                                           '#include "Hello.h"\n',
                "plugins/hello/Hello.h": "",
                "vexil/main.cpp": '#include "autocli/process/EchoGuard.h"\n',
            }))

    def test_lets_only_one_file_of_the_tool_include_the_access_to_values(self):
        self.assertEqual(
            ["vexil/formats/Columns.cpp: includes metaobj/ValueAccess.h, "
             "which is private to the library"],
            self.problems_of({
                "metaobj/ValueAccess.h": "",
                "vexil/formats/Values.h": '#include "metaobj/ValueAccess.h"\n',
                "vexil/formats/Columns.cpp": '#include "metaobj/ValueAccess.h"\n',
            }))

    def test_prints_the_folders_in_their_order_with_those_that_each_includes(self):
        self.assertEqual(
            ["metaobj", "callspec -> metaobj", "autocli/tree -> metaobj callspec"],
            self.found(check_layers.graph, {
                "include/kestrel/callspec/Input.h": "",
                "include/kestrel/metaobj/MetaInt.h": "#include <string>\n",
                "autocli/tree/Node.h": "",
                "autocli/tree/Node.cpp": '#include "autocli/tree/Node.h"\n'
                                         '#include "kestrel/callspec/Input.h"\n'
                                         '#include "kestrel/metaobj/MetaInt.h"\n',
                "callspec/Input.cpp": '#include "kestrel/metaobj/MetaInt.h"\n',
                "metaobj/MetaInt.cpp": "",
            }))

    def test_lists_the_folders_in_the_order_of_the_architecture_page(self):
        with open(PAGE, encoding="utf-8") as page:
            section = page.read().split("\n## Layers\n")[1].split("\n## ")[0]
        rows = re.findall(r"^\| `([^`]+)` \|", section, re.MULTILINE)
        folders = [folder if len(beside) == 1 else os.path.dirname(folder) + "/<area>"
                   for beside in check_layers.LAYERS for folder in beside[:1]]
        self.assertEqual(folders, rows, "check_layers.py and docs/architecture.md differ")

    def test_keeps_private_headers_out_of_the_catalog(self):
        self.assertEqual(
            ["tools/catalog/ReadTree.cpp: includes autocli/text/Report.h, "
             "which is private to the library"],
            self.problems_of({
                "autocli/text/Report.h": "",
                "include/kestrel/metaobj/MetaInt.h": "",
                "metaobj/MetaInt.cpp": "",
                "tools/catalog/ReadTree.cpp": '#include "autocli/text/Report.h"\n'
                                              '#include "kestrel/metaobj/MetaInt.h"\n'
                                              "#include <nlohmann/json.hpp>\n",
            }))

    def test_lets_the_plugin_about_the_tool_but_not_the_host_plugin_use_the_catalog(self):
        self.assertEqual(
            ['plugins/host/HostPlugin.cpp: includes "tools/catalog/Catalog.h": '
             'plugins/host may not use tools/catalog, which is above it'],
            self.problems_of({
                "metaobj/MetaInt.cpp": "",
                "plugins/host/HostPlugin.cpp": '#include "tools/catalog/Catalog.h"\n',
                "plugins/vexil/VexilPlugin.cpp": '#include "tools/catalog/Catalog.h"\n',
                "tools/catalog/Catalog.h": "",
            }))

    def test_reports_a_folder_without_sources(self):
        with tempfile.TemporaryDirectory() as root:
            self.assertEqual([f"{root}: no sources of the library found"],
                             list(check_layers.problems(root)))


if __name__ == "__main__":
    unittest.main()
