# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""vexil-fleet with real ssh servers."""

import os
import random
import signal
import subprocess
import time
import unittest
from pathlib import Path

from fleet_case import STAGE, FleetCase

_LABELS = '<field name="Label"><string/></field>'


class EqualHosts(FleetCase):
    """Hosts on which everything is well."""

    def test_a_list_gets_the_host_as_its_first_column(self) -> None:
        result = self.call("volume", "list", hosts="web[1-2]")
        self.assertEqual("Host  Name     Size\n"
                         "----  -------  ----\n"
                         "web1  archive   512  \n"
                         "web1  scratch    64  \n"
                         "web2  archive   512  \n"
                         "web2  scratch    64  \n", result.out)
        self.assertEqual("", result.err)
        self.assertEqual(0, result.status)

    def test_all_hosts_answer(self) -> None:
        result = self.call("--formatter", "ndjson", "volume", "list")
        expected = [{"Host": f"web{number + 1}", "Name": name, "Size": size}
                    for number in range(self.count)
                    for name, size in (("archive", 512), ("scratch", 64))]
        self.assertEqual(expected, result.rows)
        self.assertEqual(0, result.status)
        self.assert_no_processes()

    def test_the_host_is_the_first_column_for_people(self) -> None:
        for formatter in ("pretty", "simple"):
            result = self.call("--formatter", formatter, "volume", "list", hosts="web1")
            self.assertRegex(result.out, r"^\s*(\w+:\n\s+)?Host[: ]", formatter)

    def test_a_structure_is_a_row_of_each_host(self) -> None:
        result = self.call("--formatter", "csv", "volume", "show", hosts="web[1-2]")
        self.assertEqual("Host,Name,Size\nweb1,archive,512\nweb2,archive,512\n",
                         result.out.replace("\r", ""))

    def test_a_string_is_a_row_of_each_host(self) -> None:
        result = self.call("--formatter", "ndjson", "volume", "echo", "--value=x", hosts="web1")
        self.assertEqual([{"Host": "web1", "Value": "78"}], result.rows)

    def test_the_list_is_sorted_and_limited_as_a_whole(self) -> None:
        self.set_volumes(self.fleet["web2"], [{"Name": "b", "Size": 2000}])
        result = self.call("--formatter", "ndjson", "--sort", "Size", "--descending", "--limit=2",
                           "volume", "list", hosts="web[1-2]")
        self.assertEqual([("web2", 2000), ("web1", 512)],
                         [(row["Host"], row["Size"]) for row in result.rows])

    def test_equal_results_are_printed_once(self) -> None:
        result = self.call("--merge", "volume", "list")
        name = self.all_hosts
        self.assertEqual([["Host", "Name", "Size"], [name, "archive", "512"],
                          [name, "scratch", "64"]],
                         [line.split() for line in result.out.splitlines() if line[0] != "-"])

    def test_a_group_of_cluster_shell_is_a_set_of_hosts(self) -> None:
        folder = self.fleet.folder
        (folder / "groups.conf").write_text(
            f"[Main]\ndefault: local\n[local]\nmap: sed -n 's/^$GROUP: //p' {folder}/groups\n",
            encoding="ascii")
        (folder / "groups").write_text("db: web[2-3]\n", encoding="ascii")
        done = subprocess.run(
            [STAGE / "bin/vexil-fleet", "-o", f"-F{self.fleet.ssh_config}", "-g", "db",
             "--formatter=ndjson", "--format-param=fields=Host", "volume", "show"],
            env={**os.environ, "CLUSTERSHELL_CFGDIR": str(folder)}, check=True,
            stdout=subprocess.PIPE, timeout=60)
        self.assertEqual(b'{"Host":"web2"}\n{"Host":"web3"}\n', done.stdout)

    def test_every_byte_of_a_value_arrives(self) -> None:
        every = bytes(range(1, 256))
        result = self.call("--formatter=ndjson", "volume", "echo", b"--value=" + every,
                           hosts="web1")
        self.assertEqual([{"Host": "web1", "Value": every.hex()}], result.rows, result.err)

    def test_random_values_arrive(self) -> None:
        seed = 16
        source = random.Random(seed)
        parts = [b"'", b'"', b"\\", b"$(id)", b"`id`", b"\n", b" ", b"%h", b"%%", b"!", b"#", b"~",
                 b"*", b"\xff", b"\xc3\xa9", b"\x81", b"\x88", b";", b"&", b"-", b"=", b"\r", b"\t"]
        for _ in range(12):
            value = b"".join(source.choices(parts, k=source.randint(1, 60)))
            result = self.call("--formatter=ndjson", "volume", "echo", b"--value=" + value,
                               hosts="web1")
            self.assertEqual([{"Host": "web1", "Value": value.hex()}], result.rows, value)

    def test_a_long_value_arrives(self) -> None:
        value = b"x" * 120_000
        result = self.call("--formatter=ndjson", "volume", "echo", b"--value=" + value,
                           hosts="web1")
        self.assertEqual(value.hex(), result.rows[0]["Value"])

    def test_a_report_has_a_line_for_each_host(self) -> None:
        report = self.fleet.folder / "report"
        self.call("--report", str(report), "volume", "list", hosts="web[1-2],nowhere")
        text = report.read_text(encoding="utf-8")
        self.assertRegex(text, r'\{"host": "nowhere", "status": "unreachable", "seconds": [0-9.]+, '
                               r'"bytes": [0-9]+, "message": "ssh: connect to host 127.0.0.1 port 1: Conn')
        self.assertRegex(text, r'"host": "web2", "status": "ok", "seconds": [0-9.]+, '
                               r'"bytes": [1-9][0-9]+, "message": ""')
        self.assertEqual(3, len(text.splitlines()))

    def test_many_rows_arrive(self) -> None:
        rows = [{"Name": f"volume{number}", "Size": number} for number in range(20_000)]
        self.set_volumes(self.fleet["web1"], rows)
        result = self.call("--formatter=ndjson", "volume", "list", hosts="web1")
        self.assertEqual([{"Host": "web1", **row} for row in rows], result.rows)


