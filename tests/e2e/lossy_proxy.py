#!/usr/bin/env python3
"""A lossy link for end-to-end tests, on loopback only.

Clients are given the proxy's base port in place of the server's. The lobby's TCP port (the base
port) is passed through untouched; each datagram port (base + OFFSET for the offsets given) forwards
to the server's port of the same offset through a bad link: every datagram, in either direction, is
dropped with probability --drop, otherwise held for --delay-ms plus a uniform jitter of up to
--jitter-ms (so that datagrams overtake each other), and duplicated with probability --duplicate
(the copy gets its own delay). Each client address gets its own upstream socket, so the server sees
one address a client, as it would without the proxy.

Every direction of every client has its own random generator seeded from --seed, the port and the
order in which clients first appeared, so the same datagrams meet the same faults on every run.

The proxy stops by itself after --lifetime seconds (or on SIGTERM) and then prints one line of
counts: datagrams in, delivered, dropped, duplicated and delivered out of order.
"""

import argparse
import heapq
import random
import selectors
import signal
import socket
import sys
import threading
import time

LOOPBACK = "127.0.0.1"
MAX_HELD = 20000  # datagrams held for later delivery; beyond this the link drops them


class Channel:
    """One direction of one client's datagrams: its random generator and its order counters."""

    def __init__(self, seed):
        self.random = random.Random(seed)
        self.sent = 0
        self.delivered_up_to = -1


class Link:
    def __init__(self, args):
        self.args = args
        self.selector = selectors.DefaultSelector()
        self.held = []  # heap of (due, order, socket, address, bytes, channel, sequence)
        self.order = 0
        self.clients = {}  # (offset, client address) -> (upstream socket, up channel, down channel)
        self.counts = dict(received=0, delivered=0, dropped=0, duplicated=0, reordered=0)

    def open_ports(self):
        for offset in self.args.offsets:
            listener = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
            listener.bind((LOOPBACK, self.args.listen_base + offset))
            listener.setblocking(False)
            self.selector.register(listener, selectors.EVENT_READ, ("client", offset, listener))

    def channel(self, offset, client, direction):
        seed = f"{self.args.seed}/{offset}/{len(self.clients)}/{direction}"
        return Channel(seed)

    def upstream_for(self, offset, listener, client):
        key = (offset, client)
        if key not in self.clients:
            upstream = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
            upstream.connect((LOOPBACK, self.args.server_base + offset))
            upstream.setblocking(False)
            self.clients[key] = (upstream, self.channel(offset, client, "up"), self.channel(offset, client, "down"))
            self.selector.register(upstream, selectors.EVENT_READ, ("server", listener, client, key))
        return self.clients[key]

    def submit(self, now, channel, sock, address, data):
        """Passes one datagram into the bad link."""
        self.counts["received"] += 1
        sequence = channel.sent
        channel.sent += 1
        if channel.random.random() < self.args.drop:
            self.counts["dropped"] += 1
            return
        copies = 2 if channel.random.random() < self.args.duplicate else 1
        self.counts["duplicated"] += copies - 1
        for _ in range(copies):
            if len(self.held) >= MAX_HELD:
                self.counts["dropped"] += 1
                continue
            delay = self.args.delay_ms + channel.random.random() * self.args.jitter_ms
            self.order += 1
            heapq.heappush(self.held, (now + delay / 1000.0, self.order, sock, address, data, channel, sequence))

    def deliver_due(self, now):
        while self.held and self.held[0][0] <= now:
            _, _, sock, address, data, channel, sequence = heapq.heappop(self.held)
            if sequence < channel.delivered_up_to:
                self.counts["reordered"] += 1
            channel.delivered_up_to = max(channel.delivered_up_to, sequence)
            try:
                if address is None:
                    sock.send(data)
                else:
                    sock.sendto(data, address)
                self.counts["delivered"] += 1
            except OSError:
                # A port that isn't listening (a game's relay closed) loses the datagram, as a
                # network would.
                self.counts["dropped"] += 1

    def receive(self, key, now):
        kind = key.data[0]
        for _ in range(256):  # bounded, so that held datagrams still go out under a flood
            try:
                if kind == "client":
                    _, offset, listener = key.data
                    data, client = listener.recvfrom(65536)
                    upstream, up, _ = self.upstream_for(offset, listener, client)
                    self.submit(now, up, upstream, None, data)
                else:
                    _, listener, client, client_key = key.data
                    data = key.fileobj.recv(65536)
                    self.submit(now, self.clients[client_key][2], listener, client, data)
            except (BlockingIOError, InterruptedError):
                return
            except OSError:
                return  # for example ECONNREFUSED from a closed relay port: nothing to pass on

    def run(self, deadline, stopping):
        while not stopping.is_set():
            now = time.monotonic()
            if now >= deadline:
                break
            self.deliver_due(now)
            wait = deadline - now
            if self.held:
                wait = min(wait, max(0.0, self.held[0][0] - now))
            for key, _ in self.selector.select(min(wait, 0.1)):
                self.receive(key, time.monotonic())


def pipe(source, destination):
    try:
        while True:
            data = source.recv(65536)
            if not data:
                break
            destination.sendall(data)
    except OSError:
        pass
    for sock in (source, destination):
        try:
            sock.shutdown(socket.SHUT_RDWR)
        except OSError:
            pass


def serve_lobby(listen_base, server_base):
    """Passes every lobby connection through to the server's lobby, both ways."""
    listener = socket.create_server((LOOPBACK, listen_base))
    def accept():
        while True:
            client, _ = listener.accept()
            try:
                server = socket.create_connection((LOOPBACK, server_base), timeout=5)
                server.settimeout(None)
            except OSError:
                client.close()
                continue
            for a, b in ((client, server), (server, client)):
                threading.Thread(target=pipe, args=(a, b), daemon=True).start()
    threading.Thread(target=accept, daemon=True).start()


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--listen-base", type=int, required=True, help="the base port that clients are given")
    parser.add_argument("--server-base", type=int, required=True, help="the server's base port")
    parser.add_argument("--offsets", type=int, nargs="+", default=list(range(2, 10)),
                        help="the datagram ports' offsets from the base port")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--drop", type=float, default=0.2)
    parser.add_argument("--duplicate", type=float, default=0.05)
    parser.add_argument("--delay-ms", type=float, default=10.0)
    parser.add_argument("--jitter-ms", type=float, default=30.0)
    parser.add_argument("--lifetime", type=float, default=170.0, help="seconds after which the proxy stops")
    args = parser.parse_args()
    if not (0 <= args.drop < 1 and 0 <= args.duplicate <= 1 and args.delay_ms >= 0 and args.jitter_ms >= 0):
        parser.error("probabilities lie in [0, 1) and delays are not negative")

    stopping = threading.Event()
    signal.signal(signal.SIGTERM, lambda *_: stopping.set())
    link = Link(args)
    link.open_ports()
    serve_lobby(args.listen_base, args.server_base)
    print("Proxy running", flush=True)
    link.run(time.monotonic() + args.lifetime, stopping)
    print("Proxy counts " + " ".join(f"{k}={v}" for k, v in link.counts.items()), flush=True)
    return 0


if __name__ == "__main__":
    sys.exit(main())
