// SPDX-License-Identifier: Apache-2.0
#include "cli/fleet.h"

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <deque>
#include <filesystem>
#include <map>
#include <optional>
#include <thread>

#include "cli/apart.h"
#include "cli/at_signal.h"
#include "cli/command.h"
#include "cli/snapshot.h"
#include "cli/terminal.h"

namespace zeldb::cli {

namespace fs = std::filesystem;

namespace {

constexpr const char* kEndings[] = {".zeldb", ".db", ".sqlite"};

std::string name_of(const fs::path& file) {
  const bool is_ending = std::ranges::find(kEndings, file.extension().string()) != std::end(kEndings);
  return is_ending ? file.stem() : file.filename();
}

// Hidden files, and those that SQLite keeps beside a database in use.
bool is_left_out(const std::string& name) {
  return name.starts_with('.') || name.ends_with("-wal") || name.ends_with("-shm") ||
         name.ends_with("-journal");
}

std::vector<std::string> files_in(const std::string& folder) {
  std::vector<std::string> files;
  std::error_code error;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
    if (!is_left_out(entry.path().filename()) && !fs::is_directory(entry.path(), error))
      files.push_back(entry.path());
  }
  if (error) throw Failure(folder + ": " + error.message());
  if (files.empty()) throw Failure(folder + ": has no files");
  std::ranges::sort(
      files, [](const auto& one, const auto& other) { return strverscmp(one.c_str(), other.c_str()) < 0; });
  return files;
}

// Shows the progress in a line on a terminal, after the first second.
class Progress {
 public:
  explicit Progress(size_t whole) : whole_(whole), is_shown_(isatty(STDERR_FILENO) != 0) {}
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress() { clear(); }

  void tell(size_t done) {
    const auto now = std::chrono::steady_clock::now();
    if (!is_shown_ || now < next_) return;
    std::fprintf(stderr, "\r%zu of %zu machines", done, whole_);
    std::fflush(stderr);
    is_there_ = true;
    next_ = now + std::chrono::milliseconds(200);
  }
  void clear() {
    if (is_there_) std::fputs("\r\x1b[K", stderr);
    is_there_ = false;
  }

 private:
  size_t whole_;
  bool is_shown_;
  bool is_there_ = false;
  std::chrono::steady_clock::time_point next_ = std::chrono::steady_clock::now() + std::chrono::seconds(1);
};

// The processes that read the machines. They end with this one; otherwise their folder would stay.
class Crew final : AtSignal {
 public:
  explicit Crew(size_t size) : folders_(size), members_(size) {
    folders_.front().prepare();
    watch();
  }
  ~Crew() override {
    const SignalsBlocked blocked;
    unwatch();
    Crew::undo();
  }
  Crew(const Crew&) = delete;
  Crew& operator=(const Crew&) = delete;

  bool start(size_t machine, const std::vector<Machine>& machines, const std::function<std::string()>& ask) {
    const auto free = std::ranges::find(members_, -1, &Member::child);
    if (free == members_.end()) return false;
    const SnapshotFolder& folder = folders_[static_cast<size_t>(free - members_.begin())];
    const Apart apart = start_apart([&](int to) {
      send(to, reply_of([&] {
             folder.use(machines[machine].file);
             return ask();
           }));
    });
    *free = {.child = apart.child, .pipe = apart.pipe, .machine = machine, .text = {}};
    return true;
  }

  // Waits a while for their output. Calls done(machine, reply) for each that has ended.
  template <typename Done>
  void listen(Done done) {
    std::vector<pollfd> pipes;
    for (const Member& member : members_) pipes.push_back({member.pipe, POLLIN, 0});
    constexpr int kMilliseconds = 200;
    if (poll(pipes.data(), pipes.size(), kMilliseconds) <= 0) return;
    for (size_t place = 0; place < pipes.size(); ++place) {
      if (pipes[place].revents != 0 && !hear(members_[place])) finish(members_[place], done);
    }
  }

 private:
  struct Member {
    pid_t child = -1;
    int pipe = -1;  // poll passes over it
    size_t machine = 0;
    std::string text{};
  };

  // False at the end.
  static bool hear(Member& member) {
    char block[65536];
    const ssize_t size = read(member.pipe, block, sizeof(block));
    if (size <= 0) return size < 0 && errno == EINTR;
    member.text.append(block, static_cast<size_t>(size));
    return true;
  }

  template <typename Done>
  void finish(Member& member, Done done) {
    int status = 0;
    while (waitpid(member.child, &status, 0) < 0 && errno == EINTR) continue;
    close(member.pipe);
    done(member.machine, status == 0 ? std::move(member.text) : std::string());
    member = Member();
  }

  void undo() const noexcept override {
    for (const Member& member : members_) {
      if (member.child > 0 && kill(member.child, SIGKILL) == 0) waitpid(member.child, nullptr, 0);
    }
  }

  std::deque<SnapshotFolder> folders_;
  std::vector<Member> members_;
};

}  // namespace

bool are_many(const std::vector<std::string>& files) {
  std::error_code error;
  return files.size() > 1 || (files.size() == 1 && fs::is_directory(files.front(), error));
}

std::vector<Machine> machines_of(const std::vector<std::string>& files) {
  std::vector<Machine> machines;
  std::error_code error;
  for (const std::string& file : files) {
    for (const std::string& one :
         fs::is_directory(file, error) ? files_in(file) : std::vector<std::string>{file})
      machines.push_back({name_of(one), one});
  }
  std::map<std::string, size_t> count;
  for (const Machine& machine : machines) ++count[machine.name];
  for (Machine& machine : machines) {
    if (count[machine.name] > 1) machine.name = machine.file;
  }
  return machines;
}

size_t ask_each(const std::vector<Machine>& machines, const std::function<std::string()>& ask,
                const std::function<void(const Machine& machine, std::string_view answer)>& take) {
  constexpr size_t kMost = 16;
  const size_t processors = std::clamp<size_t>(std::thread::hardware_concurrency(), 1, kMost);
  Crew crew(std::min(processors, machines.size()));
  Progress progress(machines.size());
  std::map<size_t, std::string> replies;  // those that came before their turn
  size_t failed = 0;
  size_t started = 0;
  for (size_t turn = 0; turn < machines.size();) {
    while (started < machines.size() && crew.start(started, machines, ask)) ++started;
    crew.listen([&replies](size_t machine, std::string reply) { replies[machine] = std::move(reply); });
    for (auto next = replies.find(turn); next != replies.end(); next = replies.find(++turn)) {
      const Machine& machine = machines[turn];
      std::optional<std::string> answer;
      try {
        answer = made_of(std::move(next->second));
      } catch (const Failure& failure) {
        const std::string why = failure.what();
        const std::string start = machine.file + ": ";
        ++failed;
        progress.clear();
        complain((why.starts_with(start) ? "" : start) + why);
      }
      if (answer) take(machine, *answer);
      replies.erase(next);
    }
    progress.tell(turn);
  }
  return failed;
}

}  // namespace zeldb::cli
