# SPDX-License-Identifier: Apache-2.0
"""Two hosts on one machine: each a network namespace with an address of its own and shared memory of its own,
joined by a cable.

All is made inside one user and one process namespace, so no rights are needed where the kernel lets ordinary
users make namespaces, nothing of the machine's own network is touched, and all of it, processes included, goes
with the process that made it."""

import ctypes
import fcntl
import json
import os
import re
import shlex
import struct
import subprocess
import sys
import time

CLONE_NEWNS = 0x00020000
CLONE_NEWNET = 0x40000000
TUNSETIFF = 0x400454CA
IFF_TAP = 0x0002
IFF_NO_PI = 0x1000

DEVICE = "cable"
SEED = 20  # of what the relay loses: the same in each run

libc = ctypes.CDLL(None, use_errno=True)


class Refused(Exception):
    """This machine does not offer what a test needs; says which command was refused, and how."""


def command(*words, enter=None, pass_fds=()):
    try:
        done = subprocess.run(words, capture_output=True, text=True, timeout=30, preexec_fn=enter,
                              pass_fds=pass_fds, check=False)
    except FileNotFoundError as error:
        raise Refused(error) from error
    if done.returncode != 0:
        raise Refused(f"{shlex.join(words)}: {done.stderr.strip() or done.returncode}")
    return done.stdout


def system_call(name, *arguments):
    if getattr(libc, name)(*arguments) != 0:
        raise Refused(f"{name}{arguments}: {os.strerror(ctypes.get_errno())}")


def start_again_inside_namespaces():
    """Replaces this process by one that is first in namespaces of its own, and returns in that one."""
    mark = "PLEX_TEST_NAMESPACES"
    if mark in os.environ:
        return
    isolation = ["unshare", "--net", "--mount", "--pid", "--fork", "--kill-child"]
    try:
        as_user = [*isolation, "--user", "--map-root-user"]
        command(*as_user, "true")
        isolation = as_user
    except Refused:
        if os.geteuid() != 0:
            raise
        command(*isolation, "true")  # an administrator needs no user namespace
    os.environ[mark] = "yes"
    os.execvp(isolation[0], [*isolation, sys.executable, "-B", *sys.argv])


class Host:
    """The namespaces that this thread is in when it is made, with an empty /dev/shm."""

    def __init__(self, address):
        self.address = address
        system_call("mount", b"tmpfs", b"/dev/shm", b"tmpfs", 0, None)
        self.network = os.open("/proc/thread-self/ns/net", os.O_RDONLY)
        self.files = os.open("/proc/thread-self/ns/mnt", os.O_RDONLY)
        self.shared_memory = os.stat("/dev/shm").st_dev
        command("ip", "link", "set", "lo", "up")

    def enter(self):
        system_call("setns", self.network, CLONE_NEWNET)
        system_call("setns", self.files, CLONE_NEWNS)

    def command(self, *words):
        return command(*words, enter=self.enter)

    def connect(self):
        self.command("ip", "address", "add", f"{self.address}/24", "dev", DEVICE)
        self.set_link("up")

    def set_link(self, state):
        self.command("ip", "link", "set", DEVICE, state)

    def link(self):
        return json.loads(self.command("ip", "-json", "-statistics", "link", "show", DEVICE))[0]

    def is_connected(self):
        return "LOWER_UP" in self.link()["flags"] and "NO-CARRIER" not in self.link()["flags"]

    def received_packets(self):
        return self.link()["stats64"]["rx"]["packets"]


class Network:
    """Two hosts, not joined yet."""

    def __init__(self):
        self.relay = None
        self.near = Host("10.0.0.1")
        system_call("unshare", CLONE_NEWNET | CLONE_NEWNS)
        self.far = Host("10.0.0.2")
        self.near.enter()

    def join(self):
        """By a cable that loses nothing."""
        command("ip", "link", "add", DEVICE, "type", "veth", "peer", "name", DEVICE, "netns",
                f"/proc/self/fd/{self.far.network}", pass_fds=[self.far.network])
        self.connect()

    def connect(self):
        for host in (self.near, self.far):
            host.connect()
        # A program that starts earlier never uses the device: Fast DDS looks once for those that are running.
        wait_for(lambda: self.near.is_connected() and self.far.is_connected(), "connection")

    def join_badly(self, loss, delay, jitter):
        """By a cable that loses and delays packets in both directions: by netem, or a relay where the kernel has
        none. Delays are in seconds."""
        self.join()
        try:
            for host in (self.near, self.far):
                host.command("tc", "qdisc", "add", "dev", DEVICE, "root", "netem", "delay", f"{delay * 1000}ms",
                             f"{jitter * 1000}ms", "loss", f"{loss * 100}%")
            print("cable: netem")
        except Refused as refusal:
            print(f"cable: a relay, as there is no netem here ({refusal})")
            self.near.command("ip", "link", "delete", DEVICE)
            self.join_by_relay(loss, delay, jitter)

    def join_by_relay(self, loss, delay, jitter):
        devices = [open_tap(host) for host in (self.far, self.near)]
        script = os.path.join(os.path.dirname(os.path.abspath(__file__)), "relay.py")
        words = [sys.executable, script, *devices, loss, delay, jitter, SEED]
        self.relay = subprocess.Popen([str(word) for word in words], pass_fds=devices, stdout=subprocess.PIPE,
                                      text=True)
        for device in devices:
            os.close(device)
        self.connect()

    def lost_packets(self):
        """How many a bad cable lost; it is of no more use afterwards."""
        if self.relay:
            self.relay.terminate()
            return int(self.relay.communicate(timeout=10)[0])
        statistics = [host.command("tc", "-s", "qdisc", "show", "dev", DEVICE) for host in (self.near, self.far)]
        return sum(int(re.search(r"dropped (\d+)", text).group(1)) for text in statistics)


def open_tap(host):
    """A TAP device of the host that this thread is on afterwards."""
    host.enter()
    try:
        device = os.open("/dev/net/tun", os.O_RDWR)
        fcntl.ioctl(device, TUNSETIFF, struct.pack("16sH22x", DEVICE.encode(), IFF_TAP | IFF_NO_PI))
    except OSError as error:
        raise Refused(f"TAP device of /dev/net/tun: {error}") from error
    return device


def wait_for(condition, what, seconds=30):
    """Waits until the condition gives something true, and returns that."""
    deadline = time.monotonic() + seconds
    while not (result := condition()):
        if time.monotonic() > deadline:
            raise AssertionError(f"in {seconds} s there was no {what}")
        time.sleep(0.01)
    return result
