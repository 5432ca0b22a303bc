# SPDX-License-Identifier: Apache-2.0
"""A bad cable between two TAP devices: loses and delays Ethernet frames, as netem does.

    relay.py DEVICE_A DEVICE_B LOSS DELAY JITTER SEED

Both devices are open file descriptors. A frame is lost with the probability LOSS, else delivered after
DELAY ± JITTER seconds, so that frames overtake each other. Ends on SIGTERM and prints how many it lost."""

import heapq
import itertools
import os
import random
import selectors
import signal
import sys
import time

LONGEST_FRAME = 65536


class Relay:
    def __init__(self, devices, loss, delay, jitter, seed):
        self.opposite = {devices[0]: devices[1], devices[1]: devices[0]}
        self.loss, self.delay, self.jitter = loss, delay, jitter
        self.random = random.Random(seed)
        self.number = itertools.count()  # keeps frames that are due at the same time comparable
        self.under_way = []
        self.lost = 0
        self.selector = selectors.DefaultSelector()
        for device in devices:
            os.set_blocking(device, False)
            self.selector.register(device, selectors.EVENT_READ)

    def accept(self, device):
        frame = os.read(device, LONGEST_FRAME)
        if self.random.random() < self.loss:
            self.lost += 1
            return
        due = time.monotonic() + self.random.uniform(self.delay - self.jitter, self.delay + self.jitter)
        heapq.heappush(self.under_way, (due, next(self.number), self.opposite[device], frame))

    def deliver(self):
        while self.under_way and self.under_way[0][0] <= time.monotonic():
            _, _, device, frame = heapq.heappop(self.under_way)
            try:
                os.write(device, frame)
            except OSError:  # the device is down or its queue full: a frame lost like any other
                self.lost += 1

    def run(self):
        while True:
            wait = max(0.0, self.under_way[0][0] - time.monotonic()) if self.under_way else None
            for key, _ in self.selector.select(wait):
                self.accept(key.fd)
            self.deliver()


def main():
    devices = [int(word) for word in sys.argv[1:3]]
    loss, delay, jitter = (float(word) for word in sys.argv[3:6])
    relay = Relay(devices, loss, delay, jitter, int(sys.argv[6]))
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(0))
    try:
        relay.run()
    finally:
        print(relay.lost, flush=True)


if __name__ == "__main__":
    main()
