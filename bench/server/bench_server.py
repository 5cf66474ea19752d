#!/usr/bin/python3
"""mdbd against MiniDLNA on one media tree, in one run, over loopback: first scan, the latency of
each request as a control point sends it (a new connection each), the throughput of 8 concurrent
clients, file throughput and the peak RSS of each server's process tree. Runs inside a private
network namespace (make bench-server starts it through run_in_namespace.sh); writes a table to
stdout and to the results file."""
import argparse
import datetime
import html
import http.client
import multiprocessing
import os
import platform
import re
import shutil
import statistics
import subprocess
import sys
import threading
import time

CDS = "urn:schemas-upnp-org:service:ContentDirectory:1"
TRACKS, BIG_FOLDER, PHOTOS, PHOTOS_PER_FOLDER = 50000, 10000, 2000, 100


# ---------------------------------------------------------------------------------------------
# The media tree, made once and kept.

def ffmpeg(*args):
    subprocess.run(["ffmpeg", "-nostdin", "-loglevel", "error", "-y", *args], check=True)


def make_tree(tree, tag_tree, tracks, big):
    stamp = os.path.join(tree, ".complete-%d-%d" % (tracks, big))
    if os.path.exists(stamp):
        return
    shutil.rmtree(tree, ignore_errors=True)
    os.makedirs(tree)
    print("making the media tree in %s (once; it is kept)" % tree, flush=True)
    base, photo = os.path.join(tree, ".base.mp3"), os.path.join(tree, ".base.jpg")
    ffmpeg("-f", "lavfi", "-i", "anullsrc=r=44100:cl=mono", "-t", "1", "-c:a", "libmp3lame", "-b:a", "32k", base)
    ffmpeg("-f", "lavfi", "-i", "testsrc=size=640x480", "-frames:v", "1", photo)
    subprocess.run([tag_tree, base, os.path.join(tree, "Music"), str(tracks), str(big)], check=True)
    photos = PHOTOS * tracks // TRACKS
    for i in range(photos):
        folder = os.path.join(tree, "Photos", "Set %02d" % (i // PHOTOS_PER_FOLDER))
        os.makedirs(folder, exist_ok=True)
        shutil.copyfile(photo, os.path.join(folder, "Photo %04d.jpg" % i))
    os.makedirs(os.path.join(tree, "Large"))
    # 256 s at 128 kb/s: 4 MB.
    ffmpeg("-f", "lavfi", "-i", "sine=frequency=440:sample_rate=44100:duration=256", "-c:a", "libmp3lame",
           "-b:a", "128k", "-metadata", "title=Large Track", os.path.join(tree, "Large", "Large Track.mp3"))
    os.unlink(base)
    os.unlink(photo)
    open(stamp, "w").close()


# ---------------------------------------------------------------------------------------------
# The servers.

class Server:
    def __init__(self, name, command, description_path, log):
        self.name, self.log_path = name, log
        self.log = open(log, "w")
        self.process = subprocess.Popen(command, stdout=self.log, stderr=subprocess.STDOUT)
        self.description_path = description_path
        self.host, self.port = "127.0.0.1", None
        self.peak_rss = 0
        self.sampling = True
        self.sampler = threading.Thread(target=self._sample, daemon=True)
        self.sampler.start()

    def tree_rss(self):
        """The sum of VmRSS (kB) over the server's process and its descendants."""
        children = {}
        for entry in os.listdir("/proc"):
            if entry.isdigit():
                try:
                    with open("/proc/%s/stat" % entry) as f:
                        parent = int(f.read().rsplit(")", 1)[1].split()[1])
                    children.setdefault(parent, []).append(int(entry))
                except (OSError, IndexError, ValueError):
                    pass
        total, todo = 0, [self.process.pid]
        while todo:
            pid = todo.pop()
            todo.extend(children.get(pid, []))
            try:
                with open("/proc/%d/status" % pid) as f:
                    total += int(re.search(r"VmRSS:\s+(\d+)", f.read()).group(1))
            except (OSError, AttributeError):
                pass
        return total

    def _sample(self):
        while self.sampling and self.process.poll() is None:
            self.peak_rss = max(self.peak_rss, self.tree_rss())
            time.sleep(0.05)

    def stop(self):
        self.sampling = False
        if self.process.poll() is None:
            self.process.terminate()
            try:
                self.process.wait(timeout=30)
            except subprocess.TimeoutExpired:
                self.process.kill()
                self.process.wait()
        self.log.close()


def start_minidlna(tree, work):
    folder = os.path.join(work, "minidlna")
    shutil.rmtree(folder, ignore_errors=True)
    os.makedirs(folder)
    conf = os.path.join(folder, "minidlna.conf")
    with open(conf, "w") as f:
        f.write("media_dir=%s\nport=8200\nnetwork_interface=lo\nfriendly_name=MiniDLNA bench\n"
                "db_dir=%s\nlog_dir=%s\ninotify=no\nstrict_dlna=no\nnotify_interval=900\n"
                % (tree, os.path.join(folder, "db"), folder))
    server = Server("MiniDLNA", ["minidlnad", "-S", "-f", conf, "-P", os.path.join(folder, "pid")],
                    "/rootDesc.xml", os.path.join(folder, "out.log"))
    server.port = 8200
    return server


def start_mdbd(mdbd, tree, work):
    folder = os.path.join(work, "mdbd")
    shutil.rmtree(folder, ignore_errors=True)
    os.makedirs(folder)
    log = os.path.join(folder, "out.log")
    # -v: a line per Browse and Search that says how long mdbd's own code took (own_median).
    server = Server("mdbd", [mdbd, "-v", "--address", "127.0.0.1", "--db", os.path.join(folder, "catalogue.db"),
                             "--name", "mdbd bench", tree], None, log)
    deadline = time.monotonic() + 30
    while time.monotonic() < deadline:
        with open(log) as f:
            found = re.search(r"on http://127\.0\.0\.1:(\d+)(/\S+\.xml)", f.read())
        if found:
            server.port, server.description_path = int(found.group(1)), found.group(2)
            return server
        time.sleep(0.05)
    server.stop()
    sys.exit("mdbd did not start; see %s" % log)


# ---------------------------------------------------------------------------------------------
# Requests, as a control point sends them: a new connection each.

def envelope(action, arguments):
    args = "".join("<%s>%s</%s>" % (k, html.escape(str(v), quote=False), k) for k, v in arguments)
    return ('<?xml version="1.0" encoding="utf-8"?><s:Envelope xmlns:s="http://schemas.xmlsoap.org/soap/envelope/" '
            's:encodingStyle="http://schemas.xmlsoap.org/soap/encoding/"><s:Body><u:%s xmlns:u="%s">%s</u:%s>'
            '</s:Body></s:Envelope>' % (action, CDS, args, action)).encode()


class Request:
    """One request of a case: method, path, headers, body and the answer that counts as right."""

    def __init__(self, method, path, headers=None, body=None, expect=None):
        self.method, self.path, self.headers, self.body, self.expect = method, path, headers or {}, body, expect

    def send(self, host, port):
        """(seconds, bytes of the body, right) of one exchange."""
        start = time.perf_counter()
        connection = http.client.HTTPConnection(host, port, timeout=60)
        try:
            connection.request(self.method, self.path, self.body, self.headers)
            answer = connection.getresponse()
            body = answer.read()
            status = answer.status
        except (OSError, http.client.HTTPException):
            return time.perf_counter() - start, 0, False
        finally:
            connection.close()
        elapsed = time.perf_counter() - start
        right = status in (200, 206) and (self.expect is None or self.expect(body))
        return elapsed, len(body), right


def soap_request(control, action, arguments, expect=None):
    return Request("POST", control, {"Content-Type": 'text/xml; charset="utf-8"',
                                     "SOAPACTION": '"%s#%s"' % (CDS, action)}, envelope(action, arguments), expect)


def browse_args(object_id, flag="BrowseDirectChildren", start=0, count=50, sort=""):
    return [("ObjectID", object_id), ("BrowseFlag", flag), ("Filter", "*"), ("StartingIndex", start),
            ("RequestedCount", count), ("SortCriteria", sort)]


def call(server, action, arguments):
    connection = http.client.HTTPConnection(server.host, server.port, timeout=120)
    try:
        request = soap_request(server.control, action, arguments)
        connection.request(request.method, request.path, request.body, request.headers)
        body = connection.getresponse().read().decode("utf-8", "replace")
    finally:
        connection.close()
    return body


def result_of(body):
    """(objects as (id, title, is container, first res url), NumberReturned, TotalMatches)."""
    result = html.unescape(re.search(r"<Result>(.*?)</Result>", body, re.S).group(1)) if "<Result>" in body else ""
    objects = []
    for element in re.finditer(r"<(container|item)\b([^>]*)>(.*?)</\1>", result, re.S):
        object_id = html.unescape(re.search(r'\bid="([^"]*)"', element.group(2)).group(1))
        title = html.unescape(re.search(r"<dc:title>(.*?)</dc:title>", element.group(3), re.S).group(1))
        res = re.search(r"<res\b[^>]*>(.*?)</res>", element.group(3), re.S)
        objects.append((object_id, title, element.group(1) == "container", html.unescape(res.group(1)) if res else ""))
    number = lambda name: int(re.search(r"<%s>(\d+)</%s>" % (name, name), body).group(1))  # noqa: E731
    return objects, number("NumberReturned"), number("TotalMatches")


def children(server, object_id):
    objects, start = [], 0
    while True:
        page, returned, total = result_of(call(server, "Browse", browse_args(object_id, start=start, count=500)))
        objects += page
        start += returned
        if returned == 0 or start >= total:
            return objects


def find(server, titles):
    """The id of the container reached from "0" through titles; a level whose title is not there
    but that holds one container alone (a shared root folder, say) is passed through."""
    object_id = "0"
    for title in titles:
        for _ in range(3):
            found = children(server, object_id)
            match = [o for o in found if o[1] in title.split("|")]
            if match:
                object_id = match[0][0]
                break
            containers = [o for o in found if o[2]]
            if len(containers) != 1:
                sys.exit("%s: no %r below %s (%s)" % (server.name, title, object_id, [o[1] for o in found]))
            object_id = containers[0][0]
    return object_id


def total_of(server, object_id):
    try:
        return result_of(call(server, "Browse", browse_args(object_id, count=1)))[2]
    except (OSError, AttributeError, http.client.HTTPException):
        return -1


def control_url(server):
    connection = http.client.HTTPConnection(server.host, server.port, timeout=30)
    connection.request("GET", server.description_path)
    description = connection.getresponse().read().decode()
    connection.close()
    service = re.search(r"<serviceType>%s</serviceType>.*?<controlURL>([^<]*)</controlURL>" % re.escape(CDS),
                        description, re.S)
    return service.group(1)


def wait_for_scan(server, all_music_titles, expected, limit):
    """Seconds from the server's start until its all-music container holds every track."""
    started = time.monotonic()
    while time.monotonic() - started < limit:
        if server.process.poll() is not None:
            sys.exit("%s stopped; see %s" % (server.name, server.log_path))
        try:
            server.control = control_url(server)
            all_music = find(server, all_music_titles)
            break
        except (OSError, http.client.HTTPException, AttributeError, SystemExit):
            time.sleep(0.2)
    while time.monotonic() - started < limit:
        if total_of(server, all_music) >= expected:
            return time.monotonic() - started
        time.sleep(0.1)
    sys.exit("%s did not list %d tracks within %d s" % (server.name, expected, limit))


# ---------------------------------------------------------------------------------------------
# The cases.

def cases_of(server, names, tracks):
    """The requests of every case for server, with its own ids found by browsing."""
    music = names["music"]
    all_music = find(server, [music, names["all"]])
    artists = find(server, [music, names["artists"]])
    albums = find(server, [music, names["albums"]])
    big = find(server, [music, names["folders"], "Music", "Big Folder"])
    large = find(server, [music, names["folders"], "Large"])
    one_item = result_of(call(server, "Browse", browse_args(big, count=1)))[0][0][0]
    large_url = children(server, large)[0][3]
    file_host, file_port, file_path = re.match(r"http://([^:/]+):(\d+)(/.*)", large_url).groups()
    page = lambda count: (lambda body: b"<NumberReturned>%d</NumberReturned>" % count in body)  # noqa: E731
    returned = lambda body: re.search(rb"<NumberReturned>[1-9]", body) is not None  # noqa: E731
    soap = lambda action, args, expect: soap_request(server.control, action, args, expect)  # noqa: E731
    abc = 'dc:title contains "abc"'
    audio_abc = 'upnp:class derivedfrom "object.item.audioItem" and dc:title contains "abc"'
    cases = [
        ("Browse 10k folder at 0", soap("Browse", browse_args(big), page(50))),
        ("Browse 10k folder at 0 +dc:title", soap("Browse", browse_args(big, sort="+dc:title"), page(50))),
        ("Browse 10k folder at 9000", soap("Browse", browse_args(big, start=9000), page(50))),
        ("Browse 10k folder at 9000 +dc:title", soap("Browse", browse_args(big, start=9000, sort="+dc:title"),
                                                     page(50))),
        ("BrowseMetadata of an item", soap("Browse", browse_args(one_item, "BrowseMetadata", count=1), page(1))),
        ("All music at 0 +dc:title", soap("Browse", browse_args(all_music, sort="+dc:title"), page(50))),
        ("Artist list", soap("Browse", browse_args(artists), page(50))),
        ("Album list", soap("Browse", browse_args(albums), page(50))),
        ("Search title contains abc", soap("Search", [("ContainerID", "0"), ("SearchCriteria", abc), ("Filter", "*"),
                                                      ("StartingIndex", 0), ("RequestedCount", 50),
                                                      ("SortCriteria", "")], returned)),
        ("Search audio and title contains abc", soap("Search", [("ContainerID", "0"), ("SearchCriteria", audio_abc),
                                                                ("Filter", "*"), ("StartingIndex", 0),
                                                                ("RequestedCount", 50), ("SortCriteria", "")],
                                                     returned)),
        ("GetSystemUpdateID (SOAP floor)", soap("GetSystemUpdateID", [], lambda body: b"<Id>" in body)),
        ("GET description (HTTP floor)", Request("GET", server.description_path)),
        ("GET 4 MB file", Request("GET", file_path, expect=lambda body: len(body) >= 4000000)),
        ("GET 1 MB range", Request("GET", file_path, {"Range": "bytes=1000000-1999999"},
                                   expect=lambda body: len(body) == 1000000)),
    ]
    return [(name, request, file_port if request.path == file_path else server.port) for name, request in cases]


def own_median(log, offset, warmup):
    """The median time mdbd's own code took for the Browse or Search requests logged after offset,
    the first warmup of them left out: from the moment libupnp hands the action over until the answer
    is handed back, without receiving, parsing, printing and sending, which are the stack's. None for
    requests that mdbd does not log with a time."""
    with open(log) as f:
        f.seek(offset)
        times = [float(t) for t in re.findall(r"-> \S+ \d+/\d+ (\d+\.\d+) ms$", f.read(), re.M)][warmup:]
    return statistics.median(times) / 1000 if times else None


def measure(request, host, port, warmup, count):
    for _ in range(warmup):
        request.send(host, port)
    times, errors, size = [], 0, 0
    for _ in range(count):
        elapsed, size, right = request.send(host, port)
        times.append(elapsed)
        errors += not right
    times.sort()
    return statistics.median(times), times[min(len(times) - 1, int(len(times) * 0.95))], errors, size


# The cases of every server, set before the client processes fork (a request holds functions,
# which a process pool cannot send).
CASES = {}


def _client(arguments):
    server, index, seconds = arguments
    _, request, port = CASES[server][index]
    host = "127.0.0.1"
    done = errors = 0
    deadline = time.monotonic() + seconds
    while time.monotonic() < deadline:
        _, _, right = request.send(host, port)
        done += 1
        errors += not right
    return done, errors


def concurrent(pool, server, index, clients, seconds):
    results = pool.map(_client, [(server, index, seconds)] * clients)
    return sum(r[0] for r in results) / seconds, sum(r[1] for r in results)


# ---------------------------------------------------------------------------------------------

def versions(mdbd):
    def line_of(command, pattern=""):
        """The first line of the command's output that holds pattern ("?" when there is none)."""
        try:
            lines = subprocess.run(command, capture_output=True, text=True, timeout=10).stdout.splitlines()
        except (OSError, subprocess.TimeoutExpired):
            return "?"
        return next((line.strip() for line in lines if pattern in line), "?")
    cpu = re.search(r"model name\s*:\s*(.*)", open("/proc/cpuinfo").read())
    return ("- machine: %s, %d CPUs (%s), Linux %s\n- MiniDLNA: %s\n- %s\n"
            % (cpu.group(1) if cpu else platform.machine(), os.cpu_count(), platform.machine(), platform.release(),
               line_of(["minidlnad", "-V"], "Version"), line_of([mdbd, "--version"], "mdbd")))


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--mdbd", required=True)
    parser.add_argument("--tag-tree", required=True)
    parser.add_argument("--tree", required=True, help="the media tree (made once, kept)")
    parser.add_argument("--work", required=True)
    parser.add_argument("--out", help="the results file")
    parser.add_argument("--tracks", type=int, default=TRACKS)
    parser.add_argument("--big", type=int, default=BIG_FOLDER)
    parser.add_argument("--count", type=int, default=200, help="measured requests per case")
    parser.add_argument("--seconds", type=float, default=5, help="of each concurrent run")
    parser.add_argument("--clients", type=int, default=8)
    parser.add_argument("--only", help="a regular expression: the cases to run")
    options = parser.parse_args()
    options.tree, options.work = os.path.abspath(options.tree), os.path.abspath(options.work)
    subprocess.run(["ip", "link", "set", "lo", "multicast", "on"], check=False)
    make_tree(options.tree, options.tag_tree, options.tracks, options.big)
    os.makedirs(options.work, exist_ok=True)
    expected = options.tracks + 1
    names = {
        "MiniDLNA": {"music": "Music", "all": "All Music", "artists": "Artist", "albums": "Album", "folders": "Folders"},
        "mdbd": {"music": "Music", "all": "All Music", "artists": "Artists", "albums": "Albums", "folders": "Folders"},
    }
    servers = []
    try:
        # One scan at a time, so that neither shares the machine with the other's scan.
        scans = {}
        for start in (lambda: start_minidlna(options.tree, options.work),
                      lambda: start_mdbd(options.mdbd, options.tree, options.work)):
            server = start()
            servers.append(server)
            scans[server.name] = wait_for_scan(server, [names[server.name]["music"], names[server.name]["all"]],
                                               expected, 1800)
            print("%s: first scan %.1f s" % (server.name, scans[server.name]), flush=True)
        time.sleep(2)
        CASES.update({s.name: cases_of(s, names[s.name], options.tracks) for s in servers})
        rows = []
        print("%-38s %20s %20s %10s %7s %8s %8s %7s" % ("case", "MiniDLNA", "mdbd", "mdbd own", "ratio", "req/s",
                                                        "req/s", "errors"))
        with multiprocessing.Pool(options.clients) as pool:
            for index, (name, _, _) in enumerate(CASES["MiniDLNA"]):
                if options.only and not re.search(options.only, name):
                    continue
                row = [name]
                for server in servers:
                    _, request, port = CASES[server.name][index]
                    offset = os.path.getsize(server.log_path)
                    median, p95, errors, size = measure(request, server.host, port, 10, options.count)
                    own = own_median(server.log_path, offset, 10) if server.name == "mdbd" else None
                    rate, concurrent_errors = concurrent(pool, server.name, index, options.clients, options.seconds)
                    row.append((median, p95, errors + concurrent_errors, rate, size, own))
                rows.append(row)
                print_row(row, flush=True)
        write_results(options, scans, servers, rows)
    finally:
        for server in servers:
            server.stop()


def cell(name, result):
    median, p95, _, _, size, _ = result
    if name.startswith("GET") and size >= 1000000:
        return "%.0f MB/s" % (size / median / 1e6)
    return "%.2f / %.2f ms" % (median * 1000, p95 * 1000)


def own_cell(result):
    return "%.3f ms" % (result[5] * 1000) if result[5] is not None else ""


def print_row(row, flush=False):
    name, theirs, ours = row
    print("%-38s %20s %20s %10s %6.2fx %8.0f %8.0f %3d %3d"
          % (name, cell(name, theirs), cell(name, ours), own_cell(ours), theirs[0] / ours[0], theirs[3], ours[3],
             theirs[2], ours[2]), flush=flush)


def write_results(options, scans, servers, rows):
    lines = ["| case | MiniDLNA median / p95 | mdbd median / p95 | mdbd's own code | ratio | "
             "MiniDLNA req/s (%d clients) | mdbd req/s | errors MiniDLNA / mdbd |" % options.clients,
             "|---|---|---|---|---|---|---|---|"]
    for name, theirs, ours in rows:
        lines.append("| %s | %s | %s | %s | %.2fx | %.0f | %.0f | %d / %d |" % (
            name, cell(name, theirs), cell(name, ours), own_cell(ours), theirs[0] / ours[0], theirs[3], ours[3],
            theirs[2], ours[2]))
    theirs, ours = servers
    lines.append("| first scan (to the complete TotalMatches) | %.1f s | %.1f s | | %.2fx | | | |"
                 % (scans[theirs.name], scans[ours.name], scans[theirs.name] / scans[ours.name]))
    lines.append("| peak RSS of the process tree | %.1f MB | %.1f MB | | %.2fx | | | |"
                 % (theirs.peak_rss / 1024, ours.peak_rss / 1024, theirs.peak_rss / max(ours.peak_rss, 1)))
    table = "\n".join(lines)
    print("\n" + table)
    if options.out:
        with open(options.out, "w") as f:
            f.write("# mdbd against MiniDLNA, end to end\n\n"
                    "Made by `make bench-server` on %s, in one run, both servers on one media tree over loopback "
                    "inside a private network namespace: %d MP3 tracks (one folder of %d, the rest in folders of "
                    "100), %d JPEG, one 4 MB MP3. Latency: %d requests after 10 unmeasured, each on a new "
                    "connection; ratio = MiniDLNA median / mdbd median (above 1: mdbd is faster). Concurrent: %d "
                    "clients for %.0f s. Files: MB/s of the median.\n\n%s\n\n%s\n\n"
                    "Floors: GetSystemUpdateID is each stack's cost of a trivial SOAP answer, the description GET "
                    "its cost of a small static file. mdbd answers artist and album pages from memory (sorted once "
                    "per catalogue version, no SQLite), so their time is what its stack takes to parse the request "
                    "and to print and send an answer of that size (30 KB). mdbd's own code: the median time from the "
                    "moment libupnp hands a Browse or Search to mdbd until mdbd hands the answer back (from its request "
                    "log, -v); the rest of its latency is libupnp's and the kernel's.\n"
                    % (datetime.date.today().isoformat(), options.tracks, options.big,
                       PHOTOS * options.tracks // TRACKS, options.count, options.clients, options.seconds,
                       versions(options.mdbd), table))


if __name__ == "__main__":
    main()
