// SPDX-License-Identifier: Apache-2.0
#include "zel_db/database_url.h"

#include <arpa/inet.h>

#include <algorithm>
#include <charconv>
#include <iterator>
#include <stdexcept>

#include "zel_db/sql/tokens.h"

namespace zel_db {
namespace {

struct UrlError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

std::string decoded(std::string_view text) {
  std::string result;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      result.push_back(text[i]);
      continue;
    }
    unsigned byte = 0;
    const std::string_view digits = text.substr(i + 1, 2);
    const auto [end, failure] = std::from_chars(digits.data(), digits.data() + digits.size(), byte, 16);
    if (failure != std::errc() || end != digits.data() + 2 || byte == 0) {
      throw UrlError("\"%\" without the two digits of a character");
    }
    result.push_back(static_cast<char>(byte));
    i += 2;
  }
  return result;
}

// Takes the text before the separator off rest; all of it when there is none.
std::string_view take_before(std::string_view& rest, char separator) {
  const size_t place = rest.find(separator);
  const std::string_view taken = rest.substr(0, place);
  rest = place == std::string_view::npos ? std::string_view() : rest.substr(place + 1);
  return taken;
}

DatabaseUrl::Host parse_host(std::string_view text) {
  DatabaseUrl::Host host{};
  // An IPv6 address stands in brackets, which are not part of its name.
  const size_t bracket = text.starts_with('[') ? text.find(']') : 0;
  if (bracket == std::string_view::npos) throw UrlError("\"[\" without \"]\"");
  const size_t colon = text.find(':', bracket);
  const std::string_view name = text.substr(0, colon);
  host.name = decoded(bracket != 0 ? name.substr(1, bracket - 1) : name);
  if (bracket != 0 && name.size() != bracket + 1) throw UrlError("text after \"]\"");
  if (colon != std::string_view::npos) {
    const std::string_view port = text.substr(colon + 1);
    const auto [end, failure] = std::from_chars(port.data(), port.data() + port.size(), host.port);
    if (failure != std::errc() || end != port.data() + port.size() || host.port == 0) {
      throw UrlError("a port is a number from 1 to 65535");
    }
  }
  if (host.name.empty()) throw UrlError("a host without a name");
  return host;
}

void parse_authority(std::string_view authority, DatabaseUrl& url) {
  const size_t at = authority.rfind('@');
  if (at != std::string_view::npos) {
    std::string_view password = authority.substr(0, at);
    const bool has_password = password.find(':') != std::string_view::npos;
    url.user = decoded(take_before(password, ':'));
    if (has_password) url.password = decoded(password);
    authority.remove_prefix(at + 1);
  }
  while (!authority.empty()) {
    url.hosts.push_back(parse_host(take_before(authority, ',')));
  }
}

struct TextOption {
  std::string_view name;
  std::string DatabaseUrl::*place;
};
constexpr TextOption kTexts[] = {{"socket", &DatabaseUrl::socket},
                                 {"prefix", &DatabaseUrl::prefix},
                                 {"password-file", &DatabaseUrl::password_file},
                                 {"ssl-ca", &DatabaseUrl::tls_authority},
                                 {"ssl-cert", &DatabaseUrl::tls_certificate},
                                 {"ssl-key", &DatabaseUrl::tls_key}};

bool parse_switch(std::string_view name, std::string_view value) {
  if (value != "on" && value != "off") throw UrlError(std::string(name) + " is on or off");
  return value == "on";
}

void parse_options(std::string_view options, DatabaseUrl& url) {
  while (!options.empty()) {
    std::string_view value = take_before(options, '&');
    const std::string_view name = take_before(value, '=');
    const auto same = [&](const TextOption& option) { return option.name == name; };
    const auto* const text = std::find_if(std::begin(kTexts), std::end(kTexts), same);
    if (text != std::end(kTexts)) {
      url.*text->place = decoded(value);
    } else if (name == "ssl") {
      url.tls = parse_switch(name, value);
    } else if (name == "ssl-verify") {
      url.verifies = parse_switch(name, value);
    } else {
      throw UrlError(
          "the options are socket, prefix, password-file, ssl, ssl-ca, ssl-cert, ssl-key and ssl-verify");
    }
  }
  if (url.password && !url.password_file.empty()) throw UrlError("a password and a file that holds one");
  // The prefix becomes part of names in statements, where nothing can be bound.
  const auto plain = [](char c) { return is_word(c) && c != '$' && static_cast<unsigned char>(c) < 0x80; };
  if (!std::all_of(url.prefix.begin(), url.prefix.end(), plain)) {
    throw UrlError("a prefix has letters, digits and \"_\" only");
  }
}

DatabaseUrl parse(std::string_view text) {
  constexpr std::string_view kSqlite = "sqlite://";
  constexpr std::string_view kMariaDb = "mariadb://";
  DatabaseUrl url;
  if (text.starts_with(kSqlite)) {
    text.remove_prefix(kSqlite.size());
    url.path = decoded(text);
    if (!text.starts_with('/')) throw UrlError("the path after \"sqlite://\" starts with \"/\"");
  } else if (text.starts_with(kMariaDb)) {
    text.remove_prefix(kMariaDb.size());
    url.scheme = DatabaseUrl::Scheme::MariaDb;
    std::string_view options = text;
    std::string_view authority = take_before(options, '?');
    const size_t slash = authority.find('/');
    if (slash != std::string_view::npos && slash + 1 != authority.size()) {
      throw UrlError("text between \"/\" and \"?\"");
    }
    parse_authority(authority.substr(0, slash), url);
    parse_options(options, url);
    if (url.hosts.empty()) url.hosts.push_back({"localhost", 0});
  } else {
    throw UrlError("it starts neither with \"sqlite://\" nor with \"mariadb://\"");
  }
  return url;
}

// The part of the text that a message may repeat: the rest might be a password in the wrong place.
std::string shown(std::string_view text) {
  constexpr std::string_view kMark = "://";
  if (text.starts_with("sqlite://")) return std::string(text);
  const size_t mark = text.find(kMark);
  if (mark != std::string_view::npos) return std::string(text.substr(0, mark + kMark.size())) + "...";
  if (text.find_first_of("@:") != std::string_view::npos) return "...";
  return std::string(text);
}

}  // namespace

bool uses_socket(const DatabaseUrl::Host& host) {
  return host.name == "localhost" && host.port == 0;
}

// Names are not looked up: only "localhost" is this machine.
bool DatabaseUrl::uses_tls(const Host& host) const {
  if (uses_socket(host)) return false;
  if (tls) return *tls;
  in_addr v4{};
  in6_addr v6{};
  const bool here = host.name == "localhost" ||
                    (inet_pton(AF_INET, host.name.c_str(), &v4) == 1 && ntohl(v4.s_addr) >> 24U == 127) ||
                    (inet_pton(AF_INET6, host.name.c_str(), &v6) == 1 && IN6_IS_ADDR_LOOPBACK(&v6));
  return !here || !tls_authority.empty() || !tls_certificate.empty();
}

std::optional<DatabaseUrl> parse_database_url(std::string_view text, std::string* error) {
  try {
    return parse(text);
  } catch (const UrlError& bad) {
    *error = "not the URL of a database: " + shown(text) + ": " + bad.what();
    return std::nullopt;
  }
}

}  // namespace zel_db
