#!/usr/bin/env python3
"""Becomes a Firefox that shows the rehearsal's meeting page at Teams' address.

    benchmarks/firefox_meeting.py FOLDER QUERY

The profile goes into FOLDER, QUERY are the page's parameters. A child process is the browser's proxy,
which answers every request itself, so nothing leaves the machine, and tells the browser to accept its
certificate and to open the page.
"""

import json
import os
import pathlib
import socket
import ssl
import subprocess
import sys
import threading
import time

HOST = "teams.microsoft.com"
PAGE = pathlib.Path(__file__).resolve().parents[1] / "rehearsal/pages/meeting.html"
FOLDER, QUERY = pathlib.Path(sys.argv[1]), sys.argv[2]


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def serve(listener):
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.load_cert_chain(FOLDER / "teams.pem", FOLDER / "teams.key")
    page = PAGE.read_bytes()

    def answer(connection):
        try:
            request = connection.recv(65536)
            if not request.startswith(b"CONNECT " + HOST.encode()):
                return connection.close()
            connection.sendall(b"HTTP/1.1 200 OK\r\n\r\n")
            with context.wrap_socket(connection, server_side=True) as secure:
                path = secure.recv(65536).split(b" ")[1]
                body = page if path.startswith(b"/v2/meeting.html") else b""
                secure.sendall(b"HTTP/1.1 200 OK\r\nContent-Type: text/html\r\nConnection: close\r\n"
                               b"Content-Length: %d\r\n\r\n" % len(body) + body)
        except (OSError, IndexError):  # The browser may close a connection at any time.
            connection.close()

    while True:
        threading.Thread(target=answer, args=(listener.accept()[0],), daemon=True).start()


def open_page(port):
    """Sends the browser its commands, each a number of bytes and a list."""
    while True:
        try:
            connection = socket.create_connection(("127.0.0.1", port))
            break
        except OSError:
            time.sleep(0.1)
    stream = connection.makefile("rb")

    def reply():
        size = b""
        while (character := stream.read(1)) != b":":
            size += character
        return json.loads(stream.read(int(size)))

    reply()
    for number, (command, parameters) in enumerate((
            ("WebDriver:NewSession", {"acceptInsecureCerts": True}),
            ("WebDriver:Navigate", {"url": f"https://{HOST}/v2/meeting.html?{QUERY}"}))):
        message = json.dumps([0, number, command, parameters])
        connection.sendall(f"{len(message)}:{message}".encode())
        print(command, str(reply())[:300], flush=True)
    return connection


def main():
    profile = FOLDER / "profile"
    profile.mkdir(parents=True)
    subprocess.run(["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2", "-subj",
                    f"/CN={HOST}", "-keyout", FOLDER / "teams.key", "-out", FOLDER / "teams.pem"],
                   check=True, capture_output=True)
    listener = socket.create_server(("127.0.0.1", 0))
    port = free_port()
    settings = {"network.proxy.type": 1, "network.proxy.ssl": "127.0.0.1", "network.proxy.http": "127.0.0.1",
                "network.proxy.ssl_port": listener.getsockname()[1],
                "network.proxy.http_port": listener.getsockname()[1], "network.trr.mode": 5,
                "marionette.port": port, "datareporting.policy.dataSubmissionEnabled": False,
                "browser.shell.checkDefaultBrowser": False}
    (profile / "user.js").write_text("".join(f"user_pref({json.dumps(name)}, {json.dumps(value)});\n"
                                             for name, value in settings.items()))
    if os.fork() > 0:
        os.execvp("firefox-esr", ["firefox-esr", "--no-remote", "--marionette", "--profile", str(profile)])
    threading.Thread(target=serve, args=(listener,), daemon=True).start()
    kept = open_page(port)
    kept.recv(1)  # Until the browser exits.


if __name__ == "__main__":
    main()
