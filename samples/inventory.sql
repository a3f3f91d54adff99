-- SPDX-License-Identifier: Apache-2.0
-- Inventory of the sample controller, database dmdb. Function key = segment * 2^24 + bus * 2^16 + device * 2^8 +
-- function, adapter key = Location * 2^16 + SlotNo. The board is segment 0, the slots are segment 1. PCIs._id is the
-- function key too. Health 0 is unknown, 2 well, 3 degraded.

-- PCI functions on the board: their link columns are not known.
INSERT INTO PCIs (_id, FunKey, DevKey, NodeIndex, SlotNo, SegNo, BusNo, DeviceNo, FunctionNo, Location, VendorId,
  DeviceId, SubVendorId, SubDeviceId, ClsCode, RevId, BridgeId, FunType, SlotDesignation) VALUES
  (5120, 5120, 5, 0, 5, 0, 0, 20, 0, 0, 32902, 7117, 32902, 29296, 787248, 9, 0, 1, 'Onboard USB controller'),
  (5888, 5888, 4, 0, 4, 0, 0, 23, 0, 0, 32902, 7074, 32902, 29296, 67073, 9, 0, 1, 'Onboard SATA controller'),
  (196608, 196608, 3, 0, 3, 0, 3, 0, 0, 0, 6659, 8192, 6659, 8192, 196608, 65, 0, 1, 'Onboard video'),
  (262144, 262144, 1, 0, 1, 0, 4, 0, 0, 0, 32902, 5409, 32902, 5409, 131072, 1, 0, 2, 'Onboard LAN'),
  (262145, 262145, 1, 0, 1, 0, 4, 0, 1, 0, 32902, 5409, 32902, 5409, 131072, 1, 0, 2, 'Onboard LAN'),
  (262146, 262146, 1, 0, 1, 0, 4, 0, 2, 0, 32902, 5409, 32902, 5409, 131072, 1, 0, 2, 'Onboard LAN'),
  (262147, 262147, 1, 0, 1, 0, 4, 0, 3, 0, 32902, 5409, 32902, 5409, 131072, 1, 0, 2, 'Onboard LAN'),
  (327680, 327680, 2, 0, 2, 0, 5, 0, 0, 0, 5197, 43018, 5197, 43009, 67586, 0, 0, 1, 'M.2 socket');

