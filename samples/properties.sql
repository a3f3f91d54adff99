-- SPDX-License-Identifier: Apache-2.0
-- Properties of the sample controller, database propertiesdb. A value is a type tag and its bytes.

-- Texts (tag "s"): what the accelerator in slot 3 publishes.
INSERT INTO propertiesDCTbl (propName, propValue) VALUES
  ('/ac/ovrc/dm/planar/0/gpu_pci_slot/3/uuid', x'733541304536344230433244373131454641314232303035303536433030303033'),
  ('/ac/ovrc/dm/planar/0/gpu_pci_slot/3/model', x'7341322031364742205043496520416363656c657261746f72'),
  ('/ac/ovrc/dm/planar/0/gpu_pci_slot/3/mfgr', x'734e5649444941'),
  ('/ac/ovrc/dm/planar/0/gpu_pci_slot/3/sn', x'7331363532303232303030303031'),
  ('/ac/ovrc/dm/planar/0/gpu_pci_slot/3/pn', x'733930302d3247313739'),
  ('/ac/ovrc/dm/planar/0/gpu_pci_slot/3/fru', x'7330334758303034'),
  ('/ac/ovrc/dm/planar/0/gpu_pci_slot/3/fw_version', x'7339342e30372e35422e30302e3031');

-- Numbers: a backplane with 8 bays and 4 drives, which begins with bay 2; bay 3 takes NVMe and bay 4 EDSFF drives
-- (counted from 1); the M.2 controller of type 1 serves two bays, and the 7 mm controller is of type 2.
INSERT INTO propertiesDCTbl (propName, propValue) VALUES
  ('/dc/ovrc/dm/disks/hdd/3/type', x'0103'),
  ('/dc/ovrc/dm/disks/hdd/4/type', x'0108'),
  ('/dc/ovrc/dm/disks/sep/0/presence', x'0101'),
  ('/dc/ovrc/dm/disks/sep/0/max_drives', x'0108'),
  ('/dc/ovrc/dm/disks/sep/0/installed_drives', x'0104'),
  ('/dc/ovrc/dm/planar/0/bp/0/bay_no_e', x'0200000000'),
  ('/dc/ovrc/dm/planar/0/bp/0/type', x'0101'),
  ('/dc/ovrc/dm/planar/0/mv/0/type', x'0101'),
  ('/dc/ovrc/dm/planar/0/mv/0/slots', x'010606'),
  ('/dc/ovrc/dm/planar/0/mv/1/type', x'0102');
