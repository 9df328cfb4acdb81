"""A web site of a test's own on loopback: pages that the local service would never serve."""

import http.server
import threading
import time


class Site:
    """Serves `answers`: path -> HTML text, or (status, headers, body). A path may be added at any time; a callable gets the path."""

    def __init__(self, answers=None):
        self.answers = dict(answers or {})
        self.requests = []
        site = self

        class Handler(http.server.BaseHTTPRequestHandler):
            def do_GET(self):
                site.requests.append(self.path)
                answer = site.answers.get(self.path.partition("?")[0], (404, {}, b""))
                if callable(answer):
                    answer = answer(self.path)
                status, headers, body = answer if isinstance(answer, tuple) else (200, {}, answer)
                body = body.encode() if isinstance(body, str) else body
                self.send_response(status)
                for name, value in {"Content-Type": "text/html; charset=utf-8", "Content-Length": str(len(body)), **headers}.items():
                    self.send_header(name, value)
                self.end_headers()
                for start in range(0, len(body), 65536):
                    self.wfile.write(body[start:start + 65536])
                    if site.pause:
                        time.sleep(site.pause)

            def log_message(self, *_):
                pass

        self.pause = 0  # seconds between the pieces of a large body
        self._server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        self._server.daemon_threads = True
        self.port = self._server.server_port
        threading.Thread(target=self._server.serve_forever, daemon=True).start()

    @property
    def url(self):
        return f"http://127.0.0.1:{self.port}"

    def close(self):
        self._server.shutdown()
        self._server.server_close()
