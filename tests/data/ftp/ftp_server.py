"""A pyftpdlib server on 127.0.0.1 for the FTP tests; prints its port, then serves.

--drop-after N   closes the whole session once N bytes of a file went either way
--stale-after S  after S idle seconds the session is forgotten without a word:
                 the next command gets "421" and the connection closes
--no-mlsd        answers MLSD as an unknown command, so clients fall back to LIST
--dos-list       LIST in the DOS format of IIS
--refuse-data-once  answers the first listing or transfer with vsftpd's 522
                 (a TLS data connection that did not reuse the session)
"""
import argparse
import sys
import time

from pyftpdlib.authorizers import DummyAuthorizer
from pyftpdlib.filesystems import AbstractedFS
from pyftpdlib.handlers import FTPHandler
from pyftpdlib.servers import FTPServer

p = argparse.ArgumentParser()
p.add_argument("--root", required=True)
p.add_argument("--user", default="alice")
p.add_argument("--password", default="s3cret")
p.add_argument("--drop-after", type=int, default=0)
p.add_argument("--stale-after", type=float, default=0)
p.add_argument("--no-mlsd", action="store_true")
p.add_argument("--dos-list", action="store_true")
p.add_argument("--refuse-data-once", action="store_true")
refused = []
args = p.parse_args()


class DroppingFile:
    """A file that ends the session after a number of bytes."""

    def __init__(self, f, channel, limit):
        self._f, self._channel, self._limit, self._moved = f, channel, limit, 0
        self.name = f.name

    def _over(self):
        if self._moved >= self._limit:
            self._channel.close()
            return True
        return False

    def read(self, n=-1):
        if self._over():
            return b""
        data = self._f.read(min(n if n > 0 else self._limit, self._limit - self._moved))
        self._moved += len(data)
        return data

    def write(self, data):
        if self._over():
            raise OSError("session dropped")
        self._moved += len(data)
        return self._f.write(data)

    def __getattr__(self, name):
        return getattr(self._f, name)


class FS(AbstractedFS):
    def open(self, filename, mode):
        f = super().open(filename, mode)
        if args.drop_after:
            return DroppingFile(f, self.cmd_channel, args.drop_after)
        return f

    def format_list(self, basedir, listing, ignore_err=True):
        if not args.dos_list:
            yield from super().format_list(basedir, listing, ignore_err)
            return
        import os
        for name in listing:
            st = os.lstat(os.path.join(basedir, name))
            when = time.strftime("%m-%d-%y  %I:%M%p", time.gmtime(st.st_mtime))
            if os.path.isdir(os.path.join(basedir, name)):
                line = "%s       <DIR>          %s\r\n" % (when, name)
            else:
                line = "%s%20d %s\r\n" % (when, st.st_size, name)
            yield line.encode("utf8", self.cmd_channel.unicode_errors)


class Handler(FTPHandler):
    abstracted_fs = FS
    use_sendfile = False
    unicode_errors = "surrogateescape"
    stale = False

    def handle_timeout(self):
        if args.stale_after:
            self.stale = True  # forgotten, but the socket stays open and silent
            return
        super().handle_timeout()

    def found_terminator(self):
        if self.stale:
            self._in_buffer = []
            self._in_buffer_len = 0
            self.respond("421 Control connection timed out.")
            self.close_when_done()
            return
        command = b"".join(self._in_buffer)[:4].upper()
        if args.refuse_data_once and not refused and command in (b"MLSD", b"LIST", b"RETR", b"STOR"):
            refused.append(command)
            self._in_buffer = []
            self._in_buffer_len = 0
            self.respond("522 SSL connection failed: session reuse required")
            return
        super().found_terminator()


if args.no_mlsd:
    Handler.proto_cmds = {k: v for k, v in FTPHandler.proto_cmds.items() if k != "MLSD"}
if args.stale_after:
    Handler.timeout = args.stale_after

authorizer = DummyAuthorizer()
authorizer.add_user(args.user, args.password, args.root, perm="elradfmwMT")
Handler.authorizer = authorizer
server = FTPServer(("127.0.0.1", 0), Handler)
print(server.socket.getsockname()[1], flush=True)
server.serve_forever()
