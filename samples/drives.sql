-- SPDX-License-Identifier: Apache-2.0
-- Drives of the sample controller, database dmdb. Loaded after adapters.sql.

-- On the board: the controller of the M.2 bays, and a volume management device. No device has the subsystem vendor id
-- 65535: it is what a build knows the maker's own controllers by unless it is told another one.
INSERT INTO PCIs (_id, FunKey, DevKey, NodeIndex, SlotNo, SegNo, BusNo, DeviceNo, FunctionNo, Location, VendorId,
  DeviceId, SubVendorId, SubDeviceId, ClsCode, RevId, BridgeId, FunType, SlotDesignation) VALUES
  (3584, 3584, 7, 0, 7, 0, 0, 14, 0, 0, 32902, 10432, 32902, 29296, 66560, 4, 0, 1, 'Volume management device'),
  (393216, 393216, 6, 0, 6, 0, 6, 0, 0, 0, 6987, 37424, 65535, 1, 67073, 17, 0, 1, 'M.2 controller');

-- The functions of the drives in backplane bays 2 and 3: location 2, segment 2.
INSERT INTO PCIs (_id, FunKey, DevKey, NodeIndex, SlotNo, SegNo, BusNo, DeviceNo, FunctionNo, Location, VendorId,
  DeviceId, SubVendorId, SubDeviceId, ClsCode, FunType) VALUES
  (42270720, 42270720, 131074, 0, 2, 2, 133, 0, 0, 2, 5197, 43018, 5197, 43027, 67586, 1),
  (42336256, 42336256, 131075, 0, 3, 2, 134, 0, 0, 2, 5197, 43018, 5197, 43027, 67586, 1);

-- Drives that answer over their management interface.
INSERT INTO NVMeDrives (Location, SlotNo, CtrlSlot, Capacity, FruNo, PartNo, SupplierSN, Model, UUID, Manufacture, FwVer,
  SFlags, Warning, Temperature, RemainLife, InfoMask) VALUES
  (3, 0, 6, 512110190592, '02JG548', 'MZVL2512HCJQ', 'S6EXNE0R300123', 'SAMSUNG MZVL2512HCJQ',
    '0025385b21400123', 'Samsung', 'GXA7801Q', 0, 0, 38, 99, 31),
  (2, 2, NULL, 3840755982336, '02JG601', 'MZQL23T8HCLS', 'S64HNE0R500456', 'SAMSUNG MZQL23T8HCLS',
    '0025385b21400456', 'Samsung', 'GDC5902Q', 0, 0, 41, 97, 31),
  (2, 3, NULL, 3840755982336, '02JG601', 'MZQL23T8HCLS', 'S64HNE0R500457', 'SAMSUNG MZQL23T8HCLS',
    '0025385b21400457', 'Samsung', 'GDC5902Q', 0, 0, 40, 98, 31),
  (1, 6, NULL, 1600321314816, '02JG712', 'MZPLJ1T6HBJR', 'S55KNC0R100789', 'SAMSUNG MZPLJ1T6HBJR',
    '0025385b21400789', 'Samsung', 'EPK9CB5Q', 0, 0, 52, 95, 31);

-- The others, and two of those as well: M.2 bay 0 and backplane bay 2. The last one has been pulled.
INSERT INTO AimDisks (PCIFuncKey, SlotNo, CtrlType, BayNo, LocationId, Location, DriveTypeId, MediaTypeId, FruNo, PartNo,
  SerialNo, Model, UUID, Manufacture, FwVersion, Capacity, SFlags, Warning, Temperature, RemainLife, InfoMask, Presence)
  VALUES
  (0, 6, 0, 0, 3, 'M.2 Bay0', '5', '1', '02JG548', 'MZVL2512HCJQ', 'S6EXNE0R300123', 'SAMSUNG MZVL2512HCJQ', '',
    'Samsung', 'GXA7801Q', '512GB', 0, 0, 38, 99, 31, 1),
  (0, 6, 0, 1, 3, 'M.2 Bay1', '4', '1', '02JG544', 'MTFDDAV480TDS', '2149338F0A11', 'Micron_5300_MTFDDAV480TDS', '',
    'Micron', 'D3MU401', '480GB', 0, 0, 35, 98, 31, 1),
  (0, 6, 0, 0, 4, '7MM Bay0', '6', '1', '02JG545', 'MTFDDAK240TDS', '2149338F0C33', 'Micron_5300_MTFDDAK240TDS', '',
    'Micron', 'D3MU401', '240GB', 0, 0, 36, 97, 31, 1),
  (0, 0, 0, 0, 2, 'Bay 0', '1', '7200', '02JG930', 'ST4000NM000B', 'WX1A0B2C', 'ST4000NM000B', '',
    'Seagate', 'TN03', '4.00TB', 0, 0, 33, 0, 3, 1),
  (0, 0, 0, 1, 2, 'Bay 1', '1', '1', '02JG935', 'MTFDDAK960TDS', '2149338F0B22', 'Micron_5300_MTFDDAK960TDS', '',
    'Micron', 'D3MU401', '960GB', 0, 0, 34, 99, 31, 1),
  (0, 0, 0, 2, 2, 'Bay 2', '3', '1', '02JG601', 'MZQL23T8HCLS', 'S64HNE0R500456', 'SAMSUNG MZQL23T8HCLS', '',
    'Samsung', 'GDC5902Q', '3.84TB', 0, 0, 41, 97, 31, 1),
  (0, 0, 0, 7, 1, 'Slot 7', '3', '1', '02JG720', 'SSDPEDKE020T7', 'PHLF7391000A2P0', 'INTEL SSDPEDKE020T7', '',
    'Intel', 'QDV101D1', '2.00TB', 0, 0, 47, 93, 31, 1),
  (0, 0, 0, 4, 2, 'Bay 4', '2', '10500', '02JG940', 'AL15SEB060N', 'Y1A0A00ZF1PD', 'AL15SEB060N', '',
    'Toshiba', '0805', '600GB', 0, 0, 0, 0, 0, 0);

-- Sensors of the drives in bays 0 to 2 are well, those of bay 3 and of M.2 bay 0 (128) are degraded.
INSERT INTO SensorSlotMap (HardwareTypeId, SlotNo, HealthStatusId) VALUES (2, 0, 2), (2, 1, 2), (2, 2, 2), (21, 3, 3),
  (22, 128, 3);
