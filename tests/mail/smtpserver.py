#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""A throw-away SMTP server on 127.0.0.1 for the mail tests and the benchmark.

Prints "READY <port>" once it listens. Writes to --dir: events.log (one line
per connection, STARTTLS, AUTH command, message), and for each message
msgN.json (the message as Python's email package reads it) and msgN.pdf (its
attachment). With --quiet it only counts.
"""
import argparse, asyncio, email, email.policy, functools, json, logging, os, ssl, sys, warnings

from aiosmtpd.smtp import SMTP, AuthResult

p = argparse.ArgumentParser()
p.add_argument("--dir", required=True)
p.add_argument("--tls", choices=["none", "starttls", "implicit"], default="starttls")
p.add_argument("--cert"), p.add_argument("--key")
p.add_argument("--user"), p.add_argument("--password")
p.add_argument("--reject", action="append", default=[])
p.add_argument("--drop-at", type=int, default=0)
p.add_argument("--quiet", action="store_true")
a = p.parse_args()
count = 0
# The tests mean to offer a login without TLS: no warnings about it.
warnings.filterwarnings("ignore")
logging.getLogger("mail.log").setLevel(logging.ERROR)


def event(text):
    with open(os.path.join(a.dir, "events.log"), "a") as f:
        f.write(text + "\n")


def summary(raw, envelope):
    msg = email.message_from_bytes(raw, policy=email.policy.default)
    out = {"mail_from": envelope.mail_from, "rcpt_tos": envelope.rcpt_tos,
           "max_line": max(len(l) for l in raw.split(b"\r\n")),
           "defects": [repr(d) for part in msg.walk() for d in part.defects]}
    for h in ("subject", "from", "to", "reply-to", "date", "message-id", "bcc"):
        out[h] = str(msg[h]) if msg[h] is not None else None
    out["date_ok"] = msg["date"] is not None and msg["date"].datetime is not None
    body = msg.get_body(preferencelist=("plain",))
    out["body"] = body.get_content().replace("\r\n", "\n") if body else None
    for part in msg.iter_attachments():
        out["filename"] = part.get_filename()
        out["attachment_type"] = part.get_content_type()
        with open(os.path.join(a.dir, "msg%d.pdf" % count), "wb") as f:
            f.write(part.get_payload(decode=True))
    return out


class Handler:
    async def handle_RCPT(self, server, session, envelope, address, options):
        if address in a.reject:
            return "550 5.1.1 <%s>: Recipient address rejected: no such mailbox here" % address
        envelope.rcpt_tos.append(address)
        return "250 OK"

    async def handle_DATA(self, server, session, envelope):
        global count
        count += 1
        if count == a.drop_at:
            event("dropped %d" % count)
            server.transport.abort()
            return "250 never seen"
        if not a.quiet:
            with open(os.path.join(a.dir, "msg%d.json" % count), "w") as f:
                json.dump(summary(envelope.content, envelope), f)
        event("message %d" % count)
        return "250 2.0.0 Ok: queued as Q%d" % count


def authenticator(server, session, envelope, mechanism, data):
    ok = data.login.decode() == a.user and data.password.decode() == a.password
    return AuthResult(success=ok, handled=False)


class Server(SMTP):
    def connection_made(self, transport):
        if self.transport is None:
            event("connect")
        super().connection_made(transport)

    @functools.wraps(SMTP.smtp_AUTH)
    async def smtp_AUTH(self, arg):
        event("auth tls=%s" % (self.transport.get_extra_info("sslcontext") is not None))
        return await super().smtp_AUTH(arg)

    @functools.wraps(SMTP.smtp_STARTTLS)
    async def smtp_STARTTLS(self, arg):
        event("starttls")
        return await super().smtp_STARTTLS(arg)


async def main():
    context = None
    if a.tls != "none":
        context = ssl.create_default_context(ssl.Purpose.CLIENT_AUTH)
        context.load_cert_chain(a.cert, a.key)
    auth = dict(authenticator=authenticator, auth_required=True, auth_require_tls=False) if a.user else {}
    factory = lambda: Server(Handler(), hostname="localhost", data_size_limit=None,
                             tls_context=context if a.tls == "starttls" else None, **auth)
    srv = await asyncio.get_running_loop().create_server(
        factory, "127.0.0.1", 0, ssl=context if a.tls == "implicit" else None)
    # Ends with its parent: the parent holds our standard input open.
    loop = asyncio.get_running_loop()
    loop.add_reader(sys.stdin.fileno(), lambda: os.read(sys.stdin.fileno(), 64) or os._exit(0))
    print("READY", srv.sockets[0].getsockname()[1], flush=True)
    await srv.serve_forever()

asyncio.run(main())
