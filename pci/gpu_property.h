// SPDX-License-Identifier: Apache-2.0
#ifndef PCI_GPU_PROPERTY_H
#define PCI_GPU_PROPERTY_H

#include <cstddef>

namespace zeldb {

inline constexpr const char* kGpuSlots = "/ac/ovrc/dm/planar/0/gpu_pci_slot";

bool is_missing(const char* text);

// get_gpu_pci_vpd_info into a buffer of a size.
int read_gpu_property(const char* base, const char* item, unsigned slot, char* out, size_t size);

}  // namespace zeldb

#endif
