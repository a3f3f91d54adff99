#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
# redfish_test.py ZELDB PROJECT CLASS: what `zeldb redfish` writes about the sample controller, an empty inventory and
# hostile texts, on both engines.
import functools
import http.server
import json
import os
import pathlib
import subprocess
import sys
import threading
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "support"))
from sample_inventory import PROJECT, Inventory, rows, zeldb  # noqa: E402

SCHEMAS = pathlib.Path(os.environ.get("ZELDB_REDFISH_SCHEMAS", PROJECT.parent / "shared" / "redfish"))
SKIPPED = 77
SYSTEM, CHASSIS = "/redfish/v1/Systems/1", "/redfish/v1/Chassis/1"
SECRET = "UPDATE PCISetting SET CurrentValue='marker', PendingValue='marker' WHERE Type=5;"


def resources(folder):
    root = folder / "redfish" / "v1"
    return {"/redfish/v1" + str(path.parent)[len(str(root)):]: json.loads(path.read_text())
            for path in root.rglob("index.json")}


class IsValid(Inventory):
    def check(self, name, *options):
        folder = self.path / name
        zeldb("redfish", folder, *options)
        checked = subprocess.run([SCHEMAS / "check", folder], capture_output=True, text=True)
        self.assertEqual(checked.returncode, 0, f"{name}: {checked.stdout[-3000:]}{checked.stderr}")
        return len(resources(folder))

    def test_by_the_public_schemas(self):
        for engine in self.engines():
            empty = self.check(f"{engine}-empty")
            self.load_sample()
            self.assertGreater(self.check(f"{engine}-sample"), empty + 100)
            self.check(f"{engine}-masked", "--mask")
            for round_, text in enumerate(self.hostile()):
                with self.subTest(engine=engine, text=text):
                    self.assertGreater(self.check(f"{engine}-hostile-{round_}"), empty + 80)


class Served(http.server.SimpleHTTPRequestHandler):
    extensions_map = {".json": "application/json"}
    index_pages = ["index.json"]

    def translate_path(self, path):
        place = pathlib.Path(super().translate_path(path))
        return str(place / "index.json" if place.is_dir() else place)

    def log_message(self, *_):
        pass


