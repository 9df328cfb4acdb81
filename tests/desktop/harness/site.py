"""Web servers of a test's own on loopback, in threads."""

import contextlib
import http.server
import threading


class Server:
    """A subclass gives `answer(method, path, headers, body)`: the status, headers and body of the answer."""

    def __init__(self):
        server = self

        class Handler(http.server.BaseHTTPRequestHandler):
            def handle_request(self):
                content = self.rfile.read(int(self.headers.get("Content-Length", 0)))
                status, headers, body = server.answer(self.command, self.path, self.headers, content)
                self.send_response(status)
                for name, value in {"Content-Type": "text/html; charset=utf-8", "Content-Length": str(len(body)), **headers}.items():
                    self.send_header(name, value)
                self.end_headers()
                with contextlib.suppress(ConnectionError):  # an answer need not be read to its end
                    self.wfile.write(body)

            do_GET = do_POST = do_PATCH = do_DELETE = handle_request

            def log_message(self, *_):
                pass

        self._server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        self._server.daemon_threads = True
        self.url = f"http://127.0.0.1:{self._server.server_port}"
        threading.Thread(target=self._server.serve_forever, daemon=True).start()

    def close(self):
        self._server.shutdown()
        self._server.server_close()


class Site(Server):
    """Serves `answers`: path -> HTML text, or (status, headers, body). A path may be added at any time."""

    def __init__(self, answers=None):
        self.answers = dict(answers or {})
        self.requests = []
        super().__init__()

    def answer(self, _method, path, _headers, _content):
        self.requests.append(path)
        answer = self.answers.get(path.partition("?")[0], (404, {}, b""))
        status, headers, body = answer if isinstance(answer, tuple) else (200, {}, answer)
        return status, headers, body.encode() if isinstance(body, str) else body
