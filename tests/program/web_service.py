"""A web server that writes down what it is asked, byte by byte: its file, and a file number to tell
its port to. Brings up the loopback of its network."""

import fcntl
import json
import os
import socket
import struct
import sys

SIOCSIFFLAGS, UP = 0x8914, 0x1 | 0x40
FEED = b'{"version": "0.0.1", "url": "https://exemple.fr"}'


def request_from(client):
    data = b""
    while b"\r\n\r\n" not in data:
        more = client.recv(65536)
        if not more:
            return None
        data += more
    head, _, body = data.partition(b"\r\n\r\n")
    for line in head.lower().split(b"\r\n"):
        if line.startswith(b"content-length:"):
            while len(body) < int(line.split(b":")[1]):
                body += client.recv(65536)
    return head.decode("latin-1"), body.decode("latin-1")


listener = socket.socket()
fcntl.ioctl(listener, SIOCSIFFLAGS, struct.pack("16sh", b"lo", UP))
listener.bind(("127.0.0.1", 0))
listener.listen()
with os.fdopen(int(sys.argv[2]), "w") as told:
    print(listener.getsockname()[1], file=told)
while True:
    connection, _ = listener.accept()
    with connection:
        asked = request_from(connection)
        if not asked:
            continue
        with open(sys.argv[1], "a", encoding="utf-8") as file:
            print(json.dumps(asked), file=file)
        connection.sendall(b"HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: "
                           + str(len(FEED)).encode() + b"\r\n\r\n" + FEED)
