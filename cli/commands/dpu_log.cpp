// SPDX-License-Identifier: Apache-2.0
#include "cli/dpu_log.h"

#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/inventory.h"
#include "cli/library.h"
#include "cli/listing.h"
#include "cli/words.h"

namespace zeldb::cli {

namespace {

using R = _ZELDB_DpuLog;

constexpr Column kColumns[] = {
    ZELDB_COLUMN(R, _id, "ID", "Row of the table"),
    in_words(ZELDB_COLUMN(R, Timestamp, "TIME", "Seconds since 1970"), date_word),
    whole(ZELDB_COLUMN(R, GenID, "EVENT", "Id of the kind of event")),
    ZELDB_COLUMN(R, Message, "MESSAGE", "Text of the event"),
};

std::vector<R> read_log(int slot) {
  auto events = read_dpu_log(slot);
  if (events.empty()) require_slot({1, slot});
  return events;
}

}  // namespace

std::vector<R> read_dpu_log(int slot) {
  auto events = list_of<_ZELDB_DpuLog_List>("DPU in slot " + std::to_string(slot),
                                            [slot](auto* list) { return dpu_get_log_by_slot(slot, list); });
  std::erase_if(events, [](const R& event) { return event._id == 0; });  // could not be read
  return events;
}

void setup_dpu_log(CLI::App& app) {
  auto slot = std::make_shared<Number>();
  require(add_number(app, "SLOT", *slot, "", "Number of the slot"));
  Listing(app).view(kColumns, [slot] { return read_log(static_cast<int>(**slot)); });
}

}  // namespace zeldb::cli
