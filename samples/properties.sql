-- SPDX-License-Identifier: Apache-2.0
-- Properties of the sample controller, database propertiesdb. A value is a type tag (here "s", a text) and its bytes.
INSERT INTO propertiesDCTbl (propName, propValue) VALUES
  ('/ac/ovrc/dm/planar/0/gpu_pci_slot/3/uuid', x'733541304536344230433244373131454641314232303035303536433030303033'),
  ('/ac/ovrc/dm/planar/0/gpu_pci_slot/3/model', x'7341322031364742205043496520416363656c657261746f72'),
  ('/ac/ovrc/dm/planar/0/gpu_pci_slot/3/mfgr', x'734e5649444941'),
  ('/ac/ovrc/dm/planar/0/gpu_pci_slot/3/sn', x'7331363532303232303030303031'),
  ('/ac/ovrc/dm/planar/0/gpu_pci_slot/3/pn', x'733930302d3247313739'),
  ('/ac/ovrc/dm/planar/0/gpu_pci_slot/3/fru', x'7330334758303034'),
  ('/ac/ovrc/dm/planar/0/gpu_pci_slot/3/fw_version', x'7339342e30372e35422e30302e3031');
