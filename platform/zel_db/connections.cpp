// SPDX-License-Identifier: Apache-2.0
#include "zel_db/connections.h"

#include <pthread.h>

#include <algorithm>
#include <cstdlib>
#include <list>
#include <utility>

namespace zel_db {
namespace {

struct Parked {
  Target target;
  std::unique_ptr<Session> session;
};

// A handle, and the place where its connection is parked when it is closed: closing takes no memory.
struct Open {
  std::unique_ptr<Handle> handle;
  std::list<Parked> place;
};

// All connections of the process. None crosses a fork: SQLite's locks belong to the process that took them,
// while what it remembers of them is copied, so that a child would trust locks that it does not hold, even
// with a connection of its own; and two processes cannot talk to a server through one socket. So all are
// closed before the fork, and parent and child connect again when they need to.
class Registry {
 public:
  static Registry& instance() {
    static auto& registry = *new Registry;
    return registry;
  }

  Handle* inventory() { return &inventory_; }
  Handle* open(Target target, std::string* error);
  bool close(Handle* handle);
  bool has(const Handle* handle);
  int begin_reads(Handle* handle);
  int end_reads(Handle* handle);

  void before_fork();
  void after_fork();
  void at_exit();

 private:
  static constexpr size_t kMostParked = 8;

  Registry();
  Handle* add(Target target);
  void end_joined_reads();

  std::mutex mutex_;
  Handle inventory_;
  std::list<Open> open_;
  std::list<Parked> parked_;  // the newest first
};

Registry::Registry() : inventory_({std::string(environment_url()), std::string(kDatabases[0]), "root", ""}) {
  pthread_atfork([] { instance().before_fork(); }, [] { instance().after_fork(); },
                 [] { instance().after_fork(); });
  std::atexit([] { instance().at_exit(); });
}

// The handle is registered before it connects, so that a fork closes it, too.
Handle* Registry::add(Target target) {
  std::list<Open> added(1);
  added.front().place.push_front({target, nullptr});
  added.front().handle = std::make_unique<Handle>(std::move(target));
  Handle* handle = added.front().handle.get();
  if (is_reading()) handle->join_reads();
  const std::lock_guard lock(mutex_);
  open_.splice(open_.end(), added);
  const auto same = [&](const Parked& parked) {
    return !parked.session->is_read_elsewhere() && parked.target == handle->target();
  };
  const auto joined = [&](const Parked& parked) { return same(parked) && parked.session->reader; };
  auto found = std::find_if(parked_.begin(), parked_.end(), joined);  // what it has read it sees again
  if (found == parked_.end()) found = std::find_if(parked_.begin(), parked_.end(), same);
  if (found != parked_.end()) {
    handle->attach(std::move(found->session));
    parked_.erase(found);
  }
  return handle;
}

Handle* Registry::open(Target target, std::string* error) {
  const auto give_up = [this](Handle* failed) { close(failed); };
  std::unique_ptr<Handle, decltype(give_up)> handle(add(std::move(target)), give_up);
  if (handle->is_ready()) return handle.release();
  *error = handle->message();
  return nullptr;
}

bool Registry::has(const Handle* handle) {
  if (handle == &inventory_) return true;
  const std::lock_guard lock(mutex_);
  return std::any_of(open_.begin(), open_.end(),
                     [&](const Open& open) { return open.handle.get() == handle; });
}

// A transaction of reads ends with those of the inventory.
bool may_stay(const Session& session) {
  return session.reader ? is_reading() && !session.is_read_elsewhere()
                        : !session.connection->in_transaction();
}

bool Registry::close(Handle* handle) {
  std::list<Parked> dropped;  // these are closed when the lock is released again
  std::list<Open> closed;
  const std::lock_guard lock(mutex_);
  const auto same = [&](const Open& open) { return open.handle.get() == handle; };
  const auto found = std::find_if(open_.begin(), open_.end(), same);
  if (found == open_.end()) return false;
  closed.splice(closed.end(), open_, found);
  std::unique_ptr<Session> session = handle->detach();
  if (session != nullptr && !session->connection->is_lost() && may_stay(*session)) {
    found->place.front().session = std::move(session);
    parked_.splice(parked_.begin(), found->place);
    if (parked_.size() > kMostParked) dropped.splice(dropped.end(), parked_, std::prev(parked_.end()));
  }
  return true;
}

int Registry::begin_reads(Handle* handle) {
  if (!has(handle)) return kInvalidArgument;
  const int status = handle->begin_reads();
  if (status == kOk && handle == &inventory_) is_reading() = true;
  return status;
}

int Registry::end_reads(Handle* handle) {
  if (!has(handle)) return kInvalidArgument;
  if (handle == &inventory_ && std::exchange(is_reading(), false)) end_joined_reads();
  return handle->end_reads();
}

void Registry::end_joined_reads() {
  std::list<Parked> dropped;
  const std::lock_guard lock(mutex_);
  for (auto parked = parked_.begin(); parked != parked_.end();) {
    const auto next = std::next(parked);
    if (parked->session->reader == std::this_thread::get_id() && !parked->session->end_reads())
      dropped.splice(dropped.end(), parked_, parked);
    parked = next;
  }
  for (const Open& open : open_) {
    if (open.handle->joins_reads()) open.handle->end_reads();
  }
}

void Registry::before_fork() {
  mutex_.lock();
  parked_.clear();
  inventory_.mutex().lock();
  inventory_.disconnect();
  for (const Open& open : open_) {
    open.handle->mutex().lock();
    open.handle->disconnect();
  }
  process_mutex().lock();
}

void Registry::after_fork() {
  process_mutex().unlock();
  for (const Open& open : open_) open.handle->mutex().unlock();
  inventory_.mutex().unlock();
  mutex_.unlock();
}

// Closes the connections that nobody uses at this moment. Threads may still run, so nothing is destroyed.
void Registry::at_exit() {
  const std::unique_lock lock(mutex_, std::try_to_lock);
  if (!lock) return;
  parked_.clear();
  const auto close_idle = [](Handle& handle) {
    const std::unique_lock idle(handle.mutex(), std::try_to_lock);
    if (idle) handle.disconnect();
  };
  close_idle(inventory_);
  for (const Open& open : open_) close_idle(*open.handle);
}

}  // namespace

Handle* inventory_handle() {
  Handle* handle = Registry::instance().inventory();
  return handle->is_ready_in_environment() ? handle : nullptr;
}

bool is_open(const Handle* handle) {
  return Registry::instance().has(handle);
}

int begin_reads(Handle* handle) {
  return Registry::instance().begin_reads(handle);
}

int end_reads(Handle* handle) {
  return Registry::instance().end_reads(handle);
}

Handle* open_handle(Target target, std::string* error) {
  return Registry::instance().open(std::move(target), error);
}

bool close_handle(Handle* handle) {
  return Registry::instance().close(handle);
}

}  // namespace zel_db
