// SPDX-License-Identifier: Apache-2.0
#ifndef PCI_GPU_PROPERTY_H
#define PCI_GPU_PROPERTY_H

#include <cstddef>

namespace zeldb {

// As get_gpu_pci_vpd_info, into a buffer of the given size.
int read_gpu_property(const char* base, const char* item, unsigned slot, char* out, size_t size);

}  // namespace zeldb

#endif
