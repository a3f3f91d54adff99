#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
# report_test.py ZELDB SAMPLES: the page of the sample controller as a browser shows it.
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

from selenium import webdriver
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys

ZELDB, SAMPLES = sys.argv[1], pathlib.Path(sys.argv[2])
TABLES = ["inventory", "adapters", "processors", "drives", "firmware"]
HOSTILE = "<script>document.title='run'</script>\"'&"


def zeldb(*arguments):
    return subprocess.run([ZELDB, *map(str, arguments)], check=True, capture_output=True, text=True).stdout


def rows(*command):
    return json.loads(zeldb(*command, "--json"))["rows"]


class Report(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        folder = pathlib.Path(cls.folder.name)
        os.environ.update(ZEL_DB_URL=f"sqlite://{folder}/inventory", ZEL_PLATFORM_DIR=str(SAMPLES), HOME=str(folder))
        hostile = folder / "hostile.sql"
        text = HOSTILE.replace("'", "''")
        hostile.write_text(f"update PCIAdapter set CardName='{text}' where Location=1 and SlotNo=1;")
        zeldb("init")
        zeldb("load", *(SAMPLES / f"{table}.sql" for table in TABLES), hostile)
        zeldb("load", "--database", "propertiesdb", SAMPLES / "properties.sql")
        cls.page = folder / "report.html"
        zeldb("report", "--name", "bmc <7>", cls.page)
        options = webdriver.ChromeOptions()
        for argument in ["--headless", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage"]:
            options.add_argument(argument)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        cls.browser = webdriver.Chrome(options=options)
        cls.browser.get(cls.page.as_uri())

    @classmethod
    def tearDownClass(cls):
        cls.browser.quit()
        cls.folder.cleanup()

    def shown(self, place):
        return self.browser.find_element(By.ID, place).text

    def test_every_slot_and_bay_is_drawn(self):
        places = {f"slot-{row['Location']}-{row['SlotNo']}": row["CardName"] for row in rows("slots")}
        shapes = {2: "bay-2", 3: "m2-3", 4: "bay-4"}
        for row in rows("disks"):
            if row["LocationId"] in shapes:
                places.setdefault(f"{shapes[row['LocationId']]}-{row['BayNo']}", row["Model"])
        self.assertGreater(len(places), 20)
        for place, name in places.items():
            self.assertIn(" ".join(name.split()), " ".join(self.shown(place).split()), place)
        empty = len(self.browser.find_elements(By.CSS_SELECTOR, ".place.empty"))
        backplanes = rows("backplanes")[0]
        self.assertEqual(empty, backplanes["MaxDrives"] - sum(place.startswith("bay-2-") for place in places))

    def test_health_is_readable_without_colour(self):
        self.assertIn("! Degraded", self.shown("slot-1-8"))
        attention = self.browser.find_element(By.CLASS_NAME, "attention").text
        self.assertIn("Slot 8 (Degraded)", attention)
        for option in ["--failed", "--pending"]:
            for row in rows("firmware", option):
                self.assertIn(row["DeviceName"] + ": ", attention)

    def test_a_click_shows_the_details(self):
        details = self.browser.find_element(By.ID, "about-slot-1-2")
        self.assertFalse(details.is_displayed())
        self.browser.find_element(By.ID, "slot-1-2").click()
        self.assertTrue(details.is_displayed())
        text = re.sub("[✓!✗?] ", "", " ".join(details.text.split()))
        self.assertEqual(text, "Slot 2 " + " ".join(zeldb("show", "2").split()) + " Close")
        details.find_element(By.CLASS_NAME, "close").click()
        self.assertFalse(details.is_displayed())

    def test_texts_are_shown_and_not_run(self):
        self.assertIn(HOSTILE, self.shown("slot-1-1"))
        self.assertEqual(self.browser.title, "bmc <7>: hardware inventory")

    def test_the_filter_leaves_what_has_the_words(self):
        shown = lambda: [row.text for row in self.browser.find_elements(By.CSS_SELECTOR, "#disks tbody tr, .place")
                         if row.is_displayed()]
        everything = shown()
        field = self.browser.find_element(By.CSS_SELECTOR, "#filter input")
        field.send_keys("bay nvme")
        filtered = shown()
        field.send_keys(Keys.CONTROL, "a")
        field.send_keys(Keys.DELETE)
        self.assertEqual(shown(), everything)
        self.assertEqual(filtered, [row for row in everything if "bay" in row.lower() and "nvme" in row.lower()])
        self.assertTrue(0 < len(filtered) < len(everything))

    def test_nothing_is_fetched_and_nothing_complains(self):
        self.assertEqual(self.browser.execute_script("return performance.getEntriesByType('resource')"), [])
        self.assertEqual(self.browser.get_log("browser"), [])

    def test_a_phone_need_not_scroll_sideways(self):
        self.browser.execute_cdp_cmd(
            "Emulation.setDeviceMetricsOverride", {"width": 360, "height": 700, "deviceScaleFactor": 2, "mobile": True})
        width = self.browser.execute_script("return document.documentElement.scrollWidth")
        self.browser.execute_cdp_cmd("Emulation.clearDeviceMetricsOverride", {})
        self.assertLessEqual(width, 360)

    def test_masked(self):
        masked = self.page.with_name("masked.html")
        zeldb("report", "--mask", masked)
        text = masked.read_text()
        for row in rows("slots") + rows("disks"):
            if row["SerialNo"]:
                self.assertIn(row["SerialNo"], self.page.read_text())
                self.assertNotIn(row["SerialNo"], text)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
