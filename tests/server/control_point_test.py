#!/usr/bin/python3
"""mdbd as real control points meet it: GUPnP finds it by SSDP, reads its description, walks the
whole container tree in pages (every Result parsed by GUPnP-AV), searches, gets the errors a client
must understand, receives a SystemUpdateID event when a file is added, and fetches a resource by
its URL with a byte range. Runs inside a private network namespace (run_in_namespace.sh)."""
import os
import shutil
import sys
import time
import unittest

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from mdbd_fixture import GLib, GObject, GUPnPAV, ServerTest, get, run_loop_until, wait_until  # noqa: E402

# The media items of the sample tree (tests/tools/make-sample-tree.sh): title, class, MIME type.
SAMPLE_ITEMS = {
    "First Song": ("object.item.audioItem.musicTrack", "audio/mpeg"),
    "Second Song": ("object.item.audioItem.musicTrack", "audio/x-flac"),
    "Third Song": ("object.item.audioItem.musicTrack", "audio/mp4"),
    "memo": ("object.item.audioItem.musicTrack", "audio/x-wav"),
    "Small Clip": ("object.item.videoItem", "video/mp4"),
    "news": ("object.item.videoItem", "video/mpeg"),
    "Harbour at dawn": ("object.item.imageItem.photo", "image/jpeg"),
    "icon": ("object.item.imageItem.photo", "image/png"),
}


