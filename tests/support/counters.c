// SPDX-License-Identifier: Apache-2.0
//
// Part of the command in a build with gcov's counters: what ends without destructors leaves its counters,
// too.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

void __gcov_dump(void);
_Noreturn void __real__exit(int status);
int __real_raise(int signal);
int __real_kill(pid_t child, int signal);

_Noreturn void __wrap__exit(int status) {
  __gcov_dump();
  __real__exit(status);
}

int __wrap_raise(int signal) {
  __gcov_dump();
  return __real_raise(signal);
}

// A child whose pipe was closed has a second to end by itself.
int __wrap_kill(pid_t child, int signal) {
  siginfo_t ended = {.si_pid = 0};
  for (int waits = 0; signal == SIGKILL && waits < 100 && ended.si_pid == 0; ++waits) {
    if (waitid(P_PID, (id_t)child, &ended, WEXITED | WNOHANG | WNOWAIT) != 0) break;
    usleep(10000);
  }
  return __real_kill(child, signal);
}
