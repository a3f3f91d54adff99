// SPDX-License-Identifier: Apache-2.0
#include "pci/connector_text.h"

namespace zeldb {

namespace {

constexpr CodeText kBusConnectors[] = {
    {16, "PCI"},       {17, "PCI-X"},     {kConnectorPciExpress, "PCI-E"},
    {19, "PCI-E x1"},  {20, "PCI-E x2"},  {21, "PCI-E x4"},
    {22, "PCI-E x8"},  {23, "PCI-E x16"}, {24, "PCI-E x32"},
    {25, "PCI-E x64"},
};
constexpr CodeText kMezzanineConnectors[] = {{0x8005, "ML2"}, {0x8006, "OCP"}};

constexpr auto kConnectors =
    joined(kSocketConnectors, kBusConnectors, kMakerConnectors, kMezzanineConnectors);
static_assert(is_code_table(kConnectors));

}  // namespace

const char* pci_connector_type_text(uint32_t code) {
  return text_of(kConnectors, code, "Unknown");
}

}  // namespace zeldb
