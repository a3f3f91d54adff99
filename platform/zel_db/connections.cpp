// SPDX-License-Identifier: Apache-2.0
#include "zel_db/connections.h"

#include <pthread.h>

#include <algorithm>
#include <cstdlib>
#include <list>
#include <vector>

namespace zel_db {
namespace {

struct Parked {
  Origin origin;
  std::unique_ptr<Session> session;
};

// All connections of the process. None crosses a fork: SQLite's locks belong to the process that took them,
// while what it remembers of them is copied, so that a child would trust locks that it does not hold, even
// with a connection of its own; and two processes cannot talk to a server through one socket. So all are
// closed before the fork, and parent and child connect again when they next need to.
class Registry {
 public:
  static Registry& instance() {
    static auto& registry = *new Registry;
    return registry;
  }

  Handle* inventory() { return &inventory_; }
  Handle* open(Origin origin, std::string* error);
  bool close(Handle* handle);

  void before_fork();
  void after_fork();
  void at_exit();

 private:
  static constexpr size_t kMostParked = 8;

  Registry();
  Handle* add(Origin origin);

  std::mutex mutex_;
  Handle inventory_;
  std::vector<std::unique_ptr<Handle>> handles_;
  std::list<Parked> parked_;  // the newest first
};

Registry::Registry() : inventory_({std::string(environment_url()), std::string(kDatabases[0]), "root", ""}) {
  pthread_atfork([] { instance().before_fork(); }, [] { instance().after_fork(); },
                 [] { instance().after_fork(); });
  std::atexit([] { instance().at_exit(); });
}

// Known to the registry before it connects: a fork must not miss it.
Handle* Registry::add(Origin origin) {
  auto added = std::make_unique<Handle>(std::move(origin));
  Handle* handle = added.get();
  const std::lock_guard lock(mutex_);
  handles_.push_back(std::move(added));
  const auto same = [&](const Parked& parked) { return parked.origin == handle->origin(); };
  const auto found = std::find_if(parked_.begin(), parked_.end(), same);
  if (found != parked_.end()) {
    handle->attach(std::move(found->session));
    parked_.erase(found);
  }
  return handle;
}

Handle* Registry::open(Origin origin, std::string* error) {
  Handle* handle = add(std::move(origin));
  if (handle->is_ready()) return handle;
  *error = handle->message();
  close(handle);
  return nullptr;
}

bool Registry::close(Handle* handle) {
  std::list<Parked> dropped;  // closed when the lock is released again
  const std::lock_guard lock(mutex_);
  const auto same = [&](const std::unique_ptr<Handle>& open) { return open.get() == handle; };
  const auto found = std::find_if(handles_.begin(), handles_.end(), same);
  if (found == handles_.end()) return false;
  std::unique_ptr<Session> session = handle->detach();
  if (session != nullptr && !session->connection->in_transaction()) {
    parked_.push_front({handle->origin(), std::move(session)});
    if (parked_.size() > kMostParked) dropped.splice(dropped.end(), parked_, std::prev(parked_.end()));
  }
  handles_.erase(found);
  return true;
}

void Registry::before_fork() {
  mutex_.lock();
  parked_.clear();
  inventory_.mutex().lock();
  inventory_.disconnect();
  for (const auto& handle : handles_) {
    handle->mutex().lock();
    handle->disconnect();
  }
  process_mutex().lock();
}

void Registry::after_fork() {
  process_mutex().unlock();
  for (const auto& handle : handles_) handle->mutex().unlock();
  inventory_.mutex().unlock();
  mutex_.unlock();
}

// Closes in good order what nobody uses at this moment. Threads may still run, so nothing is destroyed.
void Registry::at_exit() {
  const std::unique_lock lock(mutex_, std::try_to_lock);
  if (!lock) return;
  parked_.clear();
  const auto close_idle = [](Handle& handle) {
    const std::unique_lock idle(handle.mutex(), std::try_to_lock);
    if (idle) handle.disconnect();
  };
  close_idle(inventory_);
  for (const auto& handle : handles_) close_idle(*handle);
}

}  // namespace

Handle* inventory_handle() {
  Handle* handle = Registry::instance().inventory();
  return handle->is_ready_in_environment() ? handle : nullptr;
}

Handle* open_handle(Origin origin, std::string* error) {
  return Registry::instance().open(std::move(origin), error);
}

bool close_handle(Handle* handle) {
  return Registry::instance().close(handle);
}

}  // namespace zel_db
