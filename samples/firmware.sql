-- SPDX-License-Identifier: Apache-2.0
-- Firmware of the sample controller, database dmdb. Loaded after drives.sql.

-- Components: an update of slot 1 is done, one of slot 8 failed, one of slot 10 waits for its activation. The disks
-- behind slot 1 are updated through it (method 64). What slot 3 lacks is published in the property store.
INSERT INTO PldmDeviceFirmware (DeviceName, DeviceType, PCIKey, PCIFuncKey, VendorId, DeviceId, SubVendorId, SubDeviceId,
  Location, SlotNo, Manufacture, SoftwareID, VersionString, PendingVersionString, PkgVersionString, ReleaseDate,
  PendingReleaseDate, UpdateSupport, Updated, UpdateMethod, UpdateAuxInfo, UpdateErrCode, UpdateErrString, Status) VALUES
  ('12Gb RAID Adapter 8 Ports', 2, 65537, 18284544, 4096, 4322, 4096, 16400, 1, 1, 'Broadcom', '100010E2', '52.26.0-5179',
    '', '52.26.0-5179', '2024-03-11', '', 1, 1, 64, 0, 0, '', 0),
  ('25GbE SFP28 2-port Ethernet Adapter', 1, 65538, 19988480, 5555, 4127, 5555, 22, 1, 2, 'Mellanox', '15B3101F',
    '26.36.1010', '', '', '2023-05-02', '', 1, 0, 1, 0, 0, '', 0),
  ('N/A', 3, 65539, 21692416, 4318, 9654, 4318, 5502, 1, 3, '', '10DE25B6', '', '', '', '', '', 0, 0, 0, 0, 0, '', 0),
  ('10GbE SFP+ 2-port Ethernet Adapter', 1, 65541, 26738688, 32902, 5490, 32902, 7, 1, 5, 'Intel', '80861572', '9.20', '',
    '', '2023-04-27', '', 1, 0, 1, 0, 0, '', 0),
  ('32Gb 2-port Fibre Channel Adapter', 1, 65544, 30015488, 4215, 8801, 4215, 684, 1, 8, 'QLogic', '10772261', '9.08.02',
    '', '9.15.00', '2022-11-30', '', 1, 1, 1, 3, 5, 'Component 2: the image does not fit the device', 0),
  ('Broadcom 57416 10GBASE-T OCP Adapter', 1, 65546, 17301504, 5348, 5848, 5348, 16739, 1, 10, 'Broadcom', '14E416D8',
    '226.0.145', '229.1.123', '229.1.123', '2023-06-19', '2024-02-05', 1, 1, 1, 0, 0, '', 2),
  ('M.2 controller', 2, 6, 393216, 6987, 37424, 65535, 1, 0, 6, 'Marvell', '1B4B9230', '2.3.20.1203', '', '',
    '2022-01-18', '', 1, 0, 2, 0, 0, '', 0);

-- Images: the ports on the board have one, known by the hardware ids of their functions.
UPDATE PCIs SET HardwareId = FunKey, HardwareTypeId = 3 WHERE Location = 0 AND SlotNo = 1;
INSERT INTO Firmwares (HardwareId, HardwareTypeId, Classification, FirmwareName, VersionString, Description, ReleaseDate,
  Manufacture, SoftwareID) VALUES
  (262144, 3, '10', 'Option ROM', '1.63.0', 'Network boot of the ports on the board', '2022-08-01', 'Intel', '80861521');

-- Two disks behind the RAID card in slot 1.
INSERT INTO RAIDControllers (_id, ControllerUID) VALUES (1, 1);
INSERT INTO Disks (_id, RAIDCtrlId) VALUES (1, 1), (2, 1);
INSERT INTO VPDs (HardwareId, HardwareTypeId, SerialNo, L2PartNo, SupplierSN) VALUES
  (1, 2, 'ZC1A0B2D', 'ST4000NM000B', 'ZC1A0B2D'),
  (2, 2, 'ZC1A0B2E', 'ST4000NM000B', 'ZC1A0B2E');

-- The controller's own devices.
INSERT INTO EmbeddedDeviceFirmware (DeviceName, DeviceIndex, StructRev, Version, SoftwareID, Class, Category, SubCategory,
  Checksum) VALUES
  ('Power sequencer', 0, 1, 12, 'EMB-PSEQ', 1, 2, 1, 90),
  ('Backplane expander', 0, 1, 7, 'EMB-BPX', 3, 1, 4, 17),
  ('Backplane expander', 1, 1, 6, 'EMB-BPX', 3, 1, 4, 16);

-- A DPU in slot 12, and what it has reported.
INSERT INTO PCIs (_id, FunKey, DevKey, NodeIndex, SlotNo, SegNo, BusNo, DeviceNo, FunctionNo, Location, VendorId,
  DeviceId, SubVendorId, SubDeviceId, ClsCode, RevId, BridgeId, FunType, SlotType, SlotDataBusWidth, Hotplug, PCIType,
  BladeSlotPort, LanesInUse, MaxLanes, MaxPCIeType, PCIeType, HardwareId, HardwareTypeId, SlotDesignation) VALUES
  (33030144, 33030144, 65548, 0, 12, 1, 248, 0, 0, 1, 5555, 41686, 5555, 98, 131072, 1, 247, 2, 188, 11, 0, 3, 0, 16, 16, 4, 4,
    33030144, 3, 'PCIe slot 12');
INSERT INTO PCIAdapter (PCIKey, PCIFuncKey, NodeNo, SlotNo, SegNo, BusNo, DeviceNo, FunctionNo, Location,
  AIMSupported, OOBSrc, HealthStatus, ConnectorType, CardName) VALUES
  (65548, 33030144, 0, 12, 1, 248, 0, 0, 1, 0, 0, 2, '188', 'BlueField-2 25GbE 2-port DPU');
INSERT INTO DPUEvents (Slot, GenID, Message, Timestamp) VALUES
  (12, 'DPU0101', 'Boot of the operating system has begun', 1711000000),
  (12, 'DPU0102', 'Port 02:00:5E:F8:00:01 is up at 25000 Mbit/s', 1711000042),
  (12, 'DPU0201', 'Temperature is above the warning threshold', 1711003600);
