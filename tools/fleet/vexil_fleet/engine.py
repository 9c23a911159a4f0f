# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Runs one script on many hosts, through ClusterShell and ssh."""

import logging
import os
import signal
import time
from dataclasses import dataclass
from typing import Any, Callable, Dict, Iterable, List, Optional

from ClusterShell.Event import EventHandler
from ClusterShell.NodeSet import NodeSet
from ClusterShell.Propagation import RouteResolvingError
from ClusterShell.Task import Task, task_self
from ClusterShell.Worker.Tree import TreeWorker
from ClusterShell.Worker.Worker import Worker

from .remote import REMOTE_COMMAND, Job, Reply


@dataclass(frozen=True)
class Settings:
    """How hosts are reached. None means the value in ClusterShell's configuration."""
    fanout: Optional[int] = None
    connect_timeout: Optional[float] = None
    command_timeout: Optional[float] = None
    user: Optional[str] = None
    ssh_path: Optional[str] = None
    ssh_options: str = ""
    topology: Optional[str] = None


@dataclass
class Visit:
    """The visit to one host: its reply, the status of ssh, and how long it took."""
    host: str
    reply: Reply
    started: Optional[float] = None
    seconds: float = 0.0
    ssh_status: Optional[int] = None
    is_timed_out: bool = False
    is_interrupted: bool = False

    @property
    def is_over(self) -> bool:
        return self.ssh_status is not None or self.is_timed_out or self.is_interrupted

    @property
    def has_succeeded(self) -> bool:
        return (self.ssh_status == 0 and self.reply.described == 0
                and self.reply.ended in (None, 0))

    def stop(self) -> None:
        if self.started is not None:
            self.seconds = time.monotonic() - self.started


Visits = Dict[str, Visit]
# The status of ssh if it could not connect, or if the connection broke.
SSH_FAILED = 255
_LOST = b"the connection to its gateway broke"


class _Collector(EventHandler):  # type: ignore[misc]
    """Collects the output of the hosts, and the messages about gateways."""

    def __init__(self, visits: Visits, on_event: Callable[[], None],
                 on_end: Callable[[Visit], None]) -> None:
        super().__init__()
        self._visits = visits
        self._on_event = on_event
        self._on_end = on_end
        self._gateway_errors: List[bytes] = []

    def ev_pickup(self, worker: Worker, node: str) -> None:
        self._visits[node].started = time.monotonic()

    def ev_read(self, worker: Worker, node: str, sname: str, msg: bytes) -> None:
        visit = self._visits.get(node)
        if visit is None:
            self._gateway_errors.append(str(node).encode() + b": " + msg)
        elif sname == worker.SNAME_STDERR:
            visit.reply.add_error(msg)
        else:
            visit.reply.add_line(msg)

    def ev_hup(self, worker: Worker, node: str, rc: int) -> None:
        visit = self._visits[node]
        visit.ssh_status = rc
        visit.stop()
        self._on_end(visit)
        self._on_event()

    def ev_timer(self, timer: object) -> None:
        self._on_event()

    def close(self, timed_out: Iterable[str]) -> None:
        """Ends the visits. Hosts that are not finished were lost with their gateway."""
        for host in timed_out:
            self._visits[host].is_timed_out = True
            self._visits[host].stop()
        for visit in self._visits.values():
            if visit.started is not None and not visit.is_over:
                visit.ssh_status = SSH_FAILED
                visit.reply.errors += self._gateway_errors or [_LOST]
                visit.stop()


class Interrupts:
    """A context in which no interrupt is lost. Python discards the exception KeyboardInterrupt in
    some of Python's own callbacks, such as those around a fork; `check` then raises it again."""

    def __init__(self) -> None:
        self._is_pending = False
        self._replaced: List[int] = []

    def __enter__(self) -> "Interrupts":
        for number in (signal.SIGINT, signal.SIGTERM):
            if signal.getsignal(number) is signal.default_int_handler:
                signal.signal(number, self._interrupt)
                self._replaced.append(number)
        return self

    def __exit__(self, *_: object) -> None:
        for number in self._replaced:
            signal.signal(number, signal.default_int_handler)

    def check(self) -> None:
        if self._is_pending:
            raise KeyboardInterrupt

    def _interrupt(self, _number: int, _frame: Any) -> None:
        self._is_pending = True
        raise KeyboardInterrupt


class _ByLines:  # pylint: disable=too-few-public-methods
    """Passes the lines of hosts on to the handler. The method of the base class looks up the
    signature of the handler for each line, which takes ten times as long as everything else."""

    eh: EventHandler

    def _on_node_msgline(self, node: str, msg: bytes, sname: str) -> None:
        self.eh.ev_read(self, node, sname, msg)


