-- SPDX-License-Identifier: Apache-2.0
-- Processors and memory of the sample controller, database dmdb: two processors; four ordinary modules, and two
-- persistent ones, at whose speed all of them run. Cache sizes are in KiB, with bit 15 in units of 64 KiB.

INSERT INTO Processor (ProcId, ProcType, Family, Socket, Manufacturer, Version, Voltage, ExtClock, MaxSpeed, CurSpeed, Status,
  Upgrade, SerialNo, AssetTag, PartNo, CoreCount, CoreEnabled, ThreadCount, Characteristics, L1CacheMaxSize, L1CacheInstalled,
  L1CacheType, L1CacheConfig, L2CacheMaxSize, L2CacheInstalled, L2CacheType, L2CacheConfig, L3CacheMaxSize, L3CacheInstalled,
  L3CacheType, L3CacheConfig, NodeIndex) VALUES
  (2259465255255039, 3, 179, 'CPU 1', 'Intel(R) Corporation', 'Intel(R) Xeon(R) Platinum 8468', 161, 100, 4000, 2100, 65, 63,
   'C1A0F3B200D41', 'RACK7-CPU1', '', 48, 48, 96, 252, 3840, 3840, 4, 896, 34304, 34304, 5, 897, 34448, 34448, 5, 898, 0),
  (2259465255255039, 3, 179, 'CPU 2', 'Intel(R) Corporation', 'Intel(R) Xeon(R) Platinum 8468', 161, 100, 4000, 2100, 65, 63,
   'C1A0F3B200D42', '', '', 48, 48, 96, 252, 3840, 3840, 4, 896, 34304, 34304, 5, 897, 34448, 34448, 5, 898, 1);

INSERT INTO Memory (ArrayId, SlotNo, TotalWidth, DataWidth, MemSize, FormFactor, MemType, TypeDetail, MaxSpeed, ClockSpeed,
  DevLocator, BankLocator, Manufacturer, SerialNo, AssetTag, PartNo, Attributes, NodeIndex, MajorHealth, MinorHealth,
  RepairStatus) VALUES
  (1, 1, 80, 64, 32768, 9, 34, 8320, 4800, 4400, 'DIMM 1', 'NODE 0', 'Samsung', '4A6B1101', '', 'M321R4GA0BB0-CQK', 2, 0, 1, 0, 0),
  (1, 3, 80, 64, 32768, 9, 34, 8320, 4800, 4400, 'DIMM 3', 'NODE 0', 'Samsung', '4A6B1102', '', 'M321R4GA0BB0-CQK', 2, 0, 1, 0, 0),
  (1, 17, 80, 64, 32768, 9, 34, 8320, 4800, 4400, 'DIMM 17', 'NODE 1', 'Micron', '3C5D0017', '', 'MTC20F2085S1RC48BA1', 2, 0, 1, 0, 0),
  (1, 19, 80, 64, 32768, 9, 34, 8320, 4800, 4400, 'DIMM 19', 'NODE 1', 'Micron', '3C5D0018', '', 'MTC20F2085S1RC48BA1', 2, 0, 2, 1, 1);

INSERT INTO Memory (ArrayId, SlotNo, TotalWidth, DataWidth, MemSize, FormFactor, MemType, TypeDetail, MaxSpeed, ClockSpeed,
  DevLocator, BankLocator, Manufacturer, SerialNo, AssetTag, PartNo, Attributes, NodeIndex, Capacity, MemCapacity, AppDirCap,
  UnconfigCap, InaccCap, ReservedCap, Classification, RemainingLife, SecurityState, HealthStatus, AlarmTrips, LDShutdownCount,
  AITDRAMStatus, HealthStatusReason, LLShutdownStatus, FIPSMode, InfoMask, CPUIndex, iMCNum, ChannelNum, DimmNum,
  FirmwareVersion, SoftwareID, MajorHealth, MinorHealth, RepairStatus) VALUES
  (1, 2, 72, 64, 129408, 9, 31, 12416, 4400, 4400, 'DIMM 2', 'NODE 0', 'Intel', '8089A11941001C2E', '', 'NMC2XXD128GPSU4', 1, 0,
   135694123008, 0, 135291469824, 0, 402653184, 0, 1, 99, 2, 0, 0, 3, 1, 0, 7, 1, 7, 0, 0, 0, 1, '03.00.00.0483', '0x0920', 1, 0, 0),
  (1, 18, 72, 64, 129408, 9, 31, 12416, 4400, 4400, 'DIMM 18', 'NODE 1', 'Intel', '8089A11941001C2F', '', 'NMC2XXD128GPSU4', 1, 0,
   135694123008, 135291469824, 0, 0, 402653184, 0, 1, 12, 0, 1, 2, 8, 1, 1, 7, 3, 7, 1, 0, 0, 1, '03.00.00.0483', '0x0920', 2, 3, 0);