-- PCI functions in slots.
INSERT INTO PCIs (_id, FunKey, DevKey, NodeIndex, SlotNo, SegNo, BusNo, DeviceNo, FunctionNo, Location, VendorId,
  DeviceId, SubVendorId, SubDeviceId, ClsCode, RevId, BridgeId, FunType, SlotType, SlotDataBusWidth, Hotplug, PCIType,
  BladeSlotPort, LanesInUse, MaxLanes, MaxPCIeType, PCIeType, SlotDesignation) VALUES
  (17301504, 17301504, 65546, 0, 10, 1, 8, 0, 0, 1, 5348, 5848, 5348, 16739, 131072, 1, 7, 2, 188, 11, 0, 3, 0, 4, 8, 4, 3, 'OCP slot'),
  (17301505, 17301505, 65546, 0, 10, 1, 8, 0, 1, 1, 5348, 5848, 5348, 16739, 131072, 1, 7, 2, 188, 11, 0, 3, 0, 4, 8, 4, 3, 'OCP slot'),
  (17367040, 17367040, 65546, 0, 10, 1, 9, 0, 0, 1, 5348, 5727, 5348, 16646, 131072, 0, 8, 2, 188, 11, 0, 3, 0, 2, 8, 4, 2, 'OCP slot'),
  (17367041, 17367041, 65546, 0, 10, 1, 9, 0, 1, 1, 5348, 5727, 5348, 16646, 131072, 0, 8, 2, 188, 11, 0, 3, 0, 2, 8, 4, 2, 'OCP slot'),
  (18284544, 18284544, 65537, 0, 1, 1, 23, 0, 0, 1, 4096, 4322, 4096, 16400, 66560, 1, 22, 1, 188, 11, 0, 3, 0, 8, 8, 4, 4, 'PCIe slot 1'),
  (19988480, 19988480, 65538, 0, 2, 1, 49, 0, 0, 1, 5555, 4127, 5555, 22, 131072, 0, 48, 2, 188, 11, 0, 3, 0, 8, 8, 4, 4, 'PCIe slot 2'),
  (19988481, 19988481, 65538, 0, 2, 1, 49, 0, 1, 1, 5555, 4127, 5555, 22, 131072, 0, 48, 2, 188, 11, 0, 3, 0, 8, 8, 4, 4, 'PCIe slot 2'),
  (21692416, 21692416, 65539, 0, 3, 1, 75, 0, 0, 1, 4318, 9654, 4318, 5502, 197120, 161, 74, 4, 189, 13, 0, 3, 0, 8, 8, 4, 4, 'PCIe slot 3'),
  (23396352, 23396352, 65540, 0, 4, 1, 101, 0, 0, 1, 4318, 10168, 4318, 5834, 197120, 161, 100, 4, 189, 13, 0, 3, 0, 16, 16, 4, 4, 'PCIe slot 4'),
  (26738688, 26738688, 65541, 0, 5, 1, 152, 0, 0, 1, 32902, 5490, 32902, 7, 131072, 2, 151, 2, 188, 11, 0, 3, 0, 8, 8, 4, 3, 'PCIe slot 5'),
  (26738689, 26738689, 65541, 0, 5, 1, 152, 0, 1, 1, 32902, 5490, 32902, 7, 131072, 2, 151, 2, 188, 11, 0, 3, 0, 8, 8, 4, 3, 'PCIe slot 5'),
  (28377088, 28377088, 65542, 0, 6, 1, 177, 0, 0, 1, 5197, 43044, 5197, 43017, 67586, 0, 176, 1, 188, 11, 0, 3, 0, 8, 8, 4, 4, 'PCIe slot 6'),
  (29622272, 29622272, 65543, 0, 7, 1, 196, 0, 0, 1, 32902, 2644, 32902, 18196, 67586, 0, 195, 1, 187, 10, 0, 3, 0, 4, 4, 4, 3, 'PCIe slot 7'),
  (30015488, 30015488, 65544, 0, 8, 1, 202, 0, 0, 1, 4215, 8801, 4215, 684, 787456, 1, 201, 3, 188, 11, 0, 3, 0, 8, 8, 4, 3, 'PCIe slot 8'),
  (30015489, 30015489, 65544, 0, 8, 1, 202, 0, 1, 1, 4215, 8801, 4215, 684, 787456, 1, 201, 3, 188, 11, 0, 3, 0, 8, 8, 4, 3, 'PCIe slot 8');

-- No settings: stays as it is.
INSERT INTO PCIAdapter (PCIKey, PCIFuncKey, NodeNo, SlotNo, SegNo, BusNo, DeviceNo, FunctionNo, Location,
  AIMSupported, OOBSrc, HealthStatus, ConnectorType, CardName) VALUES
  (3, 196608, 0, 3, 0, 3, 0, 0, 0, 0, 0, 2, '0x8004', 'Onboard video');

-- AIMSupported 0, with settings: taken over, AIMSupported becomes 3. The other functions of these cards have no row
-- and get one; where the name says no more than Adapter, each is named by its bus, device and function.
INSERT INTO PCIAdapter (PCIKey, PCIFuncKey, NodeNo, SlotNo, SegNo, BusNo, DeviceNo, FunctionNo, Location,
  AIMSupported, OOBSrc, HealthStatus, ConnectorType, CardName) VALUES
  (1, 262144, 0, 1, 0, 4, 0, 0, 0, 0, 0, 2, '0x8004', 'Adapter 1'),
  (65538, 19988480, 0, 2, 1, 49, 0, 0, 1, 0, 0, 2, '188', '25GbE SFP28 2-port Ethernet Adapter'),
  (65544, 30015488, 0, 8, 1, 202, 0, 0, 1, 0, 0, 3, '188', '32Gb 2-port Fibre Channel Adapter');

-- The same, one function each. NVMe and accelerator settings are only seen by a full run.
INSERT INTO PCIAdapter (PCIKey, PCIFuncKey, NodeNo, SlotNo, SegNo, BusNo, DeviceNo, FunctionNo, Location,
  AIMSupported, OOBSrc, HealthStatus, ConnectorType, CardName) VALUES
  (2, 327680, 0, 2, 0, 5, 0, 0, 0, 0, 0, 2, '0x8004', 'M.2 NVMe SSD 512 GB'),
  (65540, 23396352, 0, 4, 1, 101, 0, 0, 1, 0, 0, 2, '0xBD', 'L4 24GB PCIe Accelerator'),
  (65542, 28377088, 0, 6, 1, 177, 0, 0, 1, 0, 0, 2, '188', '1.6 TB NVMe Add-in-Card SSD'),
  (65543, 29622272, 0, 7, 1, 196, 0, 0, 1, 0, 0, 2, '187', 'Adapter 7');

