#!/usr/bin/env python3
"""Runs a snippet beside an HTTP peer on 127.0.0.1 that serves the files of the working
directory on a free port; the snippet's test build reaches it as port 80. Exits with
the snippet's status."""
import http.server
import os
import subprocess
import sys
import threading


class QuietHandler(http.server.SimpleHTTPRequestHandler):
    def log_message(self, *args):
        pass


server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), QuietHandler)
threading.Thread(target=server.serve_forever, daemon=True).start()
env = dict(os.environ, KY_SNIPPET_HTTP_PORT=str(server.server_address[1]))
try:
    status = subprocess.run(sys.argv[1:], env=env, timeout=30).returncode
finally:
    server.shutdown()
sys.exit(status)
