#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Prints how the library compares with its peers, one ratio for each operation.

    ratios.py [--repetitions N] [--markdown] PROGRAM

PROGRAM is kestrel_benchmarks. All rows come from one run with interleaved repetitions (default 5). A
ratio is the median of our processor times divided by the median of theirs, so less than 1 means that
we are faster. A peer that is not installed is left out and named at the end.
"""

import argparse
import json
import re
import statistics
import subprocess
import sys
import tempfile

# Operation, our benchmark, the peer's benchmark, the peer in words.
ROWS = [
    ("start, no plug-ins", "BM_StartRootListing", "BM_StartEmptyMainWithLibraries",
     "empty main with libstdc++ and libxml2"),
    ("start, shipped plug-ins", "BM_StartShippedPlugins", "BM_StartFindmnt", "findmnt"),
    ("start, no plug-ins", "BM_StartRootListing", "BM_StartArgparse",
     "python3 with argparse, 100 commands"),
    ("one mount", "BM_StartOneMount", "BM_StartFindmntRoot", "findmnt /"),
    ("one link", "BM_StartOneLink", "BM_StartIpLink", "ip link show lo"),
    ("10 descriptors", "BM_DescriptorsTake<RegisteredPlugins>/10", "BM_DescriptorsTake<Trees>/10",
     "xmlReadFile"),
    ("100 descriptors", "BM_DescriptorsTake<RegisteredPlugins>/100",
     "BM_DescriptorsTake<Trees>/100", "xmlReadFile"),
    ("1,000 descriptors", "BM_DescriptorsTake<RegisteredPlugins>/1000",
     "BM_DescriptorsTake<Trees>/1000", "xmlReadFile"),
    ("100 descriptors", "BM_DescriptorsTake<RegisteredPlugins>/100", "BM_Cli11MakeDescriptorCommands",
     "CLI11, 1,000 subcommands"),
    ("the catalog of 1,000 commands", "BM_CatalogReadTree/1000", "BM_CatalogLoadTree/1000",
     "loading their 100 descriptors"),
    ("a call of 20 parameters", "BM_CommandCall/10000", "BM_CommandCallCli11/10000", "CLI11"),
    ("look up five fields", "BM_RecordsLookUp<MetaRecords>/100000",
     "BM_RecordsLookUp<RapidPoolRecords>/100000", "rapidjson"),
    ("build 100,000 structures", "BM_RecordsBuild<MetaRecords>/100000",
     "BM_RecordsBuild<RapidPoolRecords>/100000", "rapidjson"),
    ("destroy 100,000 structures", "BM_RecordsDestroy<MetaRecords>/100000",
     "BM_RecordsDestroy<RapidPoolRecords>/100000", "rapidjson"),
    ("read a value document", "BM_ValueDocumentRead<OurValue>/10000",
     "BM_ValueDocumentRead<PlainRecordsBySax2>/10000", "SAX2 into plain values"),
    ("read a value document", "BM_ValueDocumentRead<OurValue>/10000",
     "BM_ValueDocumentRead<TreeOfXmlReadMemory>/10000", "xmlReadMemory"),
    ("json", "BM_FormatIntoString<AutoCli::JsonFormatter>/100000", "BM_RapidJsonIntoString/100000",
     "rapidjson"),
    ("python", "BM_FormatIntoString<AutoCli::PythonFormatter>/100000",
     "BM_RapidJsonIntoString/100000", "rapidjson"),
    ("xml", "BM_FormatIntoString<AutoCli::XmlFormatter>/100000", "BM_PugixmlIntoString/100000",
     "pugixml"),
    ("table", "BM_FormatIntoString<AutoCli::TableFormatter>/100000", "BM_StreamIntoString/100000",
     "ostream << setw"),
    ("simple", "BM_FormatIntoString<AutoCli::SimpleFormatter>/100000",
     "BM_StreamLinesIntoString/100000", "ostream <<"),
]


def base_name(name):
    """Returns the name of a benchmark without the suffixes that say how time is measured."""
    return re.sub(r"(/(iterations:\d+|real_time|manual_time|repeats:\d+))+$", "", name)


def times_of(results):
    """Returns the times of each benchmark, one per repetition."""
    times = {}
    for result in results["benchmarks"]:
        if result.get("run_type") == "iteration" and "error_message" not in result:
            key = "real_time" if result["name"].endswith("manual_time") else "cpu_time"
            times.setdefault(base_name(result["run_name"]), []).append(result[key])
    return times


def ratios(times):
    """Returns the rows with both sides measured, as (operation, peer, ratio), and the other
    operations."""
    measured, missing = [], []
    for operation, ours, theirs, peer in ROWS:
        if ours in times and theirs in times:
            ratio = statistics.median(times[ours]) / statistics.median(times[theirs])
            measured.append((operation, peer, ratio))
        else:
            missing.append(f"{operation} ({peer})")
    return measured, missing


def run(program, repetitions):
    names = sorted({name for row in ROWS for name in row[1:3]})
    pattern = "^(" + "|".join(re.escape(name) for name in names) + r")(/manual_time)?$"
    with tempfile.NamedTemporaryFile(suffix=".json") as file:
        subprocess.run([program, f"--benchmark_filter={pattern}", "--benchmark_min_time=0.05",
                        f"--benchmark_repetitions={repetitions}",
                        "--benchmark_enable_random_interleaving=true",
                        f"--benchmark_out={file.name}", "--benchmark_out_format=json"],
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=True)
        return json.load(file)


def print_table(rows, markdown):
    if markdown:
        print("| operation | peer | ratio |\n|---|---|--:|")
    for operation, peer, ratio in rows:
        print(f"| {operation} | {peer} | {ratio:.2f} |" if markdown
              else f"{operation:30} {peer:37} {ratio:6.2f}")


def main(words):
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--repetitions", type=int, default=5, metavar="N")
    parser.add_argument("--markdown", action="store_true", help="print a table for a document")
    parser.add_argument("program", metavar="PROGRAM")
    arguments = parser.parse_args(words)
    rows, missing = ratios(times_of(run(arguments.program, arguments.repetitions)))
    print_table(rows, arguments.markdown)
    if missing:
        print("Not measured: " + ", ".join(missing))


if __name__ == "__main__":
    main(sys.argv[1:])
