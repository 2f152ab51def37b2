#!/usr/bin/env python3
"""A web server on this machine for session tests: serves a folder and misbehaves on request.

usage: feed-server.py FOLDER PORT-FILE    the port is written to the file
Paths: /NAME serves the file; /slow/NAME the same after a second; /dead/NAME never answers.
"""

import http.server
import os
import sys
import time


class Handler(http.server.SimpleHTTPRequestHandler):
    def do_GET(self):
        for prefix, seconds in (("/slow/", 1), ("/dead/", 600)):
            if self.path.startswith(prefix):
                time.sleep(seconds)
                self.path = self.path[len(prefix) - 1:]
        super().do_GET()


os.chdir(sys.argv[1])
server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
server.daemon_threads = True
with open(sys.argv[2] + ".new", "w") as file:
    file.write(str(server.server_address[1]))
os.rename(sys.argv[2] + ".new", sys.argv[2])
server.serve_forever()
