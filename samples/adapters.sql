-- SPDX-License-Identifier: Apache-2.0
-- More of the sample controller's adapters, database dmdb: how they are packaged, their ports, GPUs, vital product
-- data and NC-SI packages. Loaded after inventory.sql.

-- A connector layout that is not recorded is derived from the location.
INSERT INTO PCIMisc (PCIFuncKey, FoDUid, MaxDataWidth, ConnectorLayout, PackageType, OtherPackageType, AIMSpecVersion)
  VALUES
  (262144, NULL, 4, NULL, '32768', NULL, '1.2'),
  (17301504, NULL, 8, '0x8006', '9', NULL, '1.3'),
  (18284544, 'FOD-R-0001', 8, '22', '9', NULL, '1.3'),
  (19988480, NULL, 8, '', '9', NULL, '1.3'),
  (23396352, NULL, 16, '23', '1', 'Accelerator', '1.4');

INSERT INTO NCSIPackageID (Location, SlotNo, Type, PackageID1, PackageID2) VALUES
  (0, 1, 1, 0, 255),
  (1, 2, 2, 1, 255),
  (1, 10, 3, 2, 3);

INSERT INTO PCINetwork (PCIKey, PCIFuncKey, NumberofPhysicalPorts, MaxNumberofLogicalPorts) VALUES
  (1, 262144, 1, 1), (1, 262145, 1, 1), (1, 262146, 1, 1), (1, 262147, 1, 1),
  (65538, 19988480, 1, 2), (65538, 19988481, 1, 2),
  (65544, 30015488, 1, 1), (65544, 30015489, 1, 1),
  (65546, 17301504, 1, 2), (65546, 17301505, 1, 2), (65546, 17367040, 1, 1), (65546, 17367041, 1, 1);

INSERT INTO PCIPhysicalPort (PCIFuncKey, ConnectorLayout, Idx, NumberofLogicalPorts, PermanentAddress) VALUES
  (262144, '5', 1, 1, '02:00:5E:10:00:01'),
  (262145, '5', 2, 1, '02:00:5E:10:00:02'),
  (262146, '5', 3, 1, '02:00:5E:10:00:03'),
  (262147, '5', 4, 1, '02:00:5E:10:00:04'),
  (19988480, '0x8007', 1, 2, '02:00:5E:20:00:01'),
  (19988481, '0x8007', 2, 2, '02:00:5E:20:00:02'),
  (30015488, '12', 1, 1, '20:00:02:00:5E:80:00:01'),
  (30015489, '12', 2, 1, '20:00:02:00:5E:80:00:02'),
  (17301504, '5', 1, 2, '02:00:5E:A0:00:01'),
  (17301505, '5', 2, 2, '02:00:5E:A0:00:02'),
  (17367040, '5', 1, 1, '02:00:5E:A0:00:03'),
  (17367041, '5', 2, 1, '02:00:5E:A0:00:04');

-- LinkStatus 1 is up; LinkSpeed in Mbit/s, utilisation in percent.
INSERT INTO PCIPhysicalPortStat (PCIFuncKey, Idx, LinkStatus, LinkSpeed, TxUtil, RxUtil) VALUES
  (262144, 1, 1, 1000, 3, 7),
  (262145, 2, 0, 0, 0, 0),
  (262146, 3, 1, 1000, 0, 1),
  (262147, 4, 0, 0, 0, 0),
  (19988480, 1, 1, 25000, 41, 38),
  (19988481, 2, 1, 25000, 40, 39),
  (30015488, 1, 1, 32000, 12, 55),
  (30015489, 2, 0, 0, 0, 0),
  (17301504, 1, 1, 10000, 22, 18),
  (17301505, 2, 1, 10000, 1, 2),
  (17367040, 1, 1, 1000, 2, 1),
  (17367041, 2, 0, 0, 0, 0);

