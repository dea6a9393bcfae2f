#!/usr/bin/env python3
"""Connection exhaustion against a real qel-cimserver on a 1,000-port array, on loopback.

An attacker opens 1,100 connections and sends each the start of a request head, never the
end; whenever the server closes one, it opens another, so that 1,100 are held for the whole
run (40 s). It connects from --sources loopback addresses (127.0.0.2 and up, the
connections spread evenly). Meanwhile a legitimate client, in a process of its own, from
127.0.0.1, sends one EnumerateInstanceNames per second on a new connection, waiting at most
10 s for each answer.

Prints how many of the legitimate requests were answered 200, their median time, and how
often the server closed a held connection.

    bench/security/probe_halfopen.py BUILD_DIR [--connections 1100] [--seconds 40] [--sources 1]
"""

import argparse
import json
import selectors
import socket
import subprocess
import sys
import time

from probe_common import ENUMERATE_NAMES, Server, basic, median, post, raise_descriptor_limit

HEAD_START = b"POST /cimom HTTP/1.1\r\nHost: x\r\nContent-Type: application/xml\r\n"


def legitimate(port, authorization, count, timeout):
    import http.client
    served, times = 0, []
    next_at = time.monotonic()
    for _ in range(count):
        start = time.monotonic()
        try:
            conn = http.client.HTTPConnection("127.0.0.1", port, timeout=timeout)
            status, _, _ = post(conn, "EnumerateInstanceNames", ENUMERATE_NAMES, authorization)
            conn.close()
        except OSError:
            status = 0
        if status == 200:
            served += 1
            times.append((time.monotonic() - start) * 1000)
        next_at += 1.0
        time.sleep(max(0.0, next_at - time.monotonic()))
    return {"served": served, "median_ms": median(times)}


def hold(port, connections, sources, seconds):
    """Keeps `connections` half-open connections for `seconds`; returns how many the server
    closed (and were opened again)."""
    sel = selectors.DefaultSelector()

    def open_one(i):
        s = socket.socket()
        s.bind((f"127.0.0.{2 + i % sources}", 0))
        s.setblocking(False)
        try:
            s.connect(("127.0.0.1", port))
        except BlockingIOError:
            pass
        sel.register(s, selectors.EVENT_WRITE, i)

    for i in range(connections):
        open_one(i)
    closed = 0
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        for key, events in sel.select(timeout=0.5):
            s, i = key.fileobj, key.data
            if events & selectors.EVENT_WRITE:
                try:
                    s.send(HEAD_START)
                    sel.modify(s, selectors.EVENT_READ, i)
                    continue
                except OSError:
                    pass  # refused or reset: open another
            else:
                try:
                    if s.recv(4096):
                        continue  # an answer; keep waiting for the close
                except OSError:
                    pass  # reset
            sel.unregister(s)
            s.close()
            closed += 1
            open_one(i)
    for key in list(sel.get_map().values()):
        key.fileobj.close()
    return closed


def main():
    p = argparse.ArgumentParser()
    p.add_argument("build", nargs="?")
    p.add_argument("--connections", type=int, default=1100)
    p.add_argument("--seconds", type=float, default=40)
    p.add_argument("--sources", type=int, default=1)
    p.add_argument("--legitimate")
    a = p.parse_args()
    if a.legitimate:
        print(json.dumps(legitimate(*json.loads(a.legitimate))))
        return
    raise_descriptor_limit()
    server = Server(a.build)
    try:
        args = json.dumps([server.port, basic("monitor", server.passwords["monitor"]),
                           int(a.seconds), 10])
        legit = subprocess.Popen([sys.executable, __file__, "--legitimate", args],
                                 stdout=subprocess.PIPE, text=True)
        closed = hold(server.port, a.connections, a.sources, a.seconds + 1)
        result = json.loads(legit.communicate()[0])
        print(f"{a.connections} half-open connections from {a.sources} address(es), "
              f"{a.seconds:.0f} s: the server closed {closed} of them (each reopened)")
        print(f"legitimate requests served: {result['served']} of {int(a.seconds)}, "
              f"median {result['median_ms']:.1f} ms")
    finally:
        server.stop()


if __name__ == "__main__":
    main()
