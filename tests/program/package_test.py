"""What the build makes of the browser extension for stores and for Firefox."""

import json
import os
import subprocess
import tempfile
import unittest
import zipfile

from browsers import BUILD, SHARED

SOURCES = ["background.js", "icon-128.png", "icon-48.png", "manifest.json"]


class PackageTest(unittest.TestCase):
    def test_the_archive_is_the_extension_and_the_same_wherever_it_is_made(self):
        path = os.path.join(SHARED, "orvanta.xpi")
        with zipfile.ZipFile(path) as archive:
            self.assertIsNone(archive.testzip())
            self.assertEqual(archive.namelist(), SOURCES)
            packed = {name: archive.read(name) for name in SOURCES}
        for name in SOURCES[:-1]:
            with open(os.path.join(SHARED, "extension", name), "rb") as file:
                self.assertEqual(packed[name], file.read(), name)
        with open(os.path.join(SHARED, "extension", "manifest.json"), encoding="utf-8") as file:
            loaded = json.load(file)
        self.assertTrue(loaded.pop("key"))
        self.assertEqual(json.loads(packed["manifest.json"]), loaded, "all but our own key")

        with tempfile.TemporaryDirectory() as folder:
            self.pack_again(folder, packed, path)

    def pack_again(self, folder, packed, path):
        """In another place, order, time and zone, by somebody who is stricter."""
        for name, content in packed.items():
            with open(os.path.join(folder, name), "wb") as file:
                file.write(content)
            os.utime(os.path.join(folder, name), (1e9, 1e9))
            os.chmod(os.path.join(folder, name), 0o600)
        again = os.path.join(folder, "again.xpi")
        subprocess.run([os.path.join(BUILD, "browser-files"), "--archive", again,
                        *(os.path.join(folder, name) for name in reversed(SOURCES))],
                       env={"TZ": "Asia/Tokyo"}, check=True)
        for other in (again, os.path.join(BUILD, "orvanta-chromium.zip")):
            with open(path, "rb") as mine, open(other, "rb") as theirs:
                self.assertEqual(mine.read(), theirs.read(), other)
