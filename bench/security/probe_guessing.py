#!/usr/bin/env python3
"""Password guessing against a real qel-cimserver on a 1,000-port array, from loopback.

16 threads guess the password of one user (admin) as fast as the server answers, each on
its own kept-alive connection (--attack keepalive) or on a new connection for every guess
(--attack newconnection). Meanwhile a legitimate client, in a process of its own, on
the same address and as the same user, reads one FC port with GetInstance: once on a
kept-alive connection, once with a new connection per request (as wbemcli does). The same
legitimate reads are made first with the server idle.

Prints: the guesses the server verified (answered 401 without Retry-After) and held back
(401 with Retry-After), the guessing connections that failed, the verified guesses per
second after the first 5, and the legitimate medians idle and during the flood.

    bench/security/probe_guessing.py BUILD_DIR [--seconds 60] [--threads 16]
                                     [--attack keepalive|newconnection]

The flood lasts --seconds, or longer if the legitimate reads take longer.
"""

import argparse
import http.client
import json
import subprocess
import sys
import threading
import time

from probe_common import GET_INSTANCE, Server, basic, median, post


def legitimate(port, authorization, name, requests, pause):
    """Latencies in ms of `requests` GetInstance calls, kept-alive then new connections."""
    body = GET_INSTANCE.format(name=name)
    result = {}
    for mode in ("keepalive", "newconnection"):
        times, failures = [], 0
        conn = None
        for _ in range(requests):
            start = time.perf_counter()
            try:
                if conn is None:
                    conn = http.client.HTTPConnection("127.0.0.1", port, timeout=30)
                status, _, _ = post(conn, "GetInstance", body, authorization)
                if mode == "newconnection":
                    conn.close()
                    conn = None
            except OSError:
                status, conn = 0, None
            times.append((time.perf_counter() - start) * 1000)
            failures += status != 200
            time.sleep(pause)
        result[mode] = {"median_ms": median(times), "failures": failures}
    return result


def measure_legitimately(server, name, requests, pause):
    """Runs legitimate() in another process, so that the flood's threads do not slow it."""
    args = json.dumps([server.port, basic("admin", server.passwords["admin"]),
                       name, requests, pause])
    return subprocess.Popen([sys.executable, __file__, "--legitimate", args],
                            stdout=subprocess.PIPE, text=True)


def flood(server, name, threads, stop, fresh):
    """Starts the guessing threads; they run until `stop` is set."""
    counts = {"verified": 0, "held": 0, "other": 0, "dropped": 0}
    verified_at = []
    lock = threading.Lock()
    wrong = basic("admin", "not-the-password")
    body = GET_INSTANCE.format(name=name)

    def guess():
        conn = None
        while not stop.is_set():
            try:
                if conn is None:
                    conn = server.connection()
                status, headers, _ = post(conn, "GetInstance", body, wrong)
            except (OSError, http.client.HTTPException):
                conn = None
                with lock:
                    counts["dropped"] += 1
                continue
            if fresh:
                conn.close()
                conn = None
            with lock:
                if status == 401 and "retry-after" in headers:
                    counts["held"] += 1
                elif status == 401:
                    counts["verified"] += 1
                    verified_at.append(time.monotonic())
                else:
                    counts["other"] += 1

    workers = [threading.Thread(target=guess, daemon=True) for _ in range(threads)]
    start = time.monotonic()
    for w in workers:
        w.start()
    return workers, counts, verified_at, start


def main():
    p = argparse.ArgumentParser()
    p.add_argument("build", nargs="?")
    p.add_argument("--seconds", type=float, default=60)
    p.add_argument("--threads", type=int, default=16)
    p.add_argument("--requests", type=int, default=100)
    p.add_argument("--attack", choices=("keepalive", "newconnection"), default="keepalive")
    p.add_argument("--legitimate")
    a = p.parse_args()
    if a.legitimate:
        print(json.dumps(legitimate(*json.loads(a.legitimate))))
        return
    server = Server(a.build)
    try:
        pause = 0.05
        name = server.port_name()
        idle = json.loads(
            measure_legitimately(server, name, a.requests, pause).communicate()[0])
        cpu0 = server.cpu_seconds()
        stop = threading.Event()
        workers, counts, verified_at, start = flood(
            server, name, a.threads, stop, a.attack == "newconnection")
        time.sleep(2)  # the flood is under way
        during = json.loads(
            measure_legitimately(server, name, a.requests, pause).communicate()[0])
        time.sleep(max(0.0, start + a.seconds - time.monotonic()))
        stop.set()
        for w in workers:
            w.join()
        elapsed = time.monotonic() - start
        cpu = server.cpu_seconds() - cpu0
        # The rate after the free attempts: verified guesses past the 5th, over the time
        # from the 5th to the end of the flood.
        later = verified_at[5:]
        rate = len(later) / (start + elapsed - verified_at[4]) if len(verified_at) > 5 else 0.0
        print(f"flood: {a.threads} threads, {a.attack}, {elapsed:.1f} s, "
              f"server CPU {cpu:.1f} s")
        print(f"  guesses verified: {counts['verified']}, held back (Retry-After): "
              f"{counts['held']}, other answers: {counts['other']}, connections dropped: "
              f"{counts['dropped']}")
        print(f"  verified guesses per second after the first 5: {rate:.2f}")
        for mode in ("keepalive", "newconnection"):
            i, d = idle[mode], during[mode]
            print(f"legitimate GetInstance, {mode}: median idle {i['median_ms']:.2f} ms, "
                  f"during the flood {d['median_ms']:.2f} ms "
                  f"({d['median_ms'] / i['median_ms']:.2f}x), failed {i['failures']} / "
                  f"{d['failures']} of {a.requests}")
    finally:
        server.stop()


if __name__ == "__main__":
    main()
