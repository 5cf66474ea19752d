#!/usr/bin/python3
"""Uploads to mdbd as a DLNA client makes them: CreateObject (GUPnP), the file POSTed to its
importUri, the item browsable at once and played back once complete, DestroyObject; an upload
whose file never comes is gone after the time-out (on a clock sped up by fast_clock.so); and
hostile uploads write nothing outside the upload folder, delete no user file and leave the catalogue
consistent. Runs inside a private network namespace (run_in_namespace.sh)."""
import glob
import html
import os
import re
import socket
import sqlite3
import sys
import unittest
import urllib.parse

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from mdbd_fixture import Mdbd, ServerTest, browse_args, get, parse_didl, search_args, soap, wait_until  # noqa: E402

MUSIC = "object.item.audioItem.musicTrack"


def elements(title, size=None, cls=MUSIC, mime="audio/mpeg:DLNA.ORG_PN=MP3"):
    size_attribute = ' size="%d"' % size if size is not None else ""
    return ('<DIDL-Lite xmlns="urn:schemas-upnp-org:metadata-1-0/DIDL-Lite/" '
            'xmlns:dc="http://purl.org/dc/elements/1.1/" xmlns:upnp="urn:schemas-upnp-org:metadata-1-0/upnp/">'
            '<item id="" parentID="DLNA.ORG_AnyContainer" restricted="0"><dc:title>%s</dc:title>'
            '<upnp:class>%s</upnp:class><res protocolInfo="http-get:*:%s"%s/></item></DIDL-Lite>'
            % (html.escape(title), cls, mime, size_attribute))


def error_of(answer):
    """The UPnP error of a SOAP answer (status, body), 0 for success."""
    status, body = answer
    return 0 if status == 200 else int(re.search(r"<errorCode>(\d+)</errorCode>", body).group(1))


def create(server, title, **kwargs):
    """(UPnP error or 0, ObjectID, importUri, title) of a CreateObject sent as raw SOAP."""
    status, body = soap(server, "CreateObject", {"ContainerID": "DLNA.ORG_AnyContainer",
                                                 "Elements": elements(title, **kwargs)})
    if status != 200:
        return error_of((status, body)), None, None, None
    result = html.unescape(re.search(r"<Result>(.*)</Result>", body, re.S).group(1))
    return (0, re.search(r"<ObjectID>([^<]*)</ObjectID>", body).group(1),
            re.search(r'importUri="([^"]*)"', result).group(1), re.search(r"<dc:title>([^<]*)<", result).group(1))


def post(url, data, length=None, cut=False):
    """The HTTP status of a POST of data to url; with cut, the connection closes after data."""
    parts = urllib.parse.urlsplit(url)
    with socket.create_connection((parts.hostname, parts.port), timeout=20) as connection:
        connection.sendall(b"POST %s HTTP/1.1\r\nHost: %s\r\nContent-Type: audio/mpeg\r\nContent-Length: %d\r\n"
                           b"Connection: close\r\n\r\n" % (parts.path.encode(), parts.netloc.encode(),
                                                           len(data) if length is None else length) + data)
        if cut:
            return None
        answer = connection.makefile("rb").readline()
    return int(answer.split()[1]) if answer else None


def metadata_error(server, object_id):
    """The UPnP error of a BrowseMetadata of object_id, 0 when the object exists."""
    return error_of(soap(server, "Browse", browse_args(object_id, flag="BrowseMetadata")))


def user_files(media):
    """Every file below media outside the upload folder, with its size."""
    return {path: os.path.getsize(path) for path in glob.glob(media + "/**", recursive=True)
            if os.path.isfile(path) and not path.startswith(media + "/upload/")}


def rows_without_file(db):
    """The item rows whose file is not on disk."""
    connection = sqlite3.connect("file:%s?mode=ro" % db, uri=True)
    try:
        rows = connection.execute(
            "with recursive path(id, flags, name) as (select id, flags, fileName from ITEM where parentID = 0 "
            "union all select ITEM.id, ITEM.flags, path.name || '/' || ITEM.fileName from ITEM join path "
            "on ITEM.parentID = path.id) select name from path where (flags & 127) != 2").fetchall()
    finally:
        connection.close()
    return [name for (name,) in rows if not os.path.isfile(name)]