-- AIMSupported 1 and 2: left alone. The other three functions of the OCP card are inserted.
INSERT INTO PCIAdapter (PCIKey, PCIFuncKey, NodeNo, SlotNo, SegNo, BusNo, DeviceNo, FunctionNo, Location,
  AIMSupported, OOBSrc, HealthStatus, ConnectorType, CardName) VALUES
  (65537, 18284544, 0, 1, 1, 23, 0, 0, 1, 1, 1, 2, '18', '12Gb RAID Adapter 8 Ports'),
  (65539, 21692416, 0, 3, 1, 75, 0, 0, 1, 2, 2, 2, '189', 'A2 16GB PCIe Accelerator'),
  (65546, 17301504, 0, 10, 1, 8, 0, 0, 1, 1, 1, 2, '0x8006', 'Broadcom 57416 10GBASE-T OCP Adapter');

-- AIMSupported 3 from earlier runs. Slot 5 still has its settings: left alone. The SATA controller has none any more:
-- demoted to 0. The card of slot 9 has been pulled: removed.
INSERT INTO PCIAdapter (PCIKey, PCIFuncKey, NodeNo, SlotNo, SegNo, BusNo, DeviceNo, FunctionNo, Location,
  AIMSupported, OOBSrc, HealthStatus, ConnectorType, CardName) VALUES
  (65541, 26738688, 0, 5, 1, 152, 0, 0, 1, 3, 0, 2, '188', '10GbE SFP+ 2-port Ethernet Adapter'),
  (65541, 26738689, 0, 5, 1, 152, 0, 1, 1, 3, 0, 2, '188', '10GbE SFP+ 2-port Ethernet Adapter'),
  (4, 5888, 0, 4, 0, 0, 23, 0, 0, 3, 0, 2, '0x8004', 'Onboard SATA controller'),
  (65545, 31653888, 0, 9, 1, 227, 0, 0, 1, 3, 0, 0, '188', 'Adapter E3:00:00');

-- AIMSupported 3, kept by the stale settings below: a run with -c demotes the first and removes the second.
INSERT INTO PCIAdapter (PCIKey, PCIFuncKey, NodeNo, SlotNo, SegNo, BusNo, DeviceNo, FunctionNo, Location,
  AIMSupported, OOBSrc, HealthStatus, ConnectorType, CardName) VALUES
  (5, 5120, 0, 5, 0, 0, 20, 0, 0, 3, 0, 2, '0x8004', 'Onboard USB controller'),
  (65547, 32571392, 0, 11, 1, 241, 0, 0, 1, 3, 0, 0, '188', '10GbE SFP+ 2-port Ethernet Adapter');

-- Settings of earlier runs: one that the next run finds again and brings up to date, one of a function that no longer
-- has any, one of a card that has been pulled.
INSERT INTO PCISetting (SettingID, SettingName, PendingValue, CurrentValue, PfaKey, ShortDesc, Defvalue, Type, Flags,
  Minim, Maxim, Step, Mins, Maxs, Numchoices, Choices, Mininstances, Maxinstances) VALUES
  ('Raid-Slot1.ControllerMode', 'Mode', 'JBOD', 'JBOD', 18284544, 'RAID or pass-through', 'RAID', 1, 2, 0, 0, 0, 0, 0, 2,
    'RAID;JBOD', 0, 0),
  ('Usb-Ports.FrontPorts', 'Front ports', 'Disabled', 'Enabled', 5120, 'USB ports at the front', 'Enabled', 2, 2, 0, 0, 0, 0,
    0, 2, 'Disabled;Enabled', 0, 0),
  ('Ethernet-Slot11.Port1Lldp', 'LLDP agent', 'Enabled', 'Enabled', 32571392, 'Link layer discovery in firmware', 'Enabled',
    2, 2, 0, 0, 0, 0, 0, 2, 'Disabled;Enabled', 0, 0);
