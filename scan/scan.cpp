// SPDX-License-Identifier: Apache-2.0
#include "scan/scan.h"

#include <algorithm>

#include "scan/drives.h"
#include "scan/network.h"
#include "scan/smbios.h"

namespace zeldb::scan {

namespace {

Smbios find_smbios(const Machine& machine, PciQuestion& pci, Findings& findings) {
  const SmbiosTable table = read_smbios(machine);
  Smbios smbios;
  if (table.trouble) {
    findings.troubles.push_back("processors, memory and slots: sys/firmware/dmi: " + *table.trouble);
    pci.hides_slots = true;
    return smbios;
  }
  if (table.bytes)
    smbios = decode_smbios(*table.bytes);
  else
    smbios.rows = read_processors(machine);
  findings.complete.insert(kSmbios);
  return smbios;
}

}  // namespace

Findings find(const Question& question, const std::map<Address, Placement>& before) {
  const Machine machine(question.root);
  Findings findings;
  PciQuestion pci{.dump = question.pci_dump, .slots = {}, .hides_slots = false, .last = before};
  Smbios smbios = find_smbios(machine, pci, findings);
  pci.slots = std::move(smbios.slots);
  std::move(smbios.rows.begin(), smbios.rows.end(), std::back_inserter(findings.rows));

  const Functions functions = read_functions(machine, pci, findings);
  const bool knows_functions = findings.complete.contains(kPci);
  const auto is_unwanted = [&](const std::string& source) {
    return !question.only.empty() && !question.only.contains(source);
  };
  if (!is_unwanted(kDrives)) read_drives(machine, knows_functions ? &functions : nullptr, findings);
  if (knows_functions && (!is_unwanted(kNetwork) || !is_unwanted(kFirmware)))
    read_network(machine, functions, findings);

  if (!question.only.empty()) {
    std::erase_if(findings.rows, [&](const Row& row) { return is_unwanted(row.source); });
    std::erase_if(findings.complete, is_unwanted);
  }
  return findings;
}

}  // namespace zeldb::scan
