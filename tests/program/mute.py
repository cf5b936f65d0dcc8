"""Between a Wayland client and its compositor: passes everything on but what objects of one
interface tell the client. It takes one client, at a socket beside the compositor's.
    mute.py SOCKET INTERFACE
"""

import os
import select
import socket
import struct
import sys

HEADER = 8  # the object, then size and kind
BOUND_NAME = HEADER + 8  # where a request to bind has the interface's name


def messages(data):
    """The whole ones, and the beginning of the next."""
    whole = []
    while len(data) >= HEADER:
        size = struct.unpack_from("=I", data, 4)[0] >> 16
        if len(data) < size:
            break
        whole.append(data[:size])
        data = data[size:]
    return whole, data


def main():
    folder = os.environ["XDG_RUNTIME_DIR"]
    listener = socket.socket(socket.AF_UNIX)
    listener.bind(os.path.join(folder, sys.argv[1]))
    listener.listen()
    print("listening", flush=True)
    client, _ = listener.accept()
    compositor = socket.socket(socket.AF_UNIX)
    compositor.connect(os.path.join(folder, os.environ["WAYLAND_DISPLAY"]))

    interface = sys.argv[2].encode() + b"\0"
    mute = set()
    begun = {client: b"", compositor: b""}
    files = {client: [], compositor: []}
    while True:
        for source in select.select([client, compositor], [], [])[0]:
            data, new_files, _, _ = socket.recv_fds(source, 65536, 28)
            if not data:
                return
            files[source] += new_files
            whole, begun[source] = messages(begun[source] + data)
            if source is client:
                mute.update(each[-4:] for each in whole if each[BOUND_NAME:].startswith(interface))
            elif any(each[:4] in mute for each in whole):
                print("held back", flush=True)
                whole = [each for each in whole if each[:4] not in mute]
            if whole:
                target = compositor if source is client else client
                socket.send_fds(target, [b"".join(whole)], files[source])
                for file in files[source]:
                    os.close(file)
                files[source] = []


main()
