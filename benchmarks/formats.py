#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Compares the speed of the formatters with that of other programs' writers, in one run.

    formats.py KESTREL_BENCHMARKS [--rows N] [--seconds S]

Prints, for each formatter in FORMATS, the bytes for a structure, the megabytes of output per second
of processor time, and the nanoseconds for a structure. Beside them are the last two figures for the
fastest installed writer of that format: rapidjson, nlohmann-json, libyaml, pugixml or stream
operators (for pretty), which are in the program, or Python's csv.writer. All of them write into a
string. The workload is that of README.md, N structures (default 1000). All run in turn, five times,
each for S seconds (default 0.2), and the fastest run of each is used.
"""

import argparse
import csv
import io
import json
import subprocess
import time

REPETITIONS = 5

# Formatter: its benchmark, and the peers that write the same format.
FORMATS = {
    "json": ("BM_FormatIntoString<AutoCli::JsonFormatter>", ["rapidjson", "nlohmann-json"]),
    "json-utf8": ("BM_FormatIntoString<Exact<Formats::kJsonUtf8Format>>",
                  ["rapidjson", "nlohmann-json"]),
    "ndjson": ("BM_FormatIntoString<Exact<Formats::kNdjsonFormat>>",
               ["rapidjson", "nlohmann-json"]),
    "csv": ("BM_FormatIntoString<Exact<Formats::kCsvFormat>>", ["csv.writer"]),
    "tsv": ("BM_FormatIntoString<Exact<Formats::kTsvFormat>>", ["csv.writer"]),
    "yaml": ("BM_FormatIntoString<Exact<Formats::kYamlFormat>>", ["libyaml"]),
    "value-xml": ("BM_FormatIntoString<Exact<Formats::kValueXmlFormat>>", ["pugixml"]),
    "pretty": ("BM_FormatIntoString<Exact<Formats::kPrettyFormat>>", ["ostream"]),
}
PEERS = {"rapidjson": "BM_RapidJsonIntoString", "nlohmann-json": "BM_NlohmannJsonIntoString",
         "libyaml": "BM_LibyamlIntoString",
         "pugixml": "BM_PugixmlIntoString", "ostream": "BM_StreamIntoString"}


def run_benchmarks(program, rows, seconds):
    """Returns the rates in bytes and structures per second of one run, by name."""
    command = [program, f"--benchmark_filter=IntoString.*/{rows}$", "--benchmark_format=json",
               f"--benchmark_min_time={seconds}"]
    output = subprocess.run(command, check=True, capture_output=True, text=True).stdout
    return {each["name"].rsplit("/", 1)[0]: (each["bytes_per_second"], each["items_per_second"])
            for each in json.loads(output)["benchmarks"]}


def make_rows(count):
    """Returns the rows of the program."""
    return [{"Count": number % 25, "Enabled": number % 3 == 0, "Name": f"disk{number:08}",
             "Path": f"/srv/{'abcdefghijk' if number % 8 else 'a&b<c>d' + chr(34) + 'e%f'}"
                     f"/store/volume{number:08}/dd",
             "Size": number * 7919 % 1000003 * 1024} for number in range(count)]


def write_csv(rows):
    out = io.StringIO()
    writer = csv.writer(out)
    for row in rows:
        writer.writerow(row.values())
    return out.getvalue()


def measure(write, rows, seconds):
    size = runs = 0
    begin = time.process_time()
    while runs == 0 or time.process_time() - begin < seconds:
        size = len(write(rows))
        runs += 1
    taken = time.process_time() - begin
    return runs * size / taken, runs * len(rows) / taken


def best(rates, others):
    """Keeps the faster rate for each name in `rates`."""
    for name, rate in others.items():
        rates[name] = max(rates.get(name, rate), rate)


def measure_all(program, count, seconds):
    rates, rows = {}, make_rows(count)
    for _ in range(REPETITIONS):
        best(rates, run_benchmarks(program, count, seconds))
        best(rates, {"csv.writer": measure(write_csv, rows, seconds)})
    return rates


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("program")
    parser.add_argument("--rows", type=int, default=1000)
    parser.add_argument("--seconds", type=float, default=0.2)
    args = parser.parse_args()
    rates = measure_all(args.program, args.rows, args.seconds)
    rates.update({name: rates[key] for name, key in PEERS.items() if key in rates})
    print("| format | bytes for a structure | MB/s | ns for a structure | best peer | MB/s | ns |")
    print("|---|--:|--:|--:|---|--:|--:|")
    for name, (key, peers) in FORMATS.items():
        speed, items = rates[key]
        found = [(rates[peer], peer) for peer in peers if peer in rates]
        (peer_speed, peer_items), peer = max(found, default=((0, 0), "none installed"))
        other = f"{peer_speed / 1e6:.0f} | {1e9 / peer_items:.0f}" if found else "| "
        print(f"| {name} | {speed / items:.0f} | {speed / 1e6:.0f} | {1e9 / items:.0f} | {peer} | "
              f"{other} |")


if __name__ == "__main__":
    main()
