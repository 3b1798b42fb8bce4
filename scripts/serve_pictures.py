#!/usr/bin/env python3
"""Serves a folder on 127.0.0.1 until it is ended: on the wanted port, or on a free one where that is
taken. Prints the port, once it answers.

usage: serve_pictures.py FOLDER PORT"""

import functools
import http.server
import sys


class Quiet(http.server.SimpleHTTPRequestHandler):
    def log_message(self, *_):
        pass


class Server(http.server.ThreadingHTTPServer):
    # Two of these on one port would answer in turns: rather take another port.
    allow_reuse_address = False


folder, wanted = sys.argv[1], int(sys.argv[2])
handler = functools.partial(Quiet, directory=folder)
try:
    server = Server(("127.0.0.1", wanted), handler)
except OSError:
    server = Server(("127.0.0.1", 0), handler)
print(server.server_port, flush=True)
server.serve_forever()
