// SPDX-License-Identifier: Apache-2.0
#include <iterator>

#include "cli/inventory.h"
#include "cli/redfish/resource.h"
#include "cli/redfish/values.h"

namespace zeldb::cli::redfish {

namespace {

using Row = Function;

constexpr About kAbout = {
    "PCIeFunction", "v1_7_0", "Chassis/1/PCIeDevices/{PCIKey}/PCIeFunctions/{FunKey}",
    "One PCI function: `_ZELDB_PCI_Generic_Info` of `zeldb_get_pci_generic_info`, by function key."};

// Names of the base classes, by number; higher ones are rare.
constexpr const char* kClasses[] = {"UnclassifiedDevice",
                                    "MassStorageController",
                                    "NetworkController",
                                    "DisplayController",
                                    "MultimediaController",
                                    "MemoryController",
                                    "Bridge",
                                    "CommunicationController",
                                    "GenericSystemPeripheral",
                                    "InputDeviceController",
                                    "DockingStation",
                                    "Processor",
                                    "SerialBusController",
                                    "WirelessController",
                                    "IntelligentController",
                                    "SatelliteCommunicationsController",
                                    "EncryptionController",
                                    "SignalProcessingController",
                                    "ProcessingAccelerators",
                                    "NonEssentialInstrumentation"};

Json class_of(uint32_t code) {
  constexpr Code kOthers[] = {{0x40, "Coprocessor"}, {0xFF, "UnassignedClass"}};
  const uint32_t base = code >> 16U;
  if (base < std::size(kClasses)) return kClasses[base];
  const Json other = coded(kOthers, base);
  return other.is_null() ? Json("Other") : other;
}

Json limited(uint8_t number, uint8_t last, int digits) {
  return number <= last ? Json("0x" + hexadecimal(number, digits)) : Json();
}

constexpr Property<Row> kProperties[] = {
    REDFISH_BY("Name", "SegNo, BusNo, DeviceNo, FunctionNo", "the PCI address",
               pci_address(row.record.SegNo, row.record.BusNo, row.record.DeviceNo, row.record.FunctionNo)),
    REDFISH_FROM("FunctionId", record.FunctionNo, Number),
    REDFISH_BY("FunctionType", "", "`Physical`: virtual functions are not in the inventory", "Physical"),
    REDFISH_FROM("SegmentNumber", record.SegNo, Hex<4>),
    REDFISH_FROM("BusNumber", record.BusNo, Hex<2>),
    REDFISH_BY("DeviceNumber", "DeviceNo", "more than 31: null", limited(row.record.DeviceNo, 31, 2)),
    REDFISH_BY("FunctionNumber", "FunctionNo", "more than 7: null", limited(row.record.FunctionNo, 7, 1)),
    REDFISH_FROM("VendorId", record.VendorId, PciId),
    REDFISH_FROM("DeviceId", record.DeviceId, PciId),
    REDFISH_FROM("SubsystemVendorId", record.SubVendorId, PciId),
    REDFISH_FROM("SubsystemId", record.SubDeviceId, PciId),
    REDFISH_FROM("ClassCode", record.ClsCode, Hex<6>),
    REDFISH_BY("DeviceClass", "ClsCode",
               "the highest of its three bytes: 0 `UnclassifiedDevice`, 1 `MassStorageController`, 2 "
               "`NetworkController` and so on as the PCI classes are numbered; one without a name `Other`",
               class_of(row.record.ClsCode)),
    REDFISH_FROM("RevisionId", record.RevId, Hex<2>),
    REDFISH_BY("Links.PCIeDevice", "Location, SlotNo", "the device", link(row.device)),
    REDFISH_BY("Links.Drives[]", "PCIFuncKey", "the NVMe drive with this function key", links(row.drives)),
    REDFISH_BY("Links.StorageControllers[]", "ClsCode", "a function of base class 1 is a controller",
               links(row.controllers)),
    REDFISH_BY("Links.NetworkDeviceFunctions[]", "PCIFuncKey", "its logical ports",
               links(row.network_functions)),
    REDFISH_BY("Links.Processor", "PCIFuncKey", "its first GPU chip",
               row.gpus.empty() ? Json::left_out() : link(row.gpus.front())),
};

void add(const Machine& machine, Tree& tree) {
  for (const Device& device : machine.devices) {
    for (const Row& row : device.functions) tree.add(resource_of(kAbout, kProperties, row, machine));
    tree.add_collection(device.uri + "/PCIeFunctions", "PCIeFunction", "PCI functions",
                        uris_of(device.functions));
  }
}

}  // namespace

Chapter pcie_function() {
  return chapter_of(kAbout, kProperties, add);
}

}  // namespace zeldb::cli::redfish
