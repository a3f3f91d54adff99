// SPDX-License-Identifier: Apache-2.0
#include "bench/program.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

namespace bench {

rusage run_program(std::vector<std::string> words) {
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  pid_t child = 0;
  int status = -1;
  rusage used = {};
  const int refused = posix_spawn(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (refused != 0 || wait4(child, &status, 0, &used) != child || status != 0)
    throw std::runtime_error(words[0] + " " + words[1] + " failed");
  return used;
}

int in_folder(const std::string& name, void (*run)(const std::string& folder)) {
  namespace fs = std::filesystem;
  std::string folder = fs::temp_directory_path() / (name + ".XXXXXX");
  if (mkdtemp(folder.data()) == nullptr) return 1;
  int status = 0;
  try {
    run(folder);
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "%s: %s\n", name.c_str(), failure.what());
    status = 1;
  }
  fs::remove_all(folder);
  return status;
}

}  // namespace bench
