// SPDX-License-Identifier: Apache-2.0
//
// Many machines, each a file that zeldb export has written.
#ifndef CLI_FLEET_H
#define CLI_FLEET_H

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace zeldb::cli {

struct Machine {
  std::string name;  // of the file, without .zeldb, .db or .sqlite; where two would share it, the path
  std::string file;
};

// Whether files stand for more than one machine: there are several, or one is a folder.
bool are_many(const std::vector<std::string>& files);
// A folder stands for all files in it but hidden ones and the logs of SQLite, in the order of their names.
std::vector<Machine> machines_of(const std::vector<std::string>& files);

// Reads each machine in a process of its own, because the library opens one inventory per process. Several
// run at a time; the answers come in the order of the machines. A machine that cannot be read gives a line on
// standard error; their number is returned. Shows the progress on a terminal.
size_t ask_each(const std::vector<Machine>& machines, const std::function<std::string()>& ask,
                const std::function<void(const Machine& machine, std::string_view answer)>& take);

}  // namespace zeldb::cli

#endif
