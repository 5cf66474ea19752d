"""What the server tests share: an mdbd started on a copy of the sample media tree with a catalogue
of its own (inside the network namespace the test runs in), and a GUPnP control point that finds it
by SSDP. Every wait is bounded."""
import os
import re
import shutil
import signal
import subprocess
import tempfile
import threading
import time
import unittest
import urllib.request

import gi

gi.require_version("GUPnP", "1.6")
gi.require_version("GUPnPAV", "1.0")
gi.require_version("GSSDP", "1.6")
from gi.repository import GLib, GObject, GSSDP, GUPnP, GUPnPAV  # noqa: E402

CDS = "urn:schemas-upnp-org:service:ContentDirectory:1"
CMS = "urn:schemas-upnp-org:service:ConnectionManager:1"


class Mdbd:
    """mdbd on a copy of the sample tree; its log is kept in lines. Given the dir of an earlier
    server, it runs on that one's media and catalogue again. scanned=False returns once it serves,
    before its first scan is over."""

    def __init__(self, *extra, dir=None, env=None, scanned=True):
        self.dir = dir or tempfile.mkdtemp(prefix="mdbd-test-")
        self.media = os.path.join(self.dir, "media")
        if dir is None:
            shutil.copytree(os.environ["MDB_TEST_SAMPLE_TREE"], self.media)
        self.db = os.path.join(self.dir, "catalogue.db")
        self.lines = []
        self.process = subprocess.Popen(
            [os.environ["MDBD"], "--address", "127.0.0.1", "--db", self.db, "--name", "MDB test", "-vv", *extra,
             self.media],
            stderr=subprocess.PIPE, stdout=subprocess.DEVNULL, text=True, errors="replace",
            env=dict(os.environ, **(env or {})))
        self.reader = threading.Thread(target=self._read, daemon=True)
        self.reader.start()
        line = self.wait_for(r"serves .* on (http://\S+/description.xml) \(media files on port (\d+)\)")
        self.description, self.file_port = line.group(1), int(line.group(2))
        if scanned:
            self.wait_for(r"scanned \d+ media files")

    def _read(self):
        for line in self.process.stderr:
            self.lines.append(line.rstrip("\n"))

    def wait_for(self, pattern, seconds=60, start=0):
        """The first log line from index start that matches pattern, waiting at most seconds."""
        deadline = time.monotonic() + seconds
        while time.monotonic() < deadline:
            for line in self.lines[start:]:
                found = re.search(pattern, line)
                if found:
                    return found
            if self.process.poll() is not None:
                break
            time.sleep(0.05)
        raise AssertionError("mdbd never logged %r; its log:\n%s" % (pattern, "\n".join(self.lines)))

    def stop(self, keep=False):
        """SIGTERM; the exit status (0 for a clean stop). keep leaves media and catalogue."""
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGTERM)
            try:
                self.process.wait(timeout=20)
            except subprocess.TimeoutExpired:
                self.process.kill()
                self.process.wait()
        self.reader.join(10)
        self.process.stderr.close()
        if not keep:
            shutil.rmtree(self.dir, ignore_errors=True)
        return self.process.returncode

    def url(self, path):
        return "http://127.0.0.1:%d%s" % (self.file_port, path)


class ServerTest(unittest.TestCase):
    """One mdbd for the whole test class (and a GUPnP control point with control_point), which must
    stop cleanly at the end."""
    control_point = False

    @classmethod
    def setUpClass(cls):
        cls.server = Mdbd()
        cls.cp = ControlPoint() if cls.control_point else None

    @classmethod
    def tearDownClass(cls):
        status = cls.server.stop()
        assert status == 0, "mdbd did not stop cleanly (%s):\n%s" % (status, "\n".join(cls.server.lines))


def wait_until(condition, seconds):
    """Polls condition until it holds or the time is up; its last answer."""
    deadline = time.monotonic() + seconds
    while not condition() and time.monotonic() < deadline:
        time.sleep(0.2)
    return condition()


def browse_args(object_id, flag="BrowseDirectChildren", filter="*", start="0", count="0", sort=""):
    return {"ObjectID": object_id, "BrowseFlag": flag, "Filter": filter, "StartingIndex": start,
            "RequestedCount": count, "SortCriteria": sort}


def search_args(container, criteria, sort="", filter="*", count="10"):
    return {"ContainerID": container, "SearchCriteria": criteria, "Filter": filter, "StartingIndex": "0",
            "RequestedCount": count, "SortCriteria": sort}


def get(url, headers=None, method="GET"):
    """(status, headers, body) of one HTTP request; errors are answers too."""
    request = urllib.request.Request(url, headers=headers or {}, method=method)
    try:
        with urllib.request.urlopen(request, timeout=20) as answer:
            return answer.status, answer.headers, answer.read()
    except urllib.error.HTTPError as error:
        return error.code, error.headers, error.read()


