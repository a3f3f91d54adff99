// SPDX-License-Identifier: Apache-2.0
#include "zel_db/engines/mariadb/mariadb_engine.h"

#include <fcntl.h>
#include <mysqld_error.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <system_error>

#include "zel_db/engines/mariadb/mariadb_connection.h"

namespace zel_db {
namespace {

constexpr unsigned kConnectSeconds = 3;
// Longer than the longest wait for a lock.
constexpr unsigned kAnswerSeconds = 60;

// Texts are bytes, "..." is a text, "||" joins two, a backslash is an ordinary character; a value that does
// not fit is refused. A statement waits for locks as long as on the other engine. A semi-join would start
// with the rows of a sub-select, and deliver rows in their order.
constexpr const char* kSessionSettings =
    "SET NAMES latin1 COLLATE latin1_nopad_bin, autocommit=1, innodb_lock_wait_timeout=5, "
    "lock_wait_timeout=5, optimizer_switch='semijoin=off,mrr=off', "
    "sql_mode='STRICT_TRANS_TABLES,NO_ENGINE_SUBSTITUTION,NO_BACKSLASH_ESCAPES,NO_AUTO_VALUE_ON_ZERO,"
    "PIPES_AS_CONCAT'";

constexpr const char* kCharacters = " CHARACTER SET latin1 COLLATE latin1_nopad_bin";

std::string type_of(const Column& column) {
  switch (column.kind) {
    case Kind::Integer:
      return "BIGINT";
    case Kind::Unsigned64:
      return "BIGINT UNSIGNED";
    case Kind::Text:
      return "VARCHAR(" + std::to_string(column.size) + ")" + kCharacters;
    case Kind::Blob:
      break;
  }
  return "VARBINARY(" + std::to_string(column.size) + ")";
}

std::string columns_of(const std::string& table) {
  return "SELECT column_name, column_type FROM information_schema.columns WHERE table_schema=database() AND "
         "table_name='" +
         table + "'";
}

// A batch that waited while it holds locks would make others wait, so it takes a lock at once or is undone.
// Its reads lock the rows that they find, to see their present state. The isolation is that of the next
// transaction alone; a lower one could not be replicated by statements.
constexpr const char* kBatchSettings =
    "SET innodb_lock_wait_timeout=0, lock_wait_timeout=0, tx_isolation='SERIALIZABLE'";
constexpr const char* kUsualSettings = "SET innodb_lock_wait_timeout=5, lock_wait_timeout=5";  // as above

constexpr Dialect kDialect = {
    .insert_without_values = " () VALUES ()",
    .row_id = "BIGINT NOT NULL AUTO_INCREMENT PRIMARY KEY",
    .type = type_of,
    .table_options = " ENGINE=InnoDB DEFAULT CHARACTER SET latin1 COLLATE latin1_nopad_bin",
    .begin_definitions = "DO GET_LOCK(CONCAT('zeldb ', DATABASE()), 50)",
    .commit_definitions = "DO RELEASE_LOCK(CONCAT('zeldb ', DATABASE()))",
    .batch_settings = kBatchSettings,
    .begin_batch = "START TRANSACTION",
    .usual_settings = kUsualSettings,
    .columns_of = columns_of,
    .bytes = "binary",
    .rebuilds_tables = false,
    .without_indexes = " USE INDEX ()",
    .searches_conditions = true,
    .pays_for_order = true,
};

// The place of the database, for messages.
std::string name_of(const DatabaseUrl& url, const DatabaseUrl::Host& host, const Target& target) {
  std::string name = url.prefix + target.database + " at " + host.name;
  if (host.port != 0) name.append(":").append(std::to_string(host.port));
  if (uses_socket(host) && !url.socket.empty()) name.append(" (").append(url.socket).append(")");
  return name;
}

MariadbClient new_client(bool local) {
  MariadbClient client(api.mysql_init(nullptr));
  if (client == nullptr) throw std::bad_alloc();
  const unsigned protocol = local ? MYSQL_PROTOCOL_SOCKET : MYSQL_PROTOCOL_TCP;
  const unsigned local_infile = 0;
  api.mysql_optionsv(client.get(), MYSQL_OPT_PROTOCOL, &protocol);
  api.mysql_optionsv(client.get(), MYSQL_OPT_CONNECT_TIMEOUT, &kConnectSeconds);
  api.mysql_optionsv(client.get(), MYSQL_OPT_READ_TIMEOUT, &kAnswerSeconds);
  api.mysql_optionsv(client.get(), MYSQL_OPT_WRITE_TIMEOUT, &kAnswerSeconds);
  api.mysql_optionsv(client.get(), MYSQL_OPT_LOCAL_INFILE, &local_infile);
  api.mysql_optionsv(client.get(), MYSQL_SET_CHARSET_NAME, "latin1");
  return client;
}

bool run(MYSQL* client, const std::string& sql) {
  return api.mysql_real_query(client, sql.data(), static_cast<unsigned long>(sql.size())) == 0;
}

bool make_database(MYSQL* client, const std::string& name) {
  return run(client, "CREATE DATABASE IF NOT EXISTS `" + name + "`" + kCharacters) &&
         api.mysql_select_db(client, name.c_str()) == 0;
}

void set_tls(MYSQL* client, const DatabaseUrl& url) {
  const auto file = [](const std::string& path) { return path.empty() ? nullptr : path.c_str(); };
  const my_bool on = 1;
  const my_bool verifies = url.verifies ? 1 : 0;
  api.mysql_ssl_set(client, file(url.tls_key), file(url.tls_certificate), file(url.tls_authority), nullptr,
                    nullptr);
  api.mysql_optionsv(client, MYSQL_OPT_SSL_ENFORCE, &on);
  api.mysql_optionsv(client, MYSQL_OPT_SSL_VERIFY_SERVER_CERT, &verifies);
}

// The first line of the file; nothing, and the reason, if it cannot be read or others may read it.
std::optional<std::string> read_password(const std::string& path, std::string* error) {
  // Without O_NONBLOCK a named pipe in the file's place would hang the process here.
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  struct stat found {};
  char line[512];
  ssize_t size = -1;
  const bool is_found = fd >= 0 && fstat(fd, &found) == 0;
  if (is_found && !S_ISREG(found.st_mode)) {
    *error = "it is not a file";
  } else if (is_found && (found.st_mode & S_IRWXO) != 0) {
    *error = "everybody may use it";
  } else if (!is_found || (size = read(fd, line, sizeof line)) < 0) {
    *error = std::generic_category().message(errno);
  }
  if (fd >= 0) close(fd);
  if (size < 0) {
    *error = "password from " + path + ": " + *error;
    return std::nullopt;
  }
  const std::string_view content(line, static_cast<size_t>(size));
  return std::string(content.substr(0, content.find_first_of("\r\n")));
}

enum class Missing : uint8_t { Fails, IsMade };

// Null and the reason on failure.
std::unique_ptr<Connection> connect(const DatabaseUrl& url, const DatabaseUrl::Host& host,
                                    const Target& target, Missing missing, std::string* error) {
  const bool local = uses_socket(host);
  const bool makes = missing == Missing::IsMade;
  const std::string database = url.prefix + target.database;
  std::string password = url.password.value_or(target.password);
  if (!url.password_file.empty()) {
    std::optional<std::string> read = read_password(url.password_file, error);
    if (!read) return nullptr;
    password = std::move(*read);
  }
  if (!load_client_library(error)) return nullptr;
  MariadbClient client = new_client(local);
  if (url.uses_tls(host)) set_tls(client.get(), url);
  const bool connected =
      api.mysql_real_connect(client.get(), host.name.c_str(), url.user.value_or(target.user).c_str(),
                             password.c_str(), makes ? nullptr : database.c_str(), host.port,
                             local && !url.socket.empty() ? url.socket.c_str() : nullptr,
                             CLIENT_FOUND_ROWS) != nullptr;
  if (connected && run(client.get(), kSessionSettings) && (!makes || make_database(client.get(), database))) {
    return std::make_unique<MariadbConnection>(std::move(client), name_of(url, host, target));
  }
  *error = api.mysql_error(client.get());
  if (api.mysql_errno(client.get()) == ER_BAD_DB_ERROR)
    error->append(" (\"zeldb init\" makes the databases)");
  return nullptr;
}

std::unique_ptr<Connection> connect_to_any(const DatabaseUrl& url, const Target& target, Missing missing,
                                           std::string* error) {
  std::string reasons;
  for (const DatabaseUrl::Host& host : url.hosts) {
    std::string reason;
    std::unique_ptr<Connection> connection = connect(url, host, target, missing, &reason);
    if (connection != nullptr) return connection;
    reasons.append(reasons.empty() ? "cannot open " : "; nor ");
    reasons.append(name_of(url, host, target)).append(": ").append(reason);
  }
  *error = reasons;
  return nullptr;
}

class MariadbEngine : public Engine {
 public:
  std::unique_ptr<Connection> open(const DatabaseUrl& url, const Target& target,
                                   std::string* error) const override {
    return connect_to_any(url, target, Missing::Fails, error);
  }
  std::unique_ptr<Connection> create(const DatabaseUrl& url, const Target& target,
                                     std::string* error) const override {
    return connect_to_any(url, target, Missing::IsMade, error);
  }
  const Dialect& dialect() const override { return kDialect; }
};

}  // namespace

const Engine& mariadb_engine() {
  static const MariadbEngine engine;
  return engine;
}

}  // namespace zel_db
