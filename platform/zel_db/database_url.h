// SPDX-License-Identifier: Apache-2.0
//
// The place of the databases, in one line of text (percent-decoded):
//   sqlite:///DIRECTORY or sqlite:///FILE
//   mariadb://[USER[:PASSWORD]@]HOST[:PORT][,HOST2...]/?OPTION=VALUE&...
#ifndef ZEL_DB_DATABASE_URL_H
#define ZEL_DB_DATABASE_URL_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zel_db {

inline constexpr const char* kDefaultUrl = "sqlite:///var/lib/zeldb";

struct DatabaseUrl {
  enum class Scheme : uint8_t { Sqlite, MariaDb };
  struct Host {
    std::string name;
    uint16_t port;  // 0: the server's default

    bool operator==(const Host&) const = default;
  };

  Scheme scheme = Scheme::Sqlite;
  std::string path;  // SQLite: the directory or file
  std::optional<std::string> user;
  std::optional<std::string> password;
  std::vector<Host> hosts;  // in the order in which they are tried
  std::string socket;
  std::string prefix;  // of the databases' names: word characters
  std::string password_file;
  std::string tls_authority;  // files: certificate of the authority, own certificate, its key
  std::string tls_certificate;
  std::string tls_key;
  std::optional<bool> tls;  // unset: TLS is used with other machines
  bool verifies = true;     // that the certificate is the server's

  bool uses_tls(const Host& host) const;
};

// "localhost" without a port means the server's socket, as for every client of such a server.
bool uses_socket(const DatabaseUrl::Host& host);

// Nothing and a line that says why when text is no such URL. The line does not repeat a password.
std::optional<DatabaseUrl> parse_database_url(std::string_view text, std::string* error);

}  // namespace zel_db

#endif
