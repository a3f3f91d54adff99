// SPDX-License-Identifier: Apache-2.0
#include "tests/scan/machine_file.h"

#include <cstdlib>
#include <fstream>
#include <map>
#include <numeric>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/support/texts.h"

namespace zeldb_test {
namespace {

namespace fs = std::filesystem;
using Numbers = std::map<std::string, unsigned long>;

unsigned long hex(const std::string& digits) {
  return std::stoul(digits, nullptr, 16);
}

std::string little_endian(unsigned long number, size_t width) {
  std::string bytes;
  for (size_t at = 0; at < width; ++at) bytes += static_cast<char>(number >> 8 * at & 0xFFU);
  return bytes;
}

std::string digits_of(unsigned long number, size_t width) {
  std::ostringstream text;
  text << std::hex << number;
  return std::string(width - std::min(width, text.str().size()), '0') + text.str();
}

std::string unescaped(const std::string& text) {
  std::string plain;
  for (size_t at = 0; at < text.size(); ++at) {
    const std::string two = text.substr(at, 2);
    plain += two == "\\x" ? static_cast<char>(hex(text.substr(at + 2, 2))) : two == "\\t" ? '\t' : text[at];
    at += two == "\\x" ? 3 : two == "\\t" ? 1 : 0;
  }
  return plain;
}

// "N*2+1", from left to right.
unsigned long value_of(const std::string& sum, const Numbers& numbers) {
  unsigned long value = 0;
  char sign = '+';
  for (size_t at = 0; at < sum.size();) {
    const size_t end = std::min(sum.find_first_of("+-*/%", at), sum.size());
    const std::string word = sum.substr(at, end - at);
    const unsigned long number = numbers.contains(word) ? numbers.at(word) : std::stoul(word);
    value = sign == '+'   ? value + number
            : sign == '-' ? value - number
            : sign == '*' ? value * number
            : sign == '/' ? value / number
                          : value % number;
    sign = end < sum.size() ? sum[end] : '\0';
    at = end + 1;
  }
  return value;
}

// The words with a mark in them: "rev=02".
std::map<std::string, std::string> pairs_in(const std::string& line) {
  std::map<std::string, std::string> pairs;
  std::istringstream words(line);
  for (std::string word; words >> word;) {
    const size_t mark = word.find('=');
    if (mark != std::string::npos) pairs[word.substr(0, mark)] = word.substr(mark + 1);
  }
  return pairs;
}

std::string filled(std::string line, const Numbers& numbers) {
  for (size_t at = 0; (at = line.find('{', at)) != std::string::npos;) {
    const size_t end = line.find('}', at);
    const std::string inside = line.substr(at + 1, end - at - 1);
    const size_t colon = inside.find(':');
    const unsigned long value = value_of(inside.substr(0, colon), numbers);
    std::string text = std::to_string(value);
    if (colon != std::string::npos) {
      const char form = inside[colon + 1];
      text = form == 'w' || form == 'd' ? "" : digits_of(value, static_cast<size_t>(form - '0'));
      for (const char byte : little_endian(value, form == 'w' ? 2 : form == 'd' ? 4 : 0))
        text += digits_of(static_cast<unsigned char>(byte), 2);
    }
    line.replace(at, end - at + 1, text);
  }
  return line;
}

std::string bytes_of(const std::string& text, std::string before = "") {
  std::istringstream words(text);
  for (std::string word; words >> word;) {
    if (word == "~") {
      before += static_cast<char>(-std::accumulate(before.begin(), before.end(), 0));
    } else if (word.front() == '"') {
      before += unescaped(word.substr(1, word.size() - 2));
    } else {
      const size_t star = word.find('*');
      for (size_t times = star == std::string::npos ? 1 : std::stoul(word.substr(star + 1)); times > 0;
           --times)
        for (size_t at = 0; at + 1 < std::min(star, word.size()); at += 2)
          before += static_cast<char>(hex(word.substr(at, 2)));
    }
  }
  return before;
}

class Folder {
 public:
  explicit Folder(fs::path root) : root_(std::move(root)) {}

  void make(const std::vector<std::string>& lines, size_t begin, size_t end, const Numbers& numbers) {
    for (size_t at = begin; at < end; ++at) {
      if (!lines[at].starts_with("each ")) {
        make(filled(lines[at], numbers));
        continue;
      }
      size_t last = at;
      for (int open = 1; open > 0; open += lines.at(last).starts_with("each ") ? 1
                                           : lines.at(last) == "end"           ? -1
                                                                               : 0)
        ++last;
      std::istringstream words(filled(lines[at], numbers));
      std::string word, name;
      unsigned long from = 0, to = 0;
      words >> word >> name >> from >> to;
      for (Numbers inside = numbers; from <= to; ++from) {
        inside[name] = from;
        make(lines, at + 1, last, inside);
      }
      at = last;
    }
  }

 private:
  std::string real(const std::string& path) const { return path.front() == '/' ? at_ + path : path; }

  void write(const std::string& path, const std::string& content,
             std::ios::openmode mode = std::ios::app) const {
    const fs::path file = root_ / real(path);
    fs::create_directories(file.parent_path());
    std::ofstream(file, mode | std::ios::binary) << content;
  }

  void link(const std::string& path, const std::string& target) const {
    const fs::path name = real(path);
    fs::create_directories((root_ / name).parent_path());
    const fs::path relative = fs::path(real(target)).lexically_relative(name.parent_path());
    fs::create_symlink(target.starts_with("..") ? fs::path(target) : relative, root_ / name);
  }

