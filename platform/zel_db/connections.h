// SPDX-License-Identifier: Apache-2.0
#ifndef ZEL_DB_CONNECTIONS_H
#define ZEL_DB_CONNECTIONS_H

#include <string>

#include "zel_db/handle.h"

namespace zel_db {

// The handle of the inventory database; null while that cannot be opened.
Handle* inventory_handle();

// Whether it is the inventory's handle or one that open_handle gave: a caller may have another of its own.
bool is_open(const Handle* handle);

// One transaction of this thread's reads. For the inventory it includes the handles that the thread opens
// meanwhile: their connections stay in it when they are closed, and are opened again by this thread alone.
// kInvalidArgument for a handle that is not open.
int begin_reads(Handle* handle);
int end_reads(Handle* handle);

// Opens a database, or takes a connection that was closed before; null and the reason when that fails.
Handle* open_handle(Target target, std::string* error);
// Keeps the connection for the next caller that asks for the same. False if it was not opened here.
bool close_handle(Handle* handle);

}  // namespace zel_db

#endif
