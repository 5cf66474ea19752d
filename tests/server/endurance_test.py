#!/usr/bin/python3
"""mdbd under load and faults: 16 clients for 30 s while files come and go, a kill -9 in the middle
of the first scan, and fuzzed SOAP and HTTP requests. Every request loop is bounded in count and
time. The fuzzers send no SUBSCRIBE: a SUBSCRIBE with a SID and no path crashes libupnp 1.8.4 itself
(CVE-2020-13848), which no server on it can prevent. Runs inside a private network namespace."""
import html
import os
import random
import re
import shutil
import socket
import sqlite3
import sys
import tempfile
import threading
import time
import unittest

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from mdbd_fixture import (Mdbd, ServerTest, browse_args, catalogue_dump, envelope, get, search_args, soap,  # noqa
                          wait_until)

ALL_MUSIC = "0.1.256"
SECONDS = 30
# What 30 s of load may add to mdbd's resident memory once warm: SQLite's page cache is bounded
# and every answer is freed, so growth beyond this is a leak.
RSS_GROWTH_KB = 16 * 1024


def total(server, object_id=ALL_MUSIC):
    status, body = soap(server, "Browse", browse_args(object_id, count="1"))
    return int(re.search(r"<TotalMatches>(\d+)<", body).group(1)) if status == 200 else -1


def resource_of(server):
    """The URL of the first resource of all music."""
    body = html.unescape(soap(server, "Browse", browse_args(ALL_MUSIC, count="1"))[1])
    return re.search(r"<res [^>]*>([^<]+)<", body).group(1)


def rss_kb(pid):
    with open("/proc/%d/status" % pid) as f:
        return int(re.search(r"VmRSS:\s+(\d+)", f.read()).group(1))


def raw_http(port, request, seconds=5):
    """The status line of the answer to raw request bytes ("" when the server closed at once)."""
    with socket.create_connection(("127.0.0.1", port), timeout=seconds) as connection:
        connection.sendall(request)
        connection.shutdown(socket.SHUT_WR)
        answer = b""
        while len(answer) < 1 << 16:
            chunk = connection.recv(65536)
            if not chunk:
                break
            answer += chunk
    return answer.split(b"\r\n", 1)[0].decode("latin-1")