def run_loop_until(done, seconds):
    """Runs the GLib main loop until done() or the time is up; done()'s last answer."""
    context = GLib.MainContext.default()
    deadline = time.monotonic() + seconds
    while not done() and time.monotonic() < deadline:
        context.iteration(False)
        time.sleep(0.01)
    return done()


class ControlPoint:
    """A GUPnP control point on loopback with the proxies of the server's services."""

    def __init__(self, udn=None, seconds=30):
        self.context = GUPnP.Context.new_full("lo", None, 0, GSSDP.UDAVersion.VERSION_1_0)
        self.proxies = {}
        self.points = []
        for service in (CDS, CMS):
            point = GUPnP.ControlPoint.new(self.context, service)
            point.connect("service-proxy-available", self._found, service)
            point.set_active(True)
            self.points.append(point)
        if not run_loop_until(lambda: len(self.proxies) == 2, seconds):
            raise AssertionError("no MediaServer found by SSDP within %d s" % seconds)
        self.cds, self.cms = self.proxies[CDS], self.proxies[CMS]

    def _found(self, point, proxy, service):
        self.proxies.setdefault(service, proxy)

    def call(self, proxy, name, inputs, outputs):
        """Calls action name with inputs (name: str); returns the named outputs as strings. A SOAP
        fault raises GLib.Error whose code is the UPnP error."""
        values = []
        for value in inputs.values():
            gvalue = GObject.Value(GObject.TYPE_STRING)
            gvalue.set_string(str(value))
            values.append(gvalue)
        action = GUPnP.ServiceProxyAction.new_from_list(name, list(inputs.keys()), values)
        proxy.call_action(action, None)
        ok, out = action.get_result_list(list(outputs), [GObject.TYPE_STRING] * len(outputs))
        if not ok:
            raise AssertionError("%s answered without %s" % (name, outputs))
        return out

    def browse(self, object_id, flag="BrowseDirectChildren", start=0, count=0, sort="", filter="*"):
        """(objects, NumberReturned, TotalMatches) of one Browse, the objects parsed by GUPnP-AV."""
        result, returned, total = self.call(self.cds, "Browse", {
            "ObjectID": object_id, "BrowseFlag": flag, "Filter": filter, "StartingIndex": start,
            "RequestedCount": count, "SortCriteria": sort}, ["Result", "NumberReturned", "TotalMatches"])
        return parse_didl(result), int(returned), int(total)

    def search(self, container, criteria, start=0, count=0, sort=""):
        result, returned, total = self.call(self.cds, "Search", {
            "ContainerID": container, "SearchCriteria": criteria, "Filter": "*", "StartingIndex": start,
            "RequestedCount": count, "SortCriteria": sort}, ["Result", "NumberReturned", "TotalMatches"])
        return parse_didl(result), int(returned), int(total)


def parse_didl(text):
    """The objects of a DIDL-Lite Result, as GUPnP-AV's parser reads them."""
    objects = []
    if re.fullmatch(r"<DIDL-Lite[^>]*>\s*</DIDL-Lite>", text.strip()):
        return objects  # GUPnP-AV refuses a DIDL-Lite without objects, which an empty list is
    parser = GUPnPAV.DIDLLiteParser()
    parser.connect("object-available", lambda p, o: objects.append(o))
    if not parser.parse_didl(text):
        raise AssertionError("GUPnP-AV cannot parse the Result:\n" + text)
    return objects


def envelope(action, arguments, service=CDS):
    """The SOAP envelope of an action with its arguments, as clients write it."""
    from xml.sax.saxutils import escape

    args = "".join("<%s>%s</%s>" % (k, escape(str(v)), k) for k, v in arguments.items())
    return ('<?xml version="1.0" encoding="utf-8"?><s:Envelope xmlns:s="http://schemas.xmlsoap.org/soap/envelope/" '
            's:encodingStyle="http://schemas.xmlsoap.org/soap/encoding/"><s:Body><u:%s xmlns:u="%s">%s</u:%s>'
            "</s:Body></s:Envelope>" % (action, service, args, action))


def soap(server, action, arguments, service=CDS, control="/control/cds", raw_body=None, timeout=20):
    """(HTTP status, body) of one SOAP request sent as clients send it, on a new connection."""
    import http.client

    host, port = server.description.split("//")[1].split("/")[0].split(":")
    body = envelope(action, arguments, service) if raw_body is None else raw_body
    connection = http.client.HTTPConnection(host, int(port), timeout=timeout)
    try:
        data = body.encode() if isinstance(body, str) else body
        connection.request("POST", control, data, {"Content-Type": 'text/xml; charset="utf-8"',
                                                   "SOAPACTION": '"%s#%s"' % (service, action)})
        answer = connection.getresponse()
        return answer.status, answer.read().decode("utf-8", "replace")
    finally:
        connection.close()


def catalogue_dump(path):
    """Every row of the catalogue, for comparing before and after (read alongside the server)."""
    import sqlite3
    connection = sqlite3.connect("file:%s?mode=ro" % path, uri=True)
    try:
        return list(connection.iterdump())
    finally:
        connection.close()
