#!/usr/bin/env python3
# Runs Radicale with every request profiled: it answers on threads, which a plain
# `python3 -m cProfile` of its main thread misses. At exit the profiles are merged per
# HTTP method and saved as OUT.PUT, OUT.PROPFIND, ... (python3 -m pstats OUT.PUT).
# Usage: scripts/profile-radicale.py OUT --config FILE
import atexit, cProfile, pstats, sys, threading
import radicale.app
out = sys.argv.pop(1)
profiles, lock = [], threading.Lock()
original = radicale.app.Application._handle_request
def handle(self, environ):
    p = cProfile.Profile()
    try:
        return p.runcall(original, self, environ)
    finally:
        with lock:
            profiles.append((environ.get("REQUEST_METHOD"), p))
radicale.app.Application._handle_request = handle
def dump():
    for method in sorted({m for m, _ in profiles}):
        ps = [p for m, p in profiles if m == method]
        try:
            s = pstats.Stats(ps[0])
            for p in ps[1:]:
                s.add(p)
            s.dump_stats("%s.%s" % (out, method))
        except Exception as e:
            sys.stderr.write("profile of %s: %r\n" % (method, e))
atexit.register(dump)
from radicale.__main__ import run
run()