INSERT INTO PCILogicalPort (PCIKey, PCIFuncKey, MaxDataSize, PermanentAddress, NetworkAddresses, PhyIdx, Idx,
  LinkTechnology, vNICMode, MaxSpeed, ProtocolType, Ethernet, FCoEFC, iSCSI, FCoEPermanentAddress,
  FCoENetworkAddressess, ConnectionType, Role, TargetRelativePortNumber) VALUES
  (1, 262144, 1500, '02:00:5E:10:00:01', '192.0.2.10', 1, 1, '2', '0', 1000000000, 6, 1, 0, 0, NULL, NULL, NULL, NULL, 0),
  (1, 262145, 1500, '02:00:5E:10:00:02', NULL, 2, 1, '2', '0', 1000000000, 6, 1, 0, 0, NULL, NULL, NULL, NULL, 0),
  (65538, 19988480, 9000, '02:00:5E:20:00:01', '192.0.2.21', 1, 1, '0x2', '2', 25000000000, 6, 1, 0, 1, NULL, NULL, '7', '2', 1),
  (65538, 19988480, 9000, '02:00:5E:20:00:11', NULL, 1, 2, '0x2', '2', 25000000000, 6, 1, 0, 0, NULL, NULL, NULL, NULL, 0),
  (65538, 19988481, 9000, '02:00:5E:20:00:02', NULL, 2, 1, '0x2', '3', 25000000000, 6, 1, 0, 0, NULL, NULL, NULL, NULL, 0),
  (65544, 30015488, 2112, '20:00:02:00:5E:80:00:01', NULL, 1, 1, '4', NULL, 32000000000, 56, 0, 1, 0, '20:00:02:00:5E:8', '10:00:02:00:5E:8', '2', '2', 2),
  (65546, 17301504, 9000, '02:00:5E:A0:00:01', NULL, 1, 1, '2', '1', 10000000000, 6, 1, 0, 0, NULL, NULL, NULL, NULL, 0),
  (65546, 17367040, 1500, '02:00:5E:A0:00:03', NULL, 1, 1, '2', '0', 1000000000, 6, 1, 0, 0, NULL, NULL, NULL, NULL, 0),
  (65546, 17367041, 1500, '02:00:5E:A0:00:04', NULL, 2, 1, '2', '0', 1000000000, 6, 1, 0, 0, NULL, NULL, NULL, NULL, 0),
  -- An address shorter than 12 characters: this port is not listed.
  (65546, 17301505, 9000, 'not set', NULL, 2, 1, '2', '1', 10000000000, 6, 1, 0, 0, NULL, NULL, NULL, NULL, 0);

INSERT INTO PCIGPU (PCIFuncKey, VideoMemoryType, VideoMemorySize, TotalGPUChipNumber) VALUES
  (21692416, '0xD', '16 GB', 1),
  (23396352, '13', '24 GB', 1);

INSERT INTO PCIGPUChip (PCIFuncKey, GPUChipName, GPUChipManufacturer, GPUChipModel, GPUChipPartNumber, GPUChipSKU,
  GPUChipSerialNumber, GPUChipFamily, GPUChipUniqueID, GPUChipFormFactor, GPUChipIndex, GPUChipNumberOfEnabledCores,
  ExternalBusClockSpeed, GPUChipMaxClockSpeed, GPUChipAddressWidth, GPUChipDataWidth) VALUES
  (21692416, 'GA107', 'NVIDIA', 'A2', '900-2G179', 'A2-16', '1652022000001', 'Ampere', 'GPU-0001', '21', 0, 10, 100, 1770, 64, 128),
  (23396352, 'AD104', 'NVIDIA', 'L4', '900-2G193', 'L4-24', '1652022000002', 'Ada Lovelace', 'GPU-0002', '21', 0, 58, 100, 2040, 64, 192);

-- The property store (properties.sql) has the data that slot 3 lacks, and the first read completes them; slot 4 has
-- everything.
UPDATE PCIs SET HardwareId = FunKey, HardwareTypeId = 3 WHERE Location = 1;
INSERT INTO VPDs (HardwareId, HardwareTypeId, Location, SlotNo, UUID, ProductName, Manufacture, SerialNo, PartNo, Model,
  FRUNo) VALUES
  (21692416, 3, 1, 3, '', 'N/A', NULL, 'N/A', '', NULL, ''),
  (23396352, 3, 1, 4, '5A0E64B0C2D711EFA1B2005056C00008', 'L4 24GB PCIe Accelerator', 'NVIDIA', '1652022000002',
    '900-2G193', 'L4', '03GX001'),
  (18284544, 3, 1, 1, '5A0E64B0C2D711EFA1B2005056C00001', '12Gb RAID Adapter 8 Ports', 'Broadcom', 'SP2200001',
    '05-50077-01', '9560-8i', '03GX002'),
  (19988480, 3, 1, 2, '5A0E64B0C2D711EFA1B2005056C00002', '25GbE SFP28 2-port Ethernet Adapter', 'Mellanox', 'MT2200001',
    'MCX631102AN-ADAT', 'CX631102A', '03GX003');
