// SPDX-License-Identifier: Apache-2.0
//
// The exported interface as its own library sees it: everything else is hidden.
#ifndef ZEL_DB_C_FACE_H
#define ZEL_DB_C_FACE_H

#include <new>
#include <stdexcept>

#pragma GCC visibility push(default)
#include "platform/zel_db.h"
#include "platform/zel_db_admin.h"
#include "platform/zel_db_batch.h"
#include "platform/zel_db_reads.h"
#pragma GCC visibility pop

#include "zel_db/status.h"

namespace zel_db {

// Nothing is thrown across the C interface. The code below it throws only when memory runs out.
template <class Body>
int guarded(Body body) noexcept {
  try {
    return body();
  } catch (const std::exception&) {
    return kNoMemory;
  }
}

}  // namespace zel_db

#endif
