// SPDX-License-Identifier: Apache-2.0
//
// MariaDB's client library. It is loaded with the first connection to a server, since it brings OpenSSL
// along, which every process without a server would pay for.
#ifndef ZEL_DB_CLIENT_LIBRARY_H
#define ZEL_DB_CLIENT_LIBRARY_H

#include <mysql.h>

#include <string>

namespace zel_db {

#define ZEL_DB_CLIENT_FUNCTIONS(X) \
  X(mariadb_get_infov)             \
  X(mariadb_stmt_fetch_fields)     \
  X(mysql_close)                   \
  X(mysql_errno)                   \
  X(mysql_error)                   \
  X(mysql_get_socket)              \
  X(mysql_init)                    \
  X(mysql_optionsv)                \
  X(mysql_real_connect)            \
  X(mysql_real_query)              \
  X(mysql_select_db)               \
  X(mysql_server_init)             \
  X(mysql_ssl_set)                 \
  X(mysql_stmt_affected_rows)      \
  X(mysql_stmt_bind_param)         \
  X(mysql_stmt_bind_result)        \
  X(mysql_stmt_close)              \
  X(mysql_stmt_errno)              \
  X(mysql_stmt_error)              \
  X(mysql_stmt_execute)            \
  X(mysql_stmt_fetch)              \
  X(mysql_stmt_fetch_column)       \
  X(mysql_stmt_field_count)        \
  X(mysql_stmt_free_result)        \
  X(mysql_stmt_init)               \
  X(mysql_stmt_insert_id)          \
  X(mysql_stmt_param_count)        \
  X(mysql_stmt_prepare)

struct ClientLibrary {
#define ZEL_DB_CLIENT_FUNCTION(Name) \
  decltype(&::Name) Name;  // NOLINT(bugprone-macro-parentheses): a declaration
  ZEL_DB_CLIENT_FUNCTIONS(ZEL_DB_CLIENT_FUNCTION)
#undef ZEL_DB_CLIENT_FUNCTION
};

// May be used while there is a connection.
extern ClientLibrary api;

// False, and the reason, if it cannot be loaded.
bool load_client_library(std::string* error);

}  // namespace zel_db

#endif
