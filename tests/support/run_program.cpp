// SPDX-License-Identifier: Apache-2.0
#include "tests/support/run_program.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <sstream>
#include <thread>

#ifndef ZELDB_EMULATOR
#define ZELDB_EMULATOR ""
#endif

namespace zeldb_test {
namespace {

constexpr const char* kEmulator = ZELDB_EMULATOR;

using File = std::unique_ptr<FILE, int (*)(FILE*)>;

std::string text_of(const File& file) {
  std::ifstream stream("/proc/self/fd/" + std::to_string(fileno(file.get())));
  return {std::istreambuf_iterator<char>(stream), {}};
}

std::vector<std::string> command_line(const Program& program) {
  std::vector<std::string> line;
  // Programs of the system are this machine's own.
  const bool built_here = program.argv[0].find('/') != std::string::npos;
  std::istringstream emulator(built_here ? kEmulator : "");
  for (std::string word; std::getline(emulator, word, ';');) line.push_back(word);
  if (!line.empty() && !program.preload.empty())
    line.insert(line.end(), {"-E", "LD_PRELOAD=" + program.preload});
  line.insert(line.end(), program.argv.begin(), program.argv.end());
  return line;
}

std::vector<std::string> environment(const Program& program) {
  std::map<std::string, std::string> variables;
  const auto set = [&variables](const std::string& entry) {
    variables[entry.substr(0, entry.find('='))] = entry;
  };
  for (char** entry = environ; *entry != nullptr; ++entry) set(*entry);
  for (const std::string& entry : program.env) set(entry);
  if (!program.preload.empty()) {
    const char* options = std::getenv("ASAN_OPTIONS");
    set("ASAN_OPTIONS=verify_asan_link_order=0:" + std::string(options != nullptr ? options : ""));
    // An emulator cannot load it itself, and hands it on by an option.
    if (*kEmulator == '\0') set("LD_PRELOAD=" + program.preload);
  }
  std::vector<std::string> entries;
  entries.reserve(variables.size());
  for (const auto& [name, entry] : variables) entries.push_back(entry);
  return entries;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

pid_t start(const Program& program, int out, int err) {
  std::vector<std::string> line = command_line(program);
  std::vector<std::string> variables = environment(program);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, out, STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, err, STDERR_FILENO);
  posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
  pid_t pid = -1;
  const int failure = posix_spawnp(&pid, line[0].c_str(), &actions, nullptr, pointers(line).data(),
                                   pointers(variables).data());
  posix_spawn_file_actions_destroy(&actions);
  return failure == 0 ? pid : -1;
}

}  // namespace

Outcome run_program(const Program& program) {
  const File out(std::tmpfile(), std::fclose);
  const File err(std::tmpfile(), std::fclose);
  Outcome outcome;
  const pid_t pid = start(program, fileno(out.get()), fileno(err.get()));
  const auto deadline = std::chrono::steady_clock::now() + program.timeout;
  int status = 127 << 8;
  while (pid > 0 && waitpid(pid, &status, WNOHANG) == 0) {
    if (!outcome.timed_out && std::chrono::steady_clock::now() > deadline) {
      outcome.timed_out = kill(pid, SIGKILL) == 0;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  if (WIFEXITED(status)) outcome.exit_status = WEXITSTATUS(status);
  if (WIFSIGNALED(status)) outcome.signal = WTERMSIG(status);
  outcome.out = text_of(out);
  outcome.err = text_of(err);
  return outcome;
}

}  // namespace zeldb_test