class _Tree(_ByLines, TreeWorker):  # type: ignore[misc]  # pylint: disable=abstract-method
    """Hosts that are reached through gateways. If a gateway cannot be reached, the base class
    assigns its hosts to another one, but does not repeat what was written to them before."""

    script = b""

    def _on_remote_node_msgline(self, node: str, msg: bytes, sname: str, gateway: str) -> None:
        self._on_node_msgline(node, msg, sname)

    def _relaunch(self, previous_gateway: str) -> None:
        hosts = self.gwtargets[previous_gateway].copy()
        workers = len(self.workers)
        try:
            super()._relaunch(previous_gateway)
        except RouteResolvingError:
            return  # there is no other gateway
        for worker in self.workers[workers:]:
            worker.write(self.script)
        for gateway, targets in self.gwtargets.items():
            if targets & hosts:
                self.task._pchannel(gateway, self).write(  # pylint: disable=protected-access
                    nodes=targets & hosts, buf=self.script, worker=self)


class Engine:
    """Visits hosts, as many at a time as the fan-out allows, and none after an interrupt."""

    # Seconds between two calls of `on_event` when no host has finished.
    _TICK = 0.5

    def __init__(self, settings: Settings) -> None:
        logging.getLogger("ClusterShell").addHandler(logging.NullHandler())
        self._settings = settings
        self.is_interrupted = False
        task = self._new_task()
        self.fanout = int(task.info("fanout"))
        self._timeout = settings.command_timeout
        if self._timeout is None:
            self._timeout = task.info("command_timeout")
        task.abort(kill=True)

    def _new_task(self) -> Task:
        """Returns a new task, because a task that has run cannot use gateways again."""
        task, settings = task_self(), self._settings
        # Only the collector stores the output of the hosts.
        task.set_default("stdout_msgtree", False)
        task.set_default("stderr_msgtree", False)
        task.set_default("distant_worker", _by_lines(task.default("distant_worker")))
        for key, value in (("fanout", settings.fanout), ("ssh_user", settings.user),
                           ("connect_timeout", settings.connect_timeout),
                           ("ssh_path", settings.ssh_path)):
            if value is not None:
                task.set_info(key, value)
        task.set_info("ssh_options", " ".join(
            filter(None, [task.info("ssh_options"), settings.ssh_options])))
        topology = settings.topology
        if topology is None and task.default("auto_tree"):
            topology = _default_topology()
        if topology is not None:
            task.load_topology(topology)
        return task

    def run(self, job: Job, hosts: NodeSet, on_event: Callable[[Visits], None],
            on_end: Callable[[Visit], None]) -> Visits:
        """Returns the visit of each host. An interrupt ends the visits that still run, and is not
        raised. `on_end` is called for each host as soon as its connection has ended by itself."""
        mark = job.mark.encode()
        visits = {host: Visit(host, Reply(mark)) for host in hosts}
        if self.is_interrupted:
            return visits
        task = self._new_task()
        interrupts = Interrupts()

        def handle_event() -> None:
            interrupts.check()
            on_event(visits)

        collector = _Collector(visits, handle_event, on_end)
        worker = self._new_worker(task, hosts, collector, job.script())
        task.timer(self._TICK, collector, interval=self._TICK, autoclose=True)
        try:
            with interrupts:
                task.resume()
        except KeyboardInterrupt:
            self._interrupt(visits)
        else:
            collector.close(worker.iter_keys_timeout())
        task.abort(kill=True)
        return visits

    def _new_worker(self, task: Task, hosts: NodeSet, collector: _Collector,
                    script: bytes) -> Worker:
        timeout = self._timeout or None
        if task.topology is None:
            worker = task.shell(REMOTE_COMMAND, nodes=hosts, handler=collector, stderr=True,
                                timeout=timeout, tree=False)
        else:
            worker = _Tree(hosts, collector, timeout, command=REMOTE_COMMAND, stderr=True)
            worker.script = script
            task.schedule(worker)
        worker.write(script)
        return worker

    def _interrupt(self, visits: Visits) -> None:
        self.is_interrupted = True
        for visit in visits.values():
            if visit.started is not None and visit.reply.ended is None:
                visit.is_interrupted = True
                visit.stop()


def _by_lines(worker: type) -> type:
    return worker if issubclass(worker, _ByLines) else type(
        worker.__name__, (_ByLines, worker), {})


def _default_topology() -> Optional[str]:
    """Returns the file that clush, the program of ClusterShell, would use, if there is one."""
    for path in reversed(Task.TOPOLOGY_CONFIGS):
        if os.path.exists(path):
            return str(path)
    return None


def fold(hosts: List[str]) -> str:
    """Returns the hosts in the short form of ClusterShell: web[1-40,42]."""
    return str(NodeSet.fromlist(hosts))