class LoadTest(ServerTest):
    def test_sixteen_clients_while_files_come_and_go(self):
        server = self.server
        churn = os.path.join(server.media, "Music", "Churn")
        os.mkdir(churn)
        song = os.path.join(server.media, "Music", "Alpha", "One.mp3")
        before = total(server)
        uri = resource_of(server)
        path = "/" + uri.split("/", 3)[3]
        deadline = time.monotonic() + SECONDS
        failures, rss = [], []

        def client(n):
            rng = random.Random(n)
            while time.monotonic() < deadline:
                kind = rng.randrange(3)
                if kind == 0:
                    start = rng.randrange(8)
                    status, body = soap(server, "Browse", browse_args(ALL_MUSIC, start=str(start), count="5"))
                    counts = [int(n) for n in re.findall(r"<(?:NumberReturned|TotalMatches)>(\d+)<", body)]
                    if len(counts) != 2 or counts[0] != min(5, max(0, counts[1] - start)):
                        body = ""  # a page that does not agree with its own total
                elif kind == 1:
                    status, body = soap(server, "Search", search_args("0", 'dc:title contains "Song"'))
                else:
                    status, _, data = get(server.url(path), {"Range": "bytes=%d-%d" % (n, n + 99)})
                    body = "<NumberReturned>" if status == 206 and len(data) == 100 else ""
                if status not in (200, 206) or "<NumberReturned>" not in body:
                    failures.append((kind, status, body[:200]))

        def changer():
            n = 0
            while time.monotonic() < deadline:
                shutil.copyfile(song, os.path.join(churn, "%d.mp3" % n))
                if n >= 5:
                    os.unlink(os.path.join(churn, "%d.mp3" % (n - 5)))
                n += 1
                time.sleep(0.2)

        threads = [threading.Thread(target=client, args=(n,)) for n in range(16)] + [threading.Thread(target=changer)]
        for thread in threads:
            thread.start()
        while time.monotonic() < deadline:
            rss.append(rss_kb(server.process.pid))
            time.sleep(0.5)
        for thread in threads:
            thread.join(30)
        self.assertEqual(failures[:5], [])
        left = len(os.listdir(churn))
        self.assertTrue(wait_until(lambda: total(server) == before + left, 20), (total(server), before, left))
        if "ASAN_OPTIONS" not in os.environ:  # a sanitizer's quarantine holds freed memory on purpose
            warm = rss[len(rss) // 6]
            self.assertLessEqual(max(rss) - warm, RSS_GROWTH_KB, rss)


class FuzzTest(ServerTest):
    def assert_still_answers(self, before):
        self.assertIsNone(self.server.process.poll(), "\n".join(self.server.lines[-20:]))
        self.assertEqual(soap(self.server, "Browse", browse_args(ALL_MUSIC, count="3")), before)

    def test_fuzzed_soap_requests_change_nothing(self):
        rng = random.Random(1)
        before, rows = soap(self.server, "Browse", browse_args(ALL_MUSIC, count="3")), catalogue_dump(self.server.db)
        valid = [envelope("Browse", browse_args("0.1.264", count="5", sort="+dc:title")).encode(),
                 envelope("Search", search_args("0", 'upnp:class derivedfrom "object.item" and dc:title contains "a"'))
                 .encode()]
        for n in range(10000):
            body = bytearray(rng.choice(valid))
            mutation = n % 5
            if mutation == 0:  # truncated
                body = body[:rng.randrange(len(body))]
            elif mutation == 1:  # bytes flipped
                for _ in range(rng.randrange(1, 8)):
                    body[rng.randrange(len(body))] = rng.randrange(256)
            elif mutation == 2:  # oversized argument
                body = body.replace(b"<Filter>*", b"<Filter>" + b"dc:title," * rng.choice((100, 2000, 20000)))
            elif mutation == 3:  # wrong namespaces
                body = body.replace(b"urn:schemas-upnp-org:service:ContentDirectory:1", b"urn:x:y", rng.randrange(2))
                body = body.replace(b"http://schemas.xmlsoap.org/soap/envelope/", b"urn:x:soap", rng.randrange(2))
            else:  # an argument cut out, repeated or given a hostile value
                body = re.sub(rb"<(\w+)>[^<]*</\1>", rng.choice((b"", rb"\g<0>\g<0>", rb"<\1>-1</\1>", rb"<\1>%n</\1>")),
                              bytes(body), count=rng.randrange(1, 4))
            try:
                soap(self.server, "Browse", {}, raw_body=bytes(body), timeout=10)
            except socket.timeout:
                self.fail("request %d got no answer: %r" % (n, bytes(body[:300])))
            except OSError:
                pass  # the stack closes on requests it refuses
        self.assert_still_answers(before)
        self.assertEqual(catalogue_dump(self.server.db), rows)

    def test_fuzzed_http_requests_to_the_file_server(self):
        rng = random.Random(2)
        before = soap(self.server, "Browse", browse_args(ALL_MUSIC, count="3"))
        uri = resource_of(self.server)
        path = "/" + uri.split("/", 3)[3]
        ranges = ["bytes=-", "bytes=5-1", "bytes=0-0,5-9", "bytes=-0", "bytes=99999999999999999999-", "bytes=--1",
                  "bytes=0-18446744073709551616", "bits=0-1", "bytes=%d-" % (1 << 40), "bytes=\x00-1"]
        paths = [path, path + "/..", path.replace("/mdb/", "/mdb/../../"), "/web/mdb/%00", "/" + "a" * 9000,
                 path + "?x=" + "%" * 50, "/web/upload/1.mp3", "*", "http://x/" + path]
        for n in range(3000):
            method = rng.choice(["GET", "HEAD", "POST", "PUT", "DELETE", "OPTIONS", "GE\x01T", "G" * 300])
            line = "%s %s %s\r\n" % (method, rng.choice(paths), rng.choice(["HTTP/1.1", "HTTP/1.0", "HTTP/9", ""]))
            headers = "Host: x\r\nRange: %s\r\n" % rng.choice(ranges) if n % 3 else "Content-Length: -5\r\n"
            request = (line + headers + "\r\n").encode("latin-1")
            if n % 7 == 0:
                request = request[:rng.randrange(len(request))]
            try:
                status = raw_http(self.server.file_port, request)
            except socket.timeout:
                self.fail("request %d got no answer: %r" % (n, request[:300]))
            self.assertNotIn(" 500 ", status, request[:300])
        self.assertEqual(get(uri)[0], 200)
        self.assert_still_answers(before)


class KillTest(unittest.TestCase):
    def test_kill_during_the_first_scan_then_restart(self):
        work = tempfile.mkdtemp(prefix="mdbd-test-")
        media = os.path.join(work, "media")
        shutil.copytree(os.environ["MDB_TEST_SAMPLE_TREE"], media)
        song = os.path.join(media, "Music", "Alpha", "One.mp3")
        for n in range(3000):
            folder = os.path.join(media, "Many", "%02d" % (n // 100))
            os.makedirs(folder, exist_ok=True)
            shutil.copyfile(song, os.path.join(folder, "%d.mp3" % n))
        first = Mdbd(dir=work, scanned=False)
        self.assertTrue(wait_until(lambda: os.path.exists(first.db) and query(first.db, "select count(*) from ITEM") > 100,
                                   60))
        first.process.kill()
        first.stop(keep=True)
        self.assertFalse([line for line in first.lines if re.search(r"scanned \d+ media files", line)])
        second = Mdbd(dir=work)
        try:
            self.assertEqual(query(second.db, "select count(*) from (select 1 from ITEM group by parentID, fileName "
                                              "having count(*) > 1)"), 0)
            self.assertEqual(query(second.db, "select count(*) from ITEM i join ITEM f on i.parentID = f.id join ITEM m "
                                              "on f.parentID = m.id where m.fileName = 'Many'"), 3000)
            self.assertEqual(total(second), query(second.db, "select count(*) from ITEM where flags & 127 = 11"))
        finally:
            self.assertEqual(second.stop(), 0)


def query(db, sql):
    """The one value of sql on the catalogue db, read beside the server."""
    connection = sqlite3.connect("file:%s?mode=ro" % db, uri=True)
    try:
        return connection.execute(sql).fetchone()[0]
    finally:
        connection.close()


if __name__ == "__main__":
    unittest.main(verbosity=2)