class Secrets(FleetCase):
    """No process has a secret on its command line, unless the user typed it there."""

    count = 2

    def test_a_secret_goes_through_standard_input(self) -> None:
        result = self.call("--formatter=ndjson", "volume", "open", "--key", stdin=b"open '$X\n")
        self.assertEqual([b"open '$X".hex()] * 2, [row["Value"] for row in result.rows])
        self.assertFalse("open '$X" in self.processes_seen())

    def test_a_secret_that_the_user_typed_is_on_no_other_command_line(self) -> None:
        for words in (["--key=top-secret"], ["--key", "top-secret"], ["-k", "top-secret"]):
            result = self.call("--formatter=ndjson", "volume", "open", *words)
            self.assertEqual([b"top-secret".hex()] * 2, [row["Value"] for row in result.rows])
            # Only the command line of vexil-fleet, which the user typed, contains the secret.
            lines = [line for line in self.processes_seen().splitlines()
                     if "top-secret" in line and "bin/vexil-fleet" not in line]
            self.assertEqual([], lines)

    def test_a_secret_of_several_lines_is_refused(self) -> None:
        result = self.call("volume", "open", "--key=a\nb")
        self.assertEqual("The value of --key must be one line\n", result.err)
        self.assertEqual(2, result.status)


class Differences(FleetCase):
    """Hosts with other results or other commands."""

    count = 6

    def test_differences_follow_the_common_result(self) -> None:
        self.set_volumes(self.fleet["web4"], [{"Name": "archive", "Size": 1024},
                                              {"Name": "scratch", "Size": 64}])
        self.set_volumes(self.fleet["web5"], [{"Name": "archive", "Size": 512},
                                              {"Name": "scratch", "Size": 64},
                                              {"Name": "spare", "Size": 1}])
        result = self.call("--merge", "volume", "list")
        self.assertEqual("Host          Name     Size\n"
                         "------------  -------  ----\n"
                         "web[1-3,6]  archive   512  \n"
                         "web[1-3,6]  scratch    64  \n\n"
                         "web4: Name archive: Size 512 -> 1024\n"
                         "web5: only here: Name spare, Size 1\n",
                         result.out.replace("Host        Name", "Host          Name")
                         .replace("\n----------  ", "\n------------  "))
        self.assertEqual(0, result.status)

    def test_a_structure_differs_field_by_field(self) -> None:
        self.set_volumes(self.fleet["web4"], [{"Name": "archive", "Size": 1024}])
        result = self.call("--merge", "volume", "show")
        self.assertEqual("\nweb4: Size 512 -> 1024\n", result.out[result.out.index("\n\n") + 1:])

    def test_three_groups_are_three_results_for_programs(self) -> None:
        for name, size in (("web2", 2), ("web3", 2), ("web4", 3)):
            self.set_volumes(self.fleet[name], [{"Name": "archive", "Size": size}])
        result = self.call("--merge", "--formatter=ndjson", "volume", "show")
        self.assertEqual([("web[1,5-6]", 512), ("web[2-3]", 2), ("web4", 3)],
                         [(row["Host"], row["Size"]) for row in result.rows])

    def test_a_command_with_other_fields_is_reported(self) -> None:
        self._add_label("web2", "web5")
        result = self.call("--formatter=ndjson", "volume", "list")
        self.assertEqual(
            "The command is not the same on all hosts. Compared with web[1,3-4,6]:\n"
            "web[2,5]: Fields.Label only here\n", result.err)
        self.assertEqual(8, sum("Label" not in row for row in result.rows))
        self.assertEqual(2, sum(row.get("Label") == "red" for row in result.rows))
        self.assertEqual(0, result.status)

    def test_strict_stops_before_any_result(self) -> None:
        self._add_label("web2", "web5")
        result = self.call("--strict", "volume", "list")
        self.assertEqual("", result.out)
        self.assertIn("web[2,5]: Fields.Label only here\nNo host has run the command.\n",
                      result.err)
        self.assertEqual(2, result.status)

    def test_strict_runs_where_all_hosts_agree(self) -> None:
        result = self.call("--strict", "--formatter=ndjson", "volume", "show")
        self.assertEqual(6, len(result.rows))
        self.assertEqual(0, result.status)

    def test_one_document_has_one_shape(self) -> None:
        self._add_label("web2", "web5")
        result = self.call("--formatter=json-utf8", "--format-param=fields=Host", "volume", "list")
        self.assertIn("web[2,5]: invalid output: its result has other fields than that of most "
                      "hosts\n", result.err)
        self.assertNotIn("web2", result.out)
        self.assertEqual(1, result.status)

    def _add_label(self, *names: str) -> None:
        for name in names:
            self.set_fields(self.fleet[name], _LABELS)
            self.set_volumes(self.fleet[name], [{"Name": "a", "Size": 1, "Label": "red"}])


