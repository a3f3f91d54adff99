// SPDX-License-Identifier: Apache-2.0
#ifndef UCM_GATHERED_SETTINGS_H
#define UCM_GATHERED_SETTINGS_H

#include <cstddef>

#include "platform/zel_db.h"
#include "zeldb/ucm.h"

namespace zeldb {

// Settings on their way to the table. A transaction for each would cost more than the setting, so where the
// platform offers batches, those that are gathered are stored together; the outcome is that of storing one
// after the other.
class GatheredSettings {
 public:
  enum class Mode { Together, OneByOne };
  GatheredSettings(_zel_db_handle_t* handle, Mode mode);
  GatheredSettings(const GatheredSettings&) = delete;
  GatheredSettings& operator=(const GatheredSettings&) = delete;
  ~GatheredSettings() { store(); }  // an exception does not lose what came before it

  // The next one, zeroed; there must be room.
  PCISetting_info& add();
  bool is_full() const { return count_ == most_; }
  // Stores all, up to the first that cannot be stored: then false, and none is left.
  bool store();

 private:
  _zel_db_handle_t* const handle_;
  const size_t most_;
  size_t count_ = 0;
};

}  // namespace zeldb

#endif
