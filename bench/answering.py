"""What the page servers of the measuring scripts share."""

import http.server


class Answering(http.server.BaseHTTPRequestHandler):
    """Answers with a body and says nothing on the terminal."""

    def answer(self, body, status):
        self.send_response(status)
        self.send_header("Content-Type", "text/html")
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def log_message(self, *_):
        pass