  void make(const std::string& line) {
    const size_t blank = line.find(' ');
    const std::string word = line.substr(0, blank);
    const std::string rest = line.substr(blank + 1);
    const auto is_split = [&line](const std::string& mark) { return line.find(mark) != std::string::npos; };
    const auto parts = [&line](const std::string& mark) {
      return std::pair(line.substr(0, line.find(mark)), line.substr(line.find(mark) + mark.size()));
    };
    if (word == "*") return;
    if (word == "at") {
      at_ = rest;
    } else if (word == "pci") {
      make_function(rest);
    } else if (word == "files") {
      write_each(rest.substr(0, rest.find(' ')), rest);
    } else if (word == "net") {
      const std::string folder = "/net/" + rest.substr(0, rest.find(' '));
      write_each(folder, rest);
      link(folder + "/device", at_);
      link("sys/class" + folder, folder);
    } else if (word == "scsi") {
      std::string block, path;
      std::istringstream(rest) >> block >> path;
      at_ += "/" + path;
      write_each("", rest);
      link("/block/" + block + "/device", at_);
      link("sys/block/" + block, "/block/" + block);
    } else if (word == "smbios" || word == "entry") {
      make_structure(word == "entry", rest);
    } else if (is_split(" -> ")) {
      link(parts(" -> ").first, parts(" -> ").second);
    } else if (is_split(" # ")) {
      const auto [path, bytes] = parts(" # ");
      write(path, bytes_of(bytes, content_of(root_ / real(path))), std::ios::trunc);
    } else if (is_split(": ")) {
      write(parts(": ").first, unescaped(parts(": ").second) + "\n");
    } else {
      throw std::runtime_error(line);
    }
  }

  void write_each(const std::string& folder, const std::string& words) const {
    for (const auto& [name, value] : pairs_in(words)) write(folder + "/" + name, unescaped(value) + "\n");
  }

  void make_structure(bool is_entry, const std::string& line) {
    std::vector<std::string> parts;
    for (size_t at = 0; at <= line.size();) {
      const size_t end = std::min(line.find("; ", at), line.size());
      parts.push_back(line.substr(at, end - at));
      at = end + 2;
    }
    const std::string type = line.substr(0, line.find(' '));
    std::string structure = bytes_of(parts[0].substr(type.size()));
    structure.insert(0, {static_cast<char>(std::stoi(type)), static_cast<char>(structure.size() + 2)});
    for (size_t nth = 1; nth < parts.size(); ++nth) structure += unescaped(parts[nth]) + '\0';
    structure.append(parts.size() == 1 ? 2 : 1, '\0');
    const std::string entry =
        is_entry ? "entries/" + type + "-" + std::to_string(entries_[type]++) + "/raw" : "tables/DMI";
    write("sys/firmware/dmi/" + entry, structure);
  }

  void make_function(const std::string& line) {
    std::istringstream words(line);
    std::string path, ids, kind;
    words >> path >> ids >> kind;
    auto more = pairs_in(line);
    at_ = "sys/devices/" + path;
    const std::string vendor = ids.substr(0, 4), device = ids.substr(5);
    std::string config(more.contains("link") ? 256 : 64, '\0');
    const auto put = [&config](size_t at, unsigned long number, size_t width) {
      config.replace(at, width, little_endian(number, width));
    };
    put(0x00, more.contains("vf") ? 0xFFFFFFFF : hex(device) << 16 | hex(vendor), 4);
    put(0x08, hex(kind) << 8 | 1, 4);
    if (more.contains("bus")) {
      put(0x0E, 1, 1);
      put(0x18, hex(path.substr(path.size() - 7, 2)) | hex(more["bus"]) << 8 | hex(more["bus"]) << 16, 3);
    }
    if (more.contains("sub")) put(0x2C, hex(more["sub"].substr(5)) << 16 | hex(more["sub"]), 4);
    if (more.contains("link")) {
      unsigned now = 0, lanes = 0, most = 0, most_lanes = 0;
      char mark = 0;
      std::istringstream(more["link"]) >> now >> mark >> lanes >> mark >> most >> mark >> most_lanes;
      put(0x06, 0x10, 2);
      put(0x34, 0x40, 1);
      put(0x40, 0x10 | (more.contains("slot") ? 0x1000000 : 0) | (more.contains("bus") ? 0x420000 : 0x020000),
          4);
      put(0x4C, most | most_lanes << 4, 4);
      put(0x52, now | lanes << 4, 2);
      if (more.contains("slot")) put(0x54, std::stoul(more["slot"]) << 19, 4);
    }
    write("/config", config);
    write("/vendor", "0x" + vendor + "\n");
    write("/device", "0x" + device + "\n");
    write("/class", "0x" + kind + "\n");
    if (more.contains("node")) write("/numa_node", more["node"] + "\n");
    if (more.contains("vf")) link("/physfn", "sys/devices/" + more["vf"]);
    link("sys/bus/pci/devices/" + path.substr(path.rfind('/') + 1), at_);
  }

  fs::path root_;
  std::string at_;
  std::map<std::string, int> entries_;
};

}  // namespace

void unpack(const fs::path& file, const fs::path& root) {
  std::istringstream stream(content_of(file));
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  Folder(root).make(lines, 0, lines.size(), {});
}

Scratch::Scratch() {
  std::string name =
      (fs::is_directory("/dev/shm") ? fs::path("/dev/shm") : fs::temp_directory_path()) / "zeldb-XXXXXX";
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error(name);
  folder = name;
}

Scratch::~Scratch() {
  fs::remove_all(folder);
}

}  // namespace zeldb_test