class UploadTest(ServerTest):
    control_point = True

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        with open(os.path.join(cls.server.media, "Music/Alpha/One.mp3"), "rb") as f:
            cls.mp3 = f.read()

    def test_an_upload_is_browsable_at_once_played_back_and_destroyed(self):
        root = self.cp.browse("0.1.264")[0][0]
        upload = [o for o in self.cp.browse(root.get_id())[0] if o.get_title() == "upload"]
        self.assertEqual(len(upload), 1, "the upload folder is listed while empty")
        self.assertFalse(upload[0].get_restricted())
        self.assertEqual(self.cp.browse(upload[0].get_id())[2], 0)
        object_id, result = self.cp.call(self.cp.cds, "CreateObject", {
            "ContainerID": upload[0].get_id(), "Elements": elements("Later Song", size=len(self.mp3))},
            ["ObjectID", "Result"])
        import_uri = parse_didl(result)[0].get_resources()[0].get_import_uri()
        self.assertEqual(self.cp.browse(upload[0].get_id())[2], 1, "the folder's total follows CreateObject")
        pending = self.cp.browse(object_id, flag="BrowseMetadata")[0][0].get_resources()[0]
        self.assertEqual((pending.get_uri() or "", pending.get_import_uri()), ("", import_uri))
        # A change in the upload folder rescans it; the pending upload, still without a file, stays.
        mark = len(self.server.lines)
        with open(os.path.join(self.server.media, "upload", "other.mp3"), "wb") as other:
            other.write(self.mp3)
        self.server.wait_for(r"rescanned .*/upload: 1 added", start=mark, seconds=20)
        os.unlink(os.path.join(self.server.media, "upload", "other.mp3"))
        self.assertEqual(metadata_error(self.server, object_id), 0)
        self.assertEqual(post(import_uri, self.mp3), 200)
        self.assertEqual(post(import_uri, self.mp3), 409, "a second body for a complete upload")
        done = self.cp.browse(object_id, flag="BrowseMetadata")[0][0].get_resources()[0]
        self.assertEqual(get(done.get_uri())[2], self.mp3)
        self.cp.call(self.cp.cds, "DestroyObject", {"ObjectID": object_id}, [])
        self.assertEqual(metadata_error(self.server, object_id), 701)
        self.assertFalse(os.path.exists(os.path.join(self.server.media, "upload/Later Song.mp3")))

    def test_hostile_uploads_change_nothing_but_their_own_objects(self):
        before = user_files(self.server.media)
        # A title that would leave the folder, and a class the upload folder does not take.
        for title, kwargs in (("../../escape", {}), ("a/b", {}), (".hidden", {}), ("notes", {"mime": "text/plain:*"})):
            self.assertEqual(create(self.server, title, **kwargs)[0], 712, title)
        # Bodies where no upload waits.
        song = re.search(r'id="(0\.1\.256\|(\d+))"', html.unescape(
            soap(self.server, "Search", search_args("0", 'dc:title = "First Song"', count="1"))[1]))
        for path in ("/web/upload/%s.mp3" % song.group(2), "/web/upload/../../x.mp3", "/web/upload/%2e%2e%2f1.mp3",
                     "/web/upload/99999999999999999999.mp3"):
            self.assertIn(post(self.server.url(path), b"x" * 100), (404,), path)
        for object_id, error in ((song.group(1), 711), ("0.1.264", 711), ("0.1.264|999999", 701)):
            self.assertEqual(error_of(soap(self.server, "DestroyObject", {"ObjectID": object_id})), error, object_id)
        self.assertEqual(metadata_error(self.server, song.group(1)), 0, "a user's song survives DestroyObject")
        # A name taken by a file gets a free one; too large and cut-off bodies destroy their object.
        open(os.path.join(self.server.media, "upload", "memo.mp3"), "wb").close()
        status, large, uri, title = create(self.server, "memo", size=100)
        self.assertEqual((status, title), (0, "memo (2)"))
        self.assertEqual(post(uri, b"x" * 1000), 413)
        _, cut, uri, _ = create(self.server, "memo")
        post(uri, b"x" * 1000, length=100000, cut=True)
        for object_id in (large, cut):
            self.assertTrue(wait_until(lambda: metadata_error(self.server, object_id) == 701, 10), object_id)
        self.assertEqual(glob.glob(self.server.media + "/upload/.mdbd-upload-*"), [])
        os.unlink(os.path.join(self.server.media, "upload", "memo.mp3"))
        self.assertEqual(user_files(self.server.media), before)
        self.assertEqual(rows_without_file(self.server.db), [])

    def test_an_upload_whose_file_never_comes_is_destroyed(self):
        fast = Mdbd(env={"LD_PRELOAD": os.environ["MDB_FAST_CLOCK"],
                         "ASAN_OPTIONS": os.environ.get("ASAN_OPTIONS", "") + ":verify_asan_link_order=0"})
        try:
            status, object_id, _, _ = create(fast, "Never Sent")
            self.assertEqual((status, metadata_error(fast, object_id)), (0, 0))
            self.assertTrue(wait_until(lambda: metadata_error(fast, object_id) == 701, 20), "\n".join(fast.lines))
            self.assertEqual(rows_without_file(fast.db), [])
        finally:
            self.assertEqual(fast.stop(), 0)


if __name__ == "__main__":
    unittest.main(verbosity=2)