class ControlPointTest(ServerTest):
    control_point = True

    def test_description_names_a_dlna_media_server_with_icons(self):
        status, _, body = get(self.server.description)
        self.assertEqual(status, 200)
        text = body.decode()
        for part in ("urn:schemas-upnp-org:device:MediaServer:1", "<dlna:X_DLNADOC>DMS-1.50</dlna:X_DLNADOC>",
                     "<friendlyName>MDB test</friendlyName>", "<UDN>uuid:", "X_MS_MediaReceiverRegistrar:1"):
            self.assertIn(part, text)
        base = self.server.description.rsplit("/", 1)[0]
        for icon, magic in (("/icon-48.png", b"\x89PNG"), ("/icon-120.jpg", b"\xff\xd8")):
            status, _, image = get(base + icon)
            self.assertEqual((status, image[:len(magic)]), (200, magic), icon)

    def test_paged_walk_sees_every_object_once_with_exact_totals(self):
        titles, pending, visited = {}, ["0"], set()
        while pending:
            container = pending.pop()
            objects, total, start = [], None, 0
            while total is None or start < total:
                page, returned, total = self.cp.browse(container, start=start, count=3)
                self.assertEqual(returned, len(page), container)
                self.assertLessEqual(returned, 3)
                if not page:
                    break
                objects += page
                start += len(page)
            ids = [o.get_id() for o in objects]
            self.assertEqual(len(ids), total, "%s: TotalMatches against the objects listed" % container)
            self.assertEqual(len(set(ids)), len(ids), "%s: an object listed twice" % container)
            for o in objects:
                self.assertEqual(o.get_parent_id(), container, o.get_id())
                if isinstance(o, GUPnPAV.DIDLLiteContainer):
                    self.assertTrue(o.get_upnp_class().startswith("object.container"), o.get_id())
                    if o.get_id() not in visited:
                        visited.add(o.get_id())
                        pending.append(o.get_id())
                    continue
                resources = o.get_resources()
                self.assertEqual(len(resources), 1, o.get_title())
                info = resources[0].get_protocol_info()
                titles[o.get_title()] = (o.get_upnp_class(), info.get_mime_type())
                meta, returned, _ = self.cp.browse(o.get_id(), flag="BrowseMetadata", start=1)
                self.assertEqual([(m.get_id(), m.get_parent_id()) for m in meta], [(o.get_id(), container)])
        self.assertEqual(titles, SAMPLE_ITEMS)

    def test_folders_list_by_title_unless_told_otherwise(self):
        roots, _, _ = self.cp.browse("0.1.264")
        music = [o for o in self.cp.browse(roots[0].get_id())[0] if o.get_title() == "Music"][0]
        alpha = [o for o in self.cp.browse(music.get_id())[0] if o.get_title() == "Alpha"][0]
        songs = [o.get_title() for o in self.cp.browse(alpha.get_id())[0]]
        self.assertEqual(songs, sorted(songs))
        backwards = [o.get_title() for o in self.cp.browse(alpha.get_id(), sort="-dc:title")[0]]
        self.assertEqual(backwards, sorted(songs, reverse=True))
        # Genre values too, which the catalogue holds in the order they were met (Pop, Jazz).
        for sort, descending in (("", False), ("-dc:title", True)):
            genres = [o.get_title() for o in self.cp.browse("0.1.257", sort=sort)[0]]
            self.assertEqual(genres, sorted(genres, reverse=descending))
            self.assertEqual([o.get_title() for o in self.cp.browse("0.1.257", sort=sort, start=1, count=1)[0]],
                             genres[1:2])

    def test_search_and_the_errors_clients_understand(self):
        songs, _, total = self.cp.search("0", 'dc:title contains "Song"')
        self.assertEqual(sorted(o.get_title() for o in songs), ["First Song", "Second Song", "Third Song"])
        self.assertEqual(total, 3)
        _, returned, total = self.cp.search("0", 'upnp:class derivedfrom "object.item.audioItem"', count=2)
        self.assertEqual((returned, total), (2, 4))
        genres, _, total = self.cp.search("0.1.257", 'upnp:class = "object.container.genre.musicGenre"', count=1)
        self.assertEqual((len(genres), total), (1, 2), "a category search counts the named categories that match")
        # What Search finds below a category container browses back by its id and parentID.
        for container in ("0.1.257", genres[0].get_id()):
            for found in self.cp.search(container, 'upnp:class derivedfrom "object.item"')[0]:
                meta = self.cp.browse(found.get_id(), flag="BrowseMetadata")[0]
                self.assertEqual([m.get_title() for m in meta], [found.get_title()], found.get_id())
                siblings = [o.get_id() for o in self.cp.browse(found.get_parent_id())[0]]
                self.assertIn(found.get_id(), siblings)
        cases = [
            (lambda: self.cp.browse("0.1.264|999999", flag="BrowseMetadata"), 701),
            (lambda: self.cp.browse("0.1.256|999999", flag="BrowseMetadata"), 701),
            (lambda: self.cp.browse("no such id"), 701),
            (lambda: self.cp.browse("0", sort="+no:such"), 709),
            (lambda: self.cp.search("0.9.9", "*"), 710),
            (lambda: self.cp.search("0", "dc:title contains"), 708),
            (lambda: self.cp.browse("0", start="x"), 402),
            (lambda: self.cp.call(self.cp.cds, "Frobnicate", {}, []), 401),
        ]
        for number, (call, code) in enumerate(cases):
            with self.subTest(case=number), self.assertRaises(GLib.Error) as raised:
                call()
            self.assertEqual(raised.exception.code, code, "case %d" % number)

    def test_a_new_file_raises_system_update_id_and_is_found_until_removed(self):
        seen = []
        self.cp.cds.add_notify("SystemUpdateID", GObject.TYPE_UINT, lambda proxy, name, value: seen.append(value))
        self.cp.cds.set_subscribed(True)
        self.assertTrue(run_loop_until(lambda: seen, 10), "no initial event")
        copy = os.path.join(self.server.media, "Music/Alpha/Later Track.mp3")
        for change, songs in ((lambda: shutil.copy(os.path.join(self.server.media, "Music/Alpha/One.mp3"), copy), 2),
                              (lambda: os.unlink(copy), 1)):
            before = seen[-1]
            change()
            self.assertTrue(run_loop_until(lambda: seen[-1] > before, 20), "no SystemUpdateID event after a change")
            found, _, _ = self.cp.search("0", 'dc:title = "First Song"')
            self.assertEqual(len(found), songs, "the copy carries the same tags, so a second First Song")
        # The album list, which mdbd keeps between requests, follows the change of an album's only file.
        albums = lambda: [o.get_title() for o in self.cp.browse("0.1.262")[0]]  # noqa: E731
        three, aside = os.path.join(self.server.media, "Music/Beta/Three.m4a"), os.path.join(self.server.dir, "3.m4a")
        for move, present in (((three, aside), False), ((aside, three), True)):
            self.assertEqual("Beta Sessions" in albums(), not present)
            before = seen[-1]
            os.rename(*move)
            self.assertTrue(wait_until(lambda: ("Beta Sessions" in albums()) == present, 20), albums())
            self.assertTrue(run_loop_until(lambda: seen[-1] > before, 20))  # no event left unanswered
        self.cp.cds.set_subscribed(False)
        # Reading the folder's files is no change to it: no rescan follows the last one.
        mark = len(self.server.lines)
        time.sleep(2.5)
        self.assertEqual([line for line in self.server.lines[mark:] if "skipped:" in line or "rescanned" in line], [])

    def test_a_resource_is_served_by_its_url_with_ranges(self):
        song = self.cp.search("0", 'dc:title = "First Song"')[0][0]
        url = song.get_resources()[0].get_uri()
        with open(os.path.join(self.server.media, "Music/Alpha/One.mp3"), "rb") as f:
            data = f.read()
        status, headers, body = get(url, {"Range": "bytes=100-199"})
        self.assertEqual((status, body), (206, data[100:200]))
        self.assertEqual(headers["Content-Range"], "bytes 100-199/%d" % len(data))
        status, headers, body = get(url, method="HEAD")
        self.assertEqual((status, body, headers["Content-Length"]), (200, b"", str(len(data))))
        self.assertEqual(headers["transferMode.dlna.org"], "Streaming")
        for mode, status in (("Background", 200), ("Interactive", 406), ("Streaming", 200)):
            answer = get(url, {"transferMode.dlna.org": mode}, method="HEAD")
            self.assertEqual((answer[0], answer[1]["transferMode.dlna.org"] if status == 200 else mode), (status, mode))
        self.assertTrue(headers["contentFeatures.dlna.org"].startswith("DLNA.ORG_PN=MP3;DLNA.ORG_OP="))
        self.assertEqual(get(url, {"Range": "bytes=%d-" % len(data)})[0], 416)
        self.assertEqual(get(url)[2], data)

    def test_connection_manager_lists_what_it_serves(self):
        source, sink = self.cp.call(self.cp.cms, "GetProtocolInfo", {}, ["Source", "Sink"])
        self.assertIn("http-get:*:audio/mpeg:DLNA.ORG_PN=MP3;", source)
        self.assertEqual(sink, "")
        self.assertEqual(self.cp.call(self.cp.cms, "GetCurrentConnectionIDs", {}, ["ConnectionIDs"]), ["0"])


if __name__ == "__main__":
    unittest.main(verbosity=2)
