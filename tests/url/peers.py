# Peers and data for the URL stream tests, run by Debian's python3. Servers listen on
# 127.0.0.1 port 0, print the port, append what they are asked to LOG (the last
# argument) and end by themselves after 90 seconds. Modes:
#   http DIR LOG: http.server on DIR; odd LOG: odd replies chosen by the path;
#   ftp DIR LOG: pyftpdlib on DIR, user "u", password "p@x", a long banner;
#   data DIR [clean]: compressed files made from known text (or DIR removed).
import gzip, os, shutil, socket, socketserver, struct, sys, threading, time, zlib

def log(line):
    with open(sys.argv[-1], 'ab') as out:
        out.write(line)

def serve(server, port):
    threading.Timer(90, lambda: os._exit(0)).start()
    print(port, os.getpid(), flush=True)
    server.serve_forever()

GZ = gzip.compress(b'hello gzip over http\n' * 100, mtime=0)
REPLIES = {b'/crlf': [b'HTTP/1.0 200 OK\r\nA: b\r\n\r\n', b'body'], b'/lf': [b'HTTP/1.0 200 OK\r\n\nbody'],
           b'/garbage': [b'garbage without status'], b'/split': [b'HTTP/1.0 200 OK\r\nX-Long: aaaa', b'aaaa\r\n\r\nbody'],
           b'/404': [b'HTTP/1.0 404 Not Found\r\n\r\nmissing'],
           b'/short': [b'HTTP/1.0 200 OK\r\nContent-Length: 100\r\n\r\n0123456789'],
           b'/long': [b'HTTP/1.0 200 OK\r\nContent-Length: 3\r\n\r\n0123456789'],
           b'/gzip': [b'HTTP/1.0 200 OK\r\n\r\n', GZ[:1], GZ[1:2], GZ[2:3], GZ[3:]],
           b'/endless': [b'HTTP/1.0 200 OK\r\n'] + [b'X: y\r\n' * 1000] * 100000}

class Odd(socketserver.BaseRequestHandler):
    def handle(self):
        data = b''
        while b'\n\n' not in data and len(data) < 65536:
            time.sleep(60 if data.startswith(b'GET /never') else 0)
            piece = self.request.recv(4096)
            data += piece
            if not piece:
                break
        log(data)
        path = data.split(b' ')[1] if data.count(b' ') > 1 else b''
        time.sleep(60 if path == b'/silence' else 0)
        for piece in REPLIES.get(path, []):
            self.request.sendall(piece)
            time.sleep(0.2 if len(piece) < 1000 else 0)

def gzip_with_fields(text):
    head = b'\x1f\x8b\x08\x1e\0\0\0\0\0\x03' + struct.pack('<H', 65535) + b'e' * 65535 + b'n' * 5000 + b'\0' + b'c\0'
    deflate = zlib.compressobj(9, zlib.DEFLATED, -15)
    head += struct.pack('<H', zlib.crc32(head) & 0xFFFF) + deflate.compress(text) + deflate.flush()
    return head + struct.pack('<II', zlib.crc32(text), len(text))

mode = sys.argv[1]
if mode == 'http':
    import functools, http.server
    class Files(http.server.SimpleHTTPRequestHandler):
        def log_message(self, *args):
            log(self.requestline.encode() + b'\n')
    server = http.server.ThreadingHTTPServer(('127.0.0.1', 0), functools.partial(Files, directory=sys.argv[2]))
    serve(server, server.server_address[1])
elif mode == 'odd':
    class Server(socketserver.ThreadingTCPServer):
        daemon_threads = True
        def server_bind(self):  # a small window, so that a long request has to wait for the reader
            self.socket.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4096)
            super().server_bind()
    server = Server(('127.0.0.1', 0), Odd)
    serve(server, server.server_address[1])
elif mode == 'ftp':
    import logging
    from pyftpdlib import authorizers, handlers, servers
    logging.disable(logging.CRITICAL)
    class Handler(handlers.FTPHandler):
        banner = 'kybase test peer ' + 'x' * 2000
        def pre_process_command(self, line, cmd, arg):
            log(line.encode() + b'\n')
            super().pre_process_command(line, cmd, arg)
    Handler.authorizer = authorizers.DummyAuthorizer()
    Handler.authorizer.add_user('u', 'p@x', sys.argv[2])
    server = servers.FTPServer(('127.0.0.1', 0), Handler)
    serve(server, server.address[1])
elif mode == 'data' and len(sys.argv) > 3:
    shutil.rmtree(sys.argv[2])
elif mode == 'data':
    os.makedirs(sys.argv[2])
    os.chdir(sys.argv[2])
    text = b''.join(b'line %d of the sample text\n' % i for i in range(20000))
    os.makedirs('dir')
    os.makedirs('file:')
    for name, data in {'text.txt': text, 'fields.gz': gzip_with_fields(text), 'cut.gz': gzip.compress(text)[:20000],
                       'multi.gz': gzip.compress(text[:1000]) + gzip.compress(text[1000:]),
                       'cuthead.gz': gzip_with_fields(text)[:30000], 'ratio.gz': gzip.compress(b'a' * 20000000, 9),
                       'second.txt': b'the second entry\n', 'empty.txt': b'', 'dir/file.txt': b'retrieved by ftp\n',
                       'file:/x': b'fallback\n'}.items():
        with open(name, 'wb') as out:
            out.write(data)
    with gzip.open('bomb.gz', 'wb', compresslevel=1) as out:
        for _ in range(1024):
            out.write(bytes(1 << 20))  # 1 GiB of zeros
    sys.exit(os.system('zip -q two.zip text.txt second.txt && zip -q -0 stored.zip second.txt'))