class IsRead(Inventory):
    def setUp(self):
        super().setUp()
        next(self.engines())
        self.load_sample()
        self.load(SECRET)
        self.tree = self.written("tree")

    def written(self, name, *options):
        zeldb("redfish", self.path / name, *options)
        return self.path / name

    def serve(self):
        server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), functools.partial(Served, directory=self.tree))
        threading.Thread(target=server.serve_forever, daemon=True).start()
        self.addCleanup(server.server_close)
        self.addCleanup(server.shutdown)
        return f"127.0.0.1:{server.server_port}"

    def test_by_a_client(self):
        host = self.serve()

        def ask(*words):
            command = ["redfishtool", "-r", host, "-n", "-S", "IfSendingCredentials", "-A", "None", *words]
            return json.loads(subprocess.run(command, check=True, capture_output=True, text=True).stdout)

        processors, memory = rows("processors"), rows("memory")
        system = ask("Systems", "-I", "1")
        self.assertEqual(system["ProcessorSummary"]["Count"], len(processors))
        self.assertEqual(system["ProcessorSummary"]["CoreCount"], sum(row["CoreCount"] for row in processors))
        shown = {one["Name"]: one for one in ask("Systems", "-I", "1", "Processors", "-a")["Members"]}
        for row in processors:
            one = shown[row["Socket"]]
            self.assertEqual([one["Model"], one["SerialNumber"], one["TotalThreads"]],
                             [row["Version"], row["SerialNo"], row["ThreadCount"]])
        modules = [ask("raw", "GET", member["@odata.id"]) for member in ask("raw", "GET", system["Memory"]["@odata.id"])["Members"]]
        shown = {one["Name"]: one for one in modules}
        self.assertEqual({row["DevLocator"]: row["MemSize"] for row in memory},
                         {name: one["CapacityMiB"] for name, one in shown.items()})
        members = ask("raw", "GET", "/redfish/v1/UpdateService/FirmwareInventory")["Members"]
        firmware = [ask("raw", "GET", member["@odata.id"]) for member in members]
        running = [(one["Name"], one["Version"]) for one in firmware if one.get("Active")]
        components = [row for row in rows("firmware") if row["Kind"] == "component"]
        self.assertEqual(sorted(running), sorted((row["DeviceName"], row["VersionString"]) for row in components))
        waiting = [one["Version"] for one in firmware if one.get("Active") is False]
        self.assertEqual(waiting, [row["PendingVersionString"] for row in rows("firmware", "--pending")])
        failed = [one["Status"]["Conditions"][0]["Message"] for one in firmware if one["Status"].get("Health") == "Warning"]
        self.assertEqual(failed, [row["UpdateErrString"] for row in rows("firmware", "--failed")])

    def test_links_lead_back(self):
        tree = resources(self.tree)

        def linked(place, *path):
            value = tree[place]
            for step in path:
                value = value.get(step, {})
            return {one["@odata.id"] for one in (value if isinstance(value, list) else [value]) if one}

        pairs = [
            ("Drive", ["Links", "Storage"], ["Drives"]),
            ("Drive", ["Links", "PCIeFunctions"], ["Links", "Drives"]),
            ("Drive", ["Links", "Chassis"], ["Links", "Drives"]),
            ("StorageController", ["Links", "PCIeFunctions"], ["Links", "StorageControllers"]),
            ("NetworkDeviceFunction", ["Links", "PCIeFunction"], ["Links", "NetworkDeviceFunctions"]),
            ("Processor", ["Links", "PCIeDevice"], ["Links", "Processors"]),
            ("Processor", ["Links", "PCIeFunctions"], ["Links", "Processor"]),
            ("Processor", ["Links", "Chassis"], ["Links", "Processors"]),
            ("ComputerSystem", ["Links", "Chassis"], ["Links", "ComputerSystems"]),
            ("Manager", ["Links", "ManagerForServers"], ["Links", "ManagedBy"]),
            ("Manager", ["Links", "ManagerForChassis"], ["Links", "ManagedBy"]),
            ("Storage", ["Links", "Enclosures"], ["Links", "Storage"]),
        ]
        for kind, there, back in pairs:
            those = [place for place, one in tree.items() if one["@odata.type"].startswith(f"#{kind}.v")]
            targets = [(place, target) for place in those for target in linked(place, *there)]
            self.assertTrue(targets, (kind, there))
            for place, target in targets:
                self.assertIn(place, linked(target, *back), (target, back))

    def test_values(self):
        tree = resources(self.tree)
        bay, disk = tree[CHASSIS + "/Drives/Bay-0"], next(row for row in rows("disks") if row["Location"] == "Bay 0")
        self.assertEqual([bay["SerialNumber"], bay["CapacityBytes"], bay["RotationSpeedRPM"], bay["Protocol"]],
                         [disk["SerialNo"], 4 * 10**12, disk["RotationRate"], "SATA"])
        self.assertEqual(tree[bay["EnvironmentMetrics"]["@odata.id"]]["TemperatureCelsius"]["Reading"], disk["Temperature"])
        device = tree[CHASSIS + "/PCIeDevices/00010001"]
        self.assertEqual([device["UUID"], device["PCIeInterface"], device["Slot"]["PCIeType"], device["Slot"]["Lanes"]],
                         ["5A0E64B0-C2D7-11EF-A1B2-005056C00001",
                          {"PCIeType": "Gen4", "MaxPCIeType": "Gen4", "LanesInUse": 8, "MaxLanes": 8}, "Gen4", 8])
        port = tree[CHASSIS + "/NetworkAdapters/00010002/Ports/01310000-1"]
        self.assertEqual([port["CurrentSpeedGbps"], port["MaxSpeedGbps"], port["SFP"]["Type"], port["Ethernet"]],
                         [25, 25, "SFP28", {"AssociatedMACAddresses": ["02:00:5E:20:00:01"]}])
        settings = tree[tree[SYSTEM + "/Bios"]["@Redfish.Settings"]["SettingsObject"]["@odata.id"]]
        registry = tree["/redfish/v1/Registries/" + settings["AttributeRegistry"]]["RegistryEntries"]["Attributes"]
        known = {entry["Oem"]["Zeldb"]["SettingID"]: entry for entry in registry}
        for row in rows("pending"):
            name = known[row["SettingID"]]["AttributeName"]
            self.assertEqual([tree[SYSTEM + "/Bios"]["Attributes"][name], settings["Attributes"][name]],
                             [row["CurrentValue"], row["PendingValue"]])

    def test_mask_and_secrets(self):
        masked = "".join(path.read_text() for path in self.written("masked", "--mask").rglob("*.json"))
        shown = "".join(path.read_text() for path in self.tree.rglob("*.json"))
        self.assertNotIn("marker", shown)
        for command in ["slots"], ["processors"], ["memory"], ["disks"], ["ports"], ["vpd"], ["gpus", "--chips"]:
            for row in rows(*command):
                for key in {"SerialNo", "GPUChipSerialNumber", "PermanentAddress", "UUID"} & row.keys():
                    self.assertNotIn(row[key] or "-none-", masked)

    def test_an_export_gives_the_same(self):
        export = self.path / "export"
        zeldb("export", export)
        os.environ["ZEL_DB_URL"] = f"sqlite://{self.path}/nothing"
        self.assertEqual(resources(self.written("again", "--from", export)), resources(self.tree))

    def test_a_tree_is_replaced_as_a_whole(self):
        (self.tree / "redfish" / "v1" / "old").mkdir()
        self.assertIn("exists already", zeldb("redfish", self.tree, status=1))
        zeldb("redfish", "--force", self.tree)
        self.assertEqual([path.name for path in self.tree.iterdir()], ["redfish"])
        self.assertFalse((self.tree / "redfish" / "v1" / "old").exists())
        other = self.path / "other"
        (other / "redfish" / "mine").mkdir(parents=True)
        self.assertIn("is no tree", zeldb("redfish", "--force", other, status=1))
        self.assertTrue((other / "redfish" / "mine").exists())


if __name__ == "__main__":
    if sys.argv[3] == "IsValid" and not (SCHEMAS / "check").exists():
        print(f"skipped: there is no {SCHEMAS}/check")
        sys.exit(SKIPPED)
    unittest.main(argv=sys.argv[:1], defaultTest=sys.argv[3])
