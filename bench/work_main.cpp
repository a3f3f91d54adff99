// SPDX-License-Identifier: Apache-2.0
//
// bench_work fill ROWS: makes the databases that ZEL_DB_URL names, with so many rows of each kind.
// bench_work bios FUNCTIONS: writes what the parser reads, so many functions, to ZEL_PLATFORM_DIR.
// bench_work peak PROGRAM WORDS...: runs it and prints the KiB that it had at most. Where a process starts,
// its own count begins with the memory of the one that starts it: this one is small. bench_work WORK COUNT
// [warm]: runs one work on them, with warm for the second time, and prints how often it took memory, and how
// much it had at most. The work runs in measured_work, between two calls of getppid: by these callgrind and
// strace know it.
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "bench/fixture.h"
#include "bench/one_work.h"
#include "bench/program.h"
#include "bench/records.h"

// Names of the C library itself. NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" void* __libc_malloc(size_t size);
extern "C" void* __libc_calloc(size_t count, size_t size);
extern "C" void* __libc_realloc(void* memory, size_t size);
extern "C" void __libc_free(void* memory);
// NOLINTEND(bugprone-reserved-identifier)

namespace {

// Of all threads; there is only one.
struct Heap {
  long allocations, held, peak;

  void* took(void* memory) {
    ++allocations;
    held += static_cast<long>(malloc_usable_size(memory));
    peak = std::max(peak, held);
    return memory;
  }
  void gives(void* memory) { held -= static_cast<long>(malloc_usable_size(memory)); }
} heap;

}  // namespace

// The headers name the parameters as programs may not.
// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name)
extern "C" void* malloc(size_t size) {
  return heap.took(__libc_malloc(size));
}
extern "C" void* calloc(size_t count, size_t size) {
  return heap.took(__libc_calloc(count, size));
}
extern "C" void* realloc(void* memory, size_t size) {
  heap.gives(memory);
  return heap.took(__libc_realloc(memory, size));
}
extern "C" void free(void* memory) {
  heap.gives(memory);
  __libc_free(memory);
}
// NOLINTEND(readability-inconsistent-declaration-parameter-name)

extern "C" [[gnu::noinline]] void measured_work(const char* name, unsigned count) {
  bench::run_work(name, count);
}

int main(int argc, char** argv) {
  if (argc < 3) bench::give_up("a work and a count are needed");
  const std::string name = argv[1];
  const auto count = static_cast<unsigned>(std::strtoul(argv[2], nullptr, 10));
  const char* const url = std::getenv("ZEL_DB_URL");
  if (name == "fill") {
    if (url == nullptr) bench::give_up("ZEL_DB_URL is not set");
    bench::make_databases(url, {});
    for (const auto& rows :
         {bench::adapter_rows(count), bench::drive_rows(count), bench::component_rows(count)})
      bench::load_rows(url, rows);
    return 0;
  }
  if (name == "bios") {
    const char* const folder = std::getenv("ZEL_PLATFORM_DIR");
    bench::make_bios(folder != nullptr ? folder : ".", count);
    return 0;
  }
  if (name == "peak") {
    std::printf("%ld\n", bench::run_program({argv + 2, argv + argc}).ru_maxrss);
    return 0;
  }
  if (argc > 3) bench::run_work(name, count);
  heap = {};
  getppid();
  measured_work(argv[1], count);
  getppid();
  std::printf("%ld %ld\n", heap.allocations, heap.peak);
}
