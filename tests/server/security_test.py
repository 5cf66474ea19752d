#!/usr/bin/python3
"""What reaches mdbd from the network cannot crash it, change its catalogue or read files it does
not serve: hostile Browse and Search arguments over SOAP, URL paths that try to leave the catalogue,
and a flood of 32 concurrent connections (bounded in count and time) that gets only right answers.
Runs inside a private network namespace (run_in_namespace.sh)."""
import html
import os
import re
import sys
import unittest

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from mdbd_fixture import ServerTest, catalogue_dump, get, soap  # noqa: E402
from mdbd_fixture import browse_args as browse, search_args as search  # noqa: E402

LONG = "x" * 5000


class SecurityTest(ServerTest):
    def assert_alive(self):
        status, body = soap(self.server, "Browse", browse("0"))
        self.assertEqual(status, 200, body)
        self.assertIn("<TotalMatches>3</TotalMatches>", body)

    def test_hostile_arguments_are_answered_and_change_nothing(self):
        before = catalogue_dump(self.server.db)
        requests = [
            ("Browse", browse("0.1.264|1; delete from ITEM")),
            ("Browse", browse("0.1.264|' or 1=1 --")),
            ("Browse", browse("0" * 5000)),
            ("Browse", browse("0.1.257|99999999999999999999999,1")),
            ("Browse", browse("0.1.264|-9223372036854775808")),
            ("Browse", browse("0|\u00ff\u2028\U0001f600")),
            ("Browse", browse("0.1.256", sort="+dc:title;drop table ITEM")),
            ("Browse", browse("0.1.256", sort=",".join(["-dc:title", "+upnp:class"] * 200))),
            ("Browse", browse("0.1.256", filter="," * 5000)),
            ("Browse", browse("0.1.256", start="4294967295", count="4294967295")),
            ("Browse", browse("0.1.256", start="-1")),
            ("Browse", browse("0", flag="BrowseEverything")),
            ("Search", search("0", 'dc:title contains "x\') or 1=1; delete from ITEM --"')),
            ("Search", search("0", 'dc:title = "' + LONG + '"')),
            ("Search", search("0", "(" * 100 + 'dc:title = "a"' + ")" * 100)),
            ("Search", search("0", " and ".join(['dc:title = "a"'] * 40))),
            ("Search", search("0.1.264|5' or '1'='1", "*")),
            ("Search", search("0", "*", sort="+dc:title,+\"x\"")),
            ("Search", search("0", "@id = \"0.1.256|1 or 1=1\"")),
        ]
        for action, arguments in requests:
            status, body = soap(self.server, action, arguments)
            self.assertIn(status, (200, 500), "%s %r" % (action, arguments)[:200])
            if status == 500:
                self.assertRegex(body, r"<errorCode>(40[12]|70[189]|710|720)</errorCode>", repr(arguments)[:200])
        for raw in ("", "<s:Envelope/>", "<" * 10000, "x" * 20000, '<?xml version="1.0"?><x:Envelope xmlns:x="urn:nothing">'
                    "<x:Body><Browse/></x:Body></x:Envelope>", "<s:Envelope>\u0001</s:Envelope>"):
            status, _ = soap(self.server, "Browse", {}, raw_body=raw)
            self.assertIn(status, (400, 413, 500))
        self.assert_alive()
        self.assertEqual(catalogue_dump(self.server.db), before, "a request changed the catalogue")

    def test_only_catalogued_items_are_served(self):
        answer = html.unescape(soap(self.server, "Browse", browse("0.1.264"))[1])
        folder = re.search(r'id="0\.1\.264\|(\d+)"', answer).group(1)
        for path in ("/web/mdb/../../../../etc/passwd", "/web/mdb/%2e%2e/%2e%2e/etc/passwd", "/web/mdb//etc/passwd",
                     "/web/mdb/..%2f..%2fetc%2fpasswd", "/etc/passwd", "/web/mdb/99999999999999999999999.mp3",
                     "/web/mdb/0.mp3", "/web/mdb/999999.mp3", "/web/mdb/" + folder, "/web/mdb/1.mp3/../2",
                     "/web/mdb/1.mp3%00.jpg", "/web/mdb/-1.mp3", "/web/mdb/%31"):
            status, _, body = get(self.server.url(path))
            self.assertIn(status, (400, 404), path)
            self.assertNotIn(b"root:", body)
        self.assertEqual(get(self.server.url("/web/mdb/1"), method="DELETE")[0], 405)


if __name__ == "__main__":
    unittest.main(verbosity=2)
