#!/usr/bin/python3
"""mdbd across its life: a damaged catalogue is set aside and rebuilt, a restart keeps the device's
UDN and SystemUpdateID (one after a kill skips the ids it may not have saved), a moved folder is
followed where it went, and without watching SIGHUP rescans. Runs inside a private network
namespace (run_in_namespace.sh)."""
import glob
import os
import re
import shutil
import signal
import sys
import tempfile
import time
import unittest

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from mdbd_fixture import Mdbd, get, search_args, soap, wait_until  # noqa: E402


def udn_and_update_id(server):
    udn = re.search(r"<UDN>(uuid:[^<]+)</UDN>", get(server.description)[2].decode()).group(1)
    status, body = soap(server, "GetSystemUpdateID", {})
    assert status == 200, body
    return udn, int(re.search(r"<Id>(\d+)</Id>", body).group(1))


def titles(server):
    status, body = soap(server, "Search", search_args("0", 'upnp:class derivedfrom "object.item"', count="0"))
    assert status == 200, body
    return sorted(re.findall(r"&lt;dc:title&gt;([^&]*)&lt;", body))


class LifecycleTest(unittest.TestCase):
    def test_damaged_catalogue_is_set_aside_and_a_restart_keeps_the_device(self):
        work = tempfile.mkdtemp(prefix="mdbd-test-")
        shutil.copytree(os.environ["MDB_TEST_SAMPLE_TREE"], os.path.join(work, "media"))
        with open(os.path.join(work, "catalogue.db"), "wb") as f:
            f.write(b"not a catalogue at all" * 100)
        server = Mdbd(dir=work)
        try:
            aside = glob.glob(os.path.join(work, "catalogue.db.damaged-*"))
            self.assertEqual(len(aside), 1, "\n".join(server.lines))
            with open(aside[0], "rb") as f:
                self.assertTrue(f.read().startswith(b"not a catalogue"))
            before = udn_and_update_id(server)
            items = titles(server)
            self.assertEqual(len(items), 8)
        finally:
            self.assertEqual(server.stop(keep=True), 0)
        server = Mdbd(dir=work)
        try:
            udn, update_id = udn_and_update_id(server)
            self.assertEqual(udn, before[0])
            self.assertGreaterEqual(update_id, before[1])
            self.assertEqual(titles(server), items)
            server.process.kill()  # no clean stop: ids it answered with may be unsaved
            server.process.wait()
        finally:
            server.stop(keep=True)
        server = Mdbd(dir=work)
        try:
            self.assertGreater(udn_and_update_id(server)[1], update_id + 1000)
            self.assertEqual(titles(server), items)
        finally:
            self.assertEqual(server.stop(), 0)

    def test_a_moved_folder_is_followed_where_it_went(self):
        server = Mdbd()
        try:
            count = len(titles(server))
            os.rename(os.path.join(server.media, "Pictures/Trip"), os.path.join(server.media, "Video/Trip"))
            time.sleep(1.5)  # the move is rescanned before the next change
            shutil.copy(os.path.join(server.media, "Video/Trip/photo.jpg"), os.path.join(server.media, "Video/Trip/new.jpg"))
            self.assertTrue(wait_until(lambda: len(titles(server)) == count + 1, 20))
        finally:
            self.assertEqual(server.stop(), 0)

    def test_without_watching_sighup_rescans(self):
        server = Mdbd("--no-watch")
        try:
            before = titles(server)
            os.unlink(os.path.join(server.media, "Pictures/Trip/photo.jpg"))
            mark = len(server.lines)
            server.process.send_signal(signal.SIGHUP)
            server.wait_for(r"scanned \d+ media files", start=mark)
            after = titles(server)
            self.assertEqual(len(after), len(before) - 1)
        finally:
            self.assertEqual(server.stop(), 0)


if __name__ == "__main__":
    unittest.main(verbosity=2)