class Failures(FleetCase):
    """Hosts that fail, each in its own way."""

    count = 4

    def setUp(self) -> None:
        super().setUp()
        self.tool = self.fleet["web2"].folder / "bin" / "vexil"
        self.addCleanup(self.restore_tool)

    def restore_tool(self) -> None:
        self.tool.unlink(missing_ok=True)
        self.tool.symlink_to(self.fleet.tool)

    def replace_tool(self, script: str) -> None:
        """Makes `script` run in place of the command. The real tool still describes the command."""
        self.tool.unlink()
        self.tool.write_text("#!/bin/sh\ncase $* in *'command describe'*) "
                             f"exec {self.fleet.tool} \"$@\" ;; esac\n{script}\n",
                             encoding="utf-8")
        self.tool.chmod(0o755)

    def assert_others_answer(self, failure: str, *words: str) -> None:
        result = self.call("--formatter=ndjson", *words, "volume", "show")
        self.assertEqual(["web1", "web3", "web4"], [row["Host"] for row in result.rows])
        self.assertRegex(result.err, f"^web2: {failure}\n$")
        self.assertEqual(1, result.status)
        self.assert_no_processes()

    def test_a_host_without_the_tool_is_reported(self) -> None:
        self.tool.unlink()
        self.assert_others_answer(r"refused: .*not found.* \(status 127\)")

    def test_a_refusal_has_its_message(self) -> None:
        (self.fleet["web2"].folder / "volume").write_text("ERROR:No disk", encoding="ascii")
        self.assert_others_answer(r"refused: No disk \(status 1\)")

    def test_a_plugin_that_prints_rubbish_is_reported(self) -> None:
        (self.fleet["web2"].folder / "volume").write_text("rubbish", encoding="ascii")
        self.assert_others_answer(r"refused: .+ \(status 1\)")

    def test_a_plugin_that_cannot_be_loaded_does_not_stop_the_command(self) -> None:
        broken = self.fleet["web2"].plugins / "broken.so"
        broken.write_text("rubbish", encoding="ascii")
        self.addCleanup(broken.unlink)
        result = self.call("--formatter=ndjson", "volume", "show")
        self.assertEqual(4, len(result.rows), result.err)

    def test_a_tool_that_prints_rubbish_is_reported(self) -> None:
        self.replace_tool("echo rubbish")
        self.assert_others_answer("invalid output: not JSON")

    def test_a_tool_that_prints_another_shape_is_reported(self) -> None:
        self.replace_tool("""echo '{"Name":"a","Size":"1"}'""")
        self.assert_others_answer("invalid output: Size is not of the kind int")

    def test_a_result_without_its_end_is_reported(self) -> None:
        self.replace_tool("""printf '{"Name":"a","Size":1}'""")
        self.assert_others_answer("invalid output: the last line has no end")

    def test_a_killed_tool_is_reported(self) -> None:
        self.replace_tool("""printf '{"Name":"a"'; kill -9 $$""")
        self.assert_others_answer(r"refused: ended by SIGKILL|refused: .*\(ended by SIGKILL\)")

    def test_a_broken_connection_is_reported(self) -> None:
        # The parent of the shell that reads the script is the connection's process of sshd.
        self.replace_tool("""printf '{"Name":"a"'
            shell=$(ps -o ppid= $(ps -o ppid= $$)); kill -9 $(ps -o ppid= $shell)""")
        self.assert_others_answer("unreachable: the connection broke before .*")

    def test_a_tool_that_hangs_times_out(self) -> None:
        self.replace_tool("sleep 100")
        self.assert_others_answer("timed out: no result after [0-9]+ s", "-u", "6")

    def test_a_command_that_no_host_knows_is_reported(self) -> None:
        result = self.call("volume", "nope")
        self.assertEqual("", result.out)
        self.assertRegex(result.err, r"^web\[1-4\]: refused: No command has the path 'volume nope'")
        self.assertEqual(2, result.status)


