#!/usr/bin/env python3
"""Serves a folder on 127.0.0.1 until it is ended: on the wanted port, or on a free one where that is
taken. Prints the port, once it answers.

usage: serve_pictures.py FOLDER PORT"""

import contextlib
import functools
import http.server
import sys


class Quiet(http.server.SimpleHTTPRequestHandler):
    def log_message(self, *_):
        pass


class Server(http.server.ThreadingHTTPServer):
    # Several devices fetch several pictures each at once; who finds the queue full waits a second.
    request_queue_size = 128


def server_of(folder, wanted):
    handler = functools.partial(Quiet, directory=folder)
    try:
        return Server(("127.0.0.1", wanted), handler)
    except OSError:
        return Server(("127.0.0.1", 0), handler)


def main(folder, wanted):
    server = server_of(folder, int(wanted))
    print(server.server_port, flush=True)
    with contextlib.suppress(KeyboardInterrupt):
        server.serve_forever()


if __name__ == "__main__":
    main(*sys.argv[1:])
