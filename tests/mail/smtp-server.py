#!/usr/bin/python3
"""A mail server on loopback for tests: aiosmtpd, or with --fault one that does what real ones do not.

smtp-server.py FOLDER [--tls | --starttls] [--cert FILE --key FILE] [--user NAME --password TEXT]
               [--fault NAME]

Prints its port and serves until it is ended. Each message that it takes becomes FOLDER/N.eml with the
envelope in its first lines. What becomes of a recipient is in the name before the "@": refused,
later, toolarge (after the message), stall, cut (after the message), slow. `sent` in FOLDER counts
what was confirmed.
"""
import argparse
import asyncio
import base64
import os
import socket
import ssl
import time

from aiosmtpd.smtp import AuthResult, SMTP

parser = argparse.ArgumentParser()
parser.add_argument("folder")
parser.add_argument("--tls", action="store_true")
parser.add_argument("--starttls", action="store_true")
parser.add_argument("--cert")
parser.add_argument("--key")
parser.add_argument("--user")
parser.add_argument("--password")
parser.add_argument("--fault")
options = parser.parse_args()


class Handler:
    count = 0

    async def handle_RCPT(self, server, session, envelope, address, rcpt_options):
        name = address.split("@")[0]
        if name == "refused":
            return "550 5.1.1 No such user \x1b[31mhere"
        if name == "later":
            return "451 4.7.1 Greylisted, try again"
        if name == "stall":
            await asyncio.sleep(3600)
        envelope.rcpt_tos.append(address)
        return "250 OK"

    async def handle_MAIL(self, server, session, envelope, address, mail_options):
        if address.startswith("spoofed"):
            return "553 5.7.1 Sender address rejected"
        envelope.mail_from = address
        return "250 OK"

    async def handle_DATA(self, server, session, envelope):
        name = envelope.rcpt_tos[0].split("@")[0]
        if name == "toolarge":
            return "552 5.3.4 Message too big"
        Handler.count += 1
        with open(f"{options.folder}/{Handler.count}.eml.new", "wb") as file:
            file.write(f"X-From: {envelope.mail_from}\r\nX-To: {','.join(envelope.rcpt_tos)}\r\n".encode())
            file.write(envelope.content)
        os.rename(f"{options.folder}/{Handler.count}.eml.new", f"{options.folder}/{Handler.count}.eml")
        if name == "slow":  # taken, and not confirmed for a while
            await asyncio.sleep(3600)
        if name == "cut":
            server.transport.abort()
        return "250 2.0.0 OK, taken"


class Server(SMTP):
    async def auth_XOAUTH2(self, server, args):
        blob = base64.b64decode(args[1]) if len(args) > 1 else await server.challenge_auth("")
        wanted = f"user={options.user}\x01auth=Bearer {options.password}\x01\x01".encode()
        return AuthResult(success=blob == wanted, handled=False)


def authenticate(server, session, envelope, mechanism, data):
    good = data.login.decode() == options.user and data.password.decode() == options.password
    return AuthResult(success=good, handled=False)


def context():
    made = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    made.load_cert_chain(options.cert, options.key)
    return made


async def serve():
    extra = {"hostname": "server.test"}
    if options.starttls:
        extra |= {"tls_context": context(), "require_starttls": True}
    if options.user:
        extra |= {"authenticator": authenticate, "auth_required": True,
                  "auth_require_tls": not options.tls}
    server = await asyncio.get_running_loop().create_server(
        lambda: Server(Handler(), **extra), "127.0.0.1", 0, ssl=context() if options.tls else None)
    print(server.sockets[0].getsockname()[1], flush=True)
    await server.serve_forever()


def serve_fault():
    """One client after another, over plain sockets."""
    listener = socket.create_server(("127.0.0.1", 0))
    print(listener.getsockname()[1], flush=True)
    while True:
        client, _ = listener.accept()
        with client:
            if options.fault == "mute":
                time.sleep(3600)
            if options.fault == "garbage":
                client.sendall(b"SSH-2.0-OpenSSH_9.2\r\n")
            if options.fault == "endless":
                try:
                    while True:
                        client.sendall(b"220-welcome\r\n" * 100)
                        time.sleep(0.05)
                except OSError:
                    pass
            if options.fault == "hostile":  # a reply that steers terminals, and is long
                client.sendall(b"220 hello\r\n")
                client.recv(4096)
                client.sendall(b"250 hello\r\n")
                client.recv(4096)
                client.sendall(b"550-" + b"\x1b]0;x\x07" + b"A" * 400 + b"\r\n550 end\r\n")
                client.recv(4096)


if options.fault:
    serve_fault()
asyncio.run(serve())