class Connections(FleetCase):
    """Hosts that cannot be reached."""

    count = 3

    def test_without_ssh_no_host_is_reached(self) -> None:
        done = subprocess.run(self.command("volume", "show"), stdout=subprocess.PIPE, check=False,
                              stderr=subprocess.PIPE, env={"PATH": "/nonexistent"}, timeout=60)
        self.assertEqual(b"", done.stdout)
        self.assertRegex(done.stderr.decode(), r"^web\[1-3\]: unreachable: .*ssh")
        self.assertEqual(2, done.returncode)

    def test_an_unknown_host_key_is_reported(self) -> None:
        known = self.fleet.folder / "known_hosts"
        text = known.read_text(encoding="ascii")
        self.addCleanup(known.write_text, text, encoding="ascii")
        known.write_text("".join(text.splitlines(keepends=True)[1:]), encoding="ascii")
        result = self.call("--formatter=ndjson", "volume", "show")
        self.assertEqual(["web2", "web3"], [row["Host"] for row in result.rows])
        self.assertIn("web1: unreachable: No ED25519 host key is known for", result.err)
        self.assertEqual(1, result.status)

    def test_a_host_that_is_down_is_reported(self) -> None:
        host = self.fleet["web3"]
        self.addCleanup(host.start)
        host.stop()
        self.wait_until(lambda: not _listens(host.address, self.fleet.port), "sshd has ended")
        result = self.call("--formatter=ndjson", "volume", "show")
        self.assertEqual(["web1", "web2"], [row["Host"] for row in result.rows])
        self.assertRegex(result.err, "^web3: unreachable: ssh: connect to host .*refused")

    def test_a_host_that_accepts_and_hangs_times_out(self) -> None:
        import socket  # pylint: disable=import-outside-toplevel
        with socket.socket() as silent:
            silent.bind(("127.0.0.1", 0))
            silent.listen()
            port = silent.getsockname()[1]
            config = self.fleet.ssh_config
            text = config.read_text(encoding="ascii")
            self.addCleanup(config.write_text, text, encoding="ascii")
            config.write_text(f"Host web9\n HostName 127.0.0.1\n Port {port}\n" + text,
                              encoding="ascii")
            result = self.call("-t", "3", "--formatter=ndjson", "volume", "show",
                               hosts="web1,web9")
        self.assertEqual(["web1"], [row["Host"] for row in result.rows])
        self.assertRegex(result.err, "^web9: timed out: ")
        self.assertEqual(1, result.status)


def _listens(address: str, port: int) -> bool:
    import socket  # pylint: disable=import-outside-toplevel
    with socket.socket() as probe:
        return probe.connect_ex((address, port)) == 0


def _children(pid: int) -> "list[str]":
    return Path(f"/proc/{pid}/task/{pid}/children").read_text(encoding="ascii").split()


class Changes(FleetCase):
    """Commands that change something."""

    count = 4

    def setUp(self) -> None:
        super().setUp()
        for host in self.fleet.hosts.values():
            for name in ("cleared", "broken", "waits", "hurry"):
                (host.folder / name).unlink(missing_ok=True)

    def cleared(self) -> "list[str]":
        """Returns the hosts that ran the command, in the order of their runs."""
        times = {name: (host.folder / "cleared").read_text(encoding="ascii").split()
                 for name, host in self.fleet.hosts.items()
                 if (host.folder / "cleared").exists()}
        self.assertTrue(all(len(each) == 1 for each in times.values()), times)
        return sorted(times, key=lambda name: int(times[name][0]))

    def test_nothing_runs_without_a_confirmation(self) -> None:
        result = self.call("volume", "clear")
        self.assertEqual("'volume clear' changes something, on 4 hosts: web[1-4]\n"
                         "Nobody can be asked: repeat the call with --yes.\n", result.err)
        self.assertEqual(2, result.status)
        self.assertEqual([], self.cleared())

    def test_what_a_host_has_answered_is_printed_if_others_need_a_confirmation(self) -> None:
        self.declare_harmless(self.fleet["web1"])
        report = self.fleet.folder / "report"
        result = self.call("--formatter=ndjson", "--report", str(report), "volume", "clear")
        self.assertEqual([{"Host": "web1", "Value": True}], result.rows)
        self.assertTrue(result.err.endswith(
            "'volume clear' changes something, on 3 hosts: web[2-4]\n"
            "Nobody can be asked: repeat the call with --yes.\n"
            "web[2-4]: not started\n"), result.err)
        self.assertEqual(1, result.status)
        self.assertEqual(["web1"], self.cleared())
        self.assertEqual(4, len(report.read_text(encoding="utf-8").splitlines()))

    def test_a_failure_is_reported_if_others_need_a_confirmation(self) -> None:
        self.declare_harmless(self.fleet["web1"])
        (self.fleet["web1"].folder / "broken").touch()
        result = self.call("volume", "clear")
        self.assertIn("web1: refused: The disk is broken (status 1)\n", result.err)
        self.assertEqual(2, result.status)

    def test_only_harmless_commands_run_if_the_result_cannot_be_printed(self) -> None:
        self.declare_harmless(self.fleet["web1"])
        result = self.call("--yes", "--formatter=ndjson", "--sort=Nosuch", "volume", "clear")
        self.assertIn("web[2-4]: not started\n", result.err)
        self.assertEqual(2, result.status)
        self.assertEqual(["web1"], self.cleared())

    def test_yes_confirms(self) -> None:
        result = self.call("--yes", "--formatter=ndjson", "volume", "clear")
        self.assertEqual(4, len(result.rows), result.err)
        self.assertEqual(4, len(self.cleared()))

    def test_nothing_changes_if_the_result_cannot_be_printed(self) -> None:
        for words in (["--formatter=nosuch"], ["--sort=Nosuch"], ["--limit=x"]):
            result = self.call("--yes", *words, "volume", "clear")
            self.assertRegex(result.err, "^Errors: \n.*(nosuch|Nosuch|'x')", words)
            self.assertEqual(2, result.status)
        self.assertEqual([], self.cleared())

    def test_batches_follow_one_another(self) -> None:
        self.call("--yes", "--batch=2", "volume", "clear")
        order = self.cleared()
        self.assertEqual([{"web1", "web2"}, {"web3", "web4"}], [set(order[:2]), set(order[2:])])

    def test_a_failure_stops_further_batches(self) -> None:
        (self.fleet["web2"].folder / "broken").touch()
        result = self.call("--yes", "--batch=1", "--stop-on-failure=1", "--formatter=ndjson",
                           "volume", "clear")
        self.assertEqual(["web1", "web2"], self.cleared())
        self.assertEqual("web2: refused: The disk is broken (status 1)\n"
                         "web[3-4]: not started\n", result.err)
        self.assertEqual(1, result.status)

    def test_an_interrupt_ends_the_commands_on_all_hosts(self) -> None:
        (self.fleet["web1"].folder / "hurry").touch()
        waiting = [host.folder / "waits" for host in self.fleet.hosts.values()]
        with subprocess.Popen(self.command("--formatter=ndjson", "volume", "wait"),
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE) as process:
            self.wait_until(lambda: all(map(Path.exists, waiting)), "all hosts run the command")
            self.wait_until(lambda: len(_children(process.pid)) == 3, "web1 has ended")
            started = time.monotonic()
            process.send_signal(signal.SIGINT)
            out, err = process.communicate(timeout=30)
        self.assertLess(time.monotonic() - started, 20)
        self.assertEqual(b'{"Host":"web1","Value":true}\n', out)
        self.assertEqual(b"Interrupted. Done: web1\nweb[2-4]: interrupted\n", err)
        self.assertEqual(1, process.returncode)
        self.assert_no_processes()


if __name__ == "__main__":
    unittest.main()
