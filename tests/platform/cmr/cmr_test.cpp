// SPDX-License-Identifier: Apache-2.0
#include "platform/cmr.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <string>
#include <tuple>
#include <utility>

#include "platform/predicates.h"
#include "tests/support/libc_shim.h"

namespace {

namespace fs = std::filesystem;

const std::string kBios = R"({"zeta":1,"collections":[{"name":"A-1","attributes":[
  {"AttributeName":"x","Minim":-1,"Numchoices":4294967295,"ShortDesc":"cut\u0000off",
   "current":"now","pending":"then"},
  {"pending":""}]},{"name":null,"attributes":[]}],"alpha":[1.5,true,false,null]})";

// The nth call of the function fails with the error.
struct Fault {
  std::string function;
  int error;
  int nth;
} fault;

bool fails(const char* function) {
  if (fault.function != function || --fault.nth != 0) return false;
  errno = fault.error;
  return true;
}

}  // namespace

#pragma GCC visibility push(default)
extern "C" {
#define FAILS_OR(name, symbol, ...) \
  fails(#name) ? -1 : reinterpret_cast<decltype(&(name))>(dlsym(RTLD_NEXT, symbol))(__VA_ARGS__)

int fstat(int file, struct stat* status) noexcept {
  return FAILS_OR(fstat, "fstat64", file, status);
}
ssize_t read(int file, void* to, size_t size) {
  return FAILS_OR(read, "read", file, to, size);
}
ssize_t write(int file, const void* from, size_t size) {
  return FAILS_OR(write, "write", file, from, size);
}
ssize_t pread(int file, void* to, size_t size, off_t from) {
  return FAILS_OR(pread, "pread64", file, to, size, from);
}
int flock(int file, int operation) noexcept {
  return FAILS_OR(flock, "flock", file, operation);
}
int fchmod(int file, mode_t mode) noexcept {
  return FAILS_OR(fchmod, "fchmod", file, mode);
}
int fsync(int file) {
  return FAILS_OR(fsync, "fsync", file);
}
int rename(const char* from, const char* to) noexcept {
  return FAILS_OR(rename, "rename", from, to);
}
}  // extern "C"
#pragma GCC visibility pop

namespace {

void write(const char* file, const std::string& text) {
  std::ofstream(file) << text;
}

std::string read(const char* file) {
  std::ifstream stream(file);
  return {std::istreambuf_iterator<char>(stream), {}};
}

int set(const char* id, const std::string& value) {
  cmr_bios_attribute_value request{0, CMR_OPERATION_SET, id, value.c_str(), {}};
  return cmr_set_bios_attribute_value(&request, 1);
}

// For each id and selector the value between "<" and ">", or "-" when the call failed.
std::string get(std::initializer_list<std::pair<const char*, int>> wanted) {
  std::string values;
  for (const auto& [id, selector] : wanted) {
    cmr_bios_attribute_value request{0, CMR_OPERATION_GET, id, "", {}};
    memset(request.ValueBuffer, '?', sizeof request.ValueBuffer);
    const bool good = cmr_get_bios_attribute_value(&request, 1, selector) == 0;
    values += good ? "<" + std::string(request.ValueBuffer, strnlen(request.ValueBuffer, 260)) + ">" : "-";
  }
  return values;
}

class Cmr : public testing::Test {
 protected:
  void SetUp() override {
    fs::current_path(mkdtemp(folder_));
    setenv("ZEL_PLATFORM_DIR", ".", 1);
    setenv("VREL_LOG", "log", 1);
    write("bios.json", kBios);
  }
  void TearDown() override { fs::remove_all(folder_); }

  char folder_[32] = "/tmp/cmr_test.XXXXXX";
  char** names_ = nullptr;
  cmr_bios_attribute* array_ = nullptr;
  uint32_t count_ = 0;
};

TEST_F(Cmr, RecordsAndSessions) {
  EXPECT_NE(cmr_get_bios_collections(&names_, &count_), 0);
  EXPECT_EQ(get({{"A-1.x", 0}}), "-");
  EXPECT_NE(set("A-1.x", "v"), 0);
  ASSERT_EQ(cmr_api_initialize(), 0);
  ASSERT_EQ(cmr_get_bios_collections(&names_, &count_), 0);
  EXPECT_TRUE(count_ == 2 && names_[1] == nullptr) << count_;
  for (auto* retrieve : {cmr_get_bios_attributes, cmr_get_bios_attributes_lite}) {
    EXPECT_NE(retrieve(nullptr, &array_, &count_), 0);
    EXPECT_NE(retrieve("A", &array_, &count_), 0);
    ASSERT_EQ(retrieve("A-1", &array_, &count_), 0);  // the first array is left to cmr_api_uninitialize
    ASSERT_EQ(count_, 2U);
  }
  EXPECT_EQ(cmr_api_initialize() + cmr_api_uninitialize(), 0);  // a second user leaves the session alone
  EXPECT_STREQ(array_[0].ShortDesc, "cut");
  EXPECT_EQ(array_[0].Minim, 0xFFFFFFFFU);
  EXPECT_EQ(array_[0].Numchoices, -1);
  EXPECT_EQ(cmr_free_bios_attributes("A-1", array_, 0), 0);
  EXPECT_NE(cmr_free_bios_attributes("A-1", array_, 0), 0);
  EXPECT_EQ(cmr_free_bios_attributes("A-1", nullptr, 0), 0);
  EXPECT_EQ(cmr_api_uninitialize(), 0);
  EXPECT_NE(cmr_api_uninitialize(), 0);
}

TEST_F(Cmr, BrokenFilesAreOneLine) {
  const std::pair<std::string, const char*> cases[] = {
      {"{\n\"a\": tru}", "byte 11: parse error at line 2, column 9: "},
      {"[]", "not a JSON object"},
      {"\"text\"", "not a JSON object"},
      {R"({"collections":"x"})", "collections: not an array"},
      {R"({"collections":[],"collections":null})", "collections: not an array"},
      {R"({"collections":[null]})", "collections[0]: not an object"},
      {R"({"collections":[{"name":5}]})", "collections[0]: name: not a text"},
      {R"({"collections":[{"name":[]}]})", "collections[0]: name: not a text"},
      {R"({"collections":[{"attributes":{}}]})", "collections[0]: attributes: not an array"},
      {R"({"collections":[{"attributes":[{"Bus":"1"}]}]})",
       "collections[0]: attributes[0]: Bus: not a 32-bit"},
      {R"({"collections":[{"attributes":[{"Bus":1.0}]}]})",
       "collections[0]: attributes[0]: Bus: not a 32-bit"},
      {R"({"collections":[{"attributes":[{"Type":{}}]}]})", "Type: not a 32-bit number"},
      {R"({"collections":[{}]})", "collections[0]: attributes: not an array"},
      {R"({"collections":[{"attributes":[{},7]}]})", "attributes[1]: not an object"},
      {R"({"collections":[{"attributes":[{"Bus":4294967296}]}]})", "Bus: not a 32-bit number"},
      {R"({"collections":[{"attributes":[{"Step":-2147483649}]}]})", "Step: not a 32-bit number"},
      {R"({"collections":[{"attributes":[{"current":5}]}]})", "current: not a text"},
      {R"({"a":)" + std::string(100000, '['), "nested deeper than 64 levels"},
      {"missing", "No such file or directory"}};
  for (const auto& [text, reason] : cases) {
    write("bios.json", text);
    if (text == "missing") fs::remove("bios.json");
    fs::remove("log");
    EXPECT_NE(cmr_api_initialize(), 0) << reason;
    const std::string log = read("log");
    EXPECT_TRUE(log.find("error: ./bios.json: ") == 0 && log.find(reason) < log.size()) << reason << "\n"
                                                                                        << log;
    EXPECT_EQ(log.find('\n'), log.size() - 1) << log;
  }
}

// Most texts are read where the file has them when they are asked for; those with escapes are not, nor those
// on the border of two blocks. Of equal keys the last one counts.
TEST_F(Cmr, TextsOfAllKinds) {
  const std::string longest(70000, 'l'), longer(40000, 'm');
  const std::pair<std::string, std::string> texts[] = {{"", ""},
                                                       {"plain \xC3\xA9", "plain \xC3\xA9"},
                                                       {R"(a \"quote\")", "a \"quote\""},
                                                       {R"(\")", "\""},
                                                       {R"(\\\\)", R"(\\)"},
                                                       {longest + R"(\n)", longest + "\n"},
                                                       {longer + R"(\n)", longer + "\n"},
                                                       {R"(cut\u0000off)", "cut"}};
  const auto text_of = [&](size_t i) { return texts[i < 16 ? i % 8 : i % 5]; };
  std::string attributes;
  for (size_t i = 0; i < 2000; ++i) {
    attributes += R"({"Bus":7,"AttributeName":")" + std::to_string(i) +
                  R"(","ShortDesc":null,"ShortDesc":")" + text_of(i).first +
                  R"(","Bus":null,"other":{"Bus":[1,"x"]}},)";
  }
  attributes.pop_back();
  write("bios.json",
        R"({"collections":[{"name":"no","attributes":[]}],"more":{"collections":[]},"collections":[
    {"name":"A","name":null,"attributes":[{"current":"x"}],"other":"x"},
    {"name":"B","attributes":[{"ShortDesc":"other"}],"attributes":[)" +
            attributes + R"(]},
    {"name":"B.1","attributes":[]}]})");
  ASSERT_EQ(cmr_api_initialize(), 0);
  EXPECT_NE(cmr_get_bios_attributes("no", &array_, &count_), 0);
  EXPECT_TRUE(cmr_get_bios_attributes("B.1", &array_, &count_) == 0 && count_ == 0);
  const auto read_all = [&] { return cmr_get_bios_attributes("B", &array_, &count_) == 0 && count_ == 2000; };
  fault = {"pread", EIO, 1};
  EXPECT_FALSE(read_all());
  fault = {"pread", EINTR, 1};
  ASSERT_TRUE(read_all());
  for (size_t i = 0; i < 2000; ++i) {
    ASSERT_EQ(array_[i].ShortDesc, text_of(i).second) << i;
    ASSERT_TRUE(array_[i].Bus == 0 && array_[i].AttributeName == std::to_string(i)) << i;
  }
  EXPECT_EQ(get({{"B.77", 0}, {"B.2000", 0}, {"B.999x", 0}, {"B.1.x", 0}, {"A.", 1}, {"B", 1}, {"BB", 1}}),
            "-------");
  fs::last_write_time("bios.json", fs::file_time_type::clock::now() + std::chrono::seconds(1));
  EXPECT_FALSE(read_all());
  fs::resize_file("bios.json", 100000);
  EXPECT_FALSE(read_all());
  EXPECT_TRUE(read("log").find("has been changed") < read("log").find("has become shorter"));
}

TEST_F(Cmr, Values) {
  ASSERT_EQ(cmr_api_initialize(), 0);
  EXPECT_EQ(
      get({{"A-1.x", 0}, {"A-1.x", 1}, {"A-1.x", 2}, {"A-1.", 0}, {"A-1.", 1}, {"A-1.y", 0}, {nullptr, 0}}),
      "<then><now>-<>---");
  constexpr uint32_t kSet = CMR_OPERATION_SET;
  const cmr_bios_attribute_value bad_requests[] = {{0, kSet, "A-1.y", "v", {}},
                                                   {0, kSet, nullptr, "v", {}},
                                                   {0, kSet, "A-1.x", nullptr, {}},
                                                   {0, CMR_OPERATION_GET, "A-1.", "v", {}},
                                                   {0, kSet, "A-1.", "no UTF-8: \xff", {}}};
  for (const cmr_bios_attribute_value& bad : bad_requests) {
    cmr_bios_attribute_value requests[] = {{0, kSet, "A-1.x", "new", {}}, bad};
    EXPECT_NE(cmr_set_bios_attribute_value(requests, 2), 0);
    EXPECT_EQ(get({{"A-1.x", 0}}), "<then>");
  }
  EXPECT_EQ(cmr_set_bios_attribute_value(nullptr, 0), 0);
  EXPECT_EQ(read("bios.json"), kBios);
  for (const size_t size : {259U, 260U, 300U}) {
    ASSERT_EQ(set("A-1.x", std::string(size, 'v')), 0);
    EXPECT_EQ(get({{"A-1.x", 0}}), "<" + std::string(std::min<size_t>(size, 260), 'v') + ">");
  }
}

TEST_F(Cmr, SetKeepsTheRestOfTheFile) {
  fs::rename("bios.json", "real.json");
  fs::create_symlink("real.json", "bios.json");
  fs::permissions("bios.json", fs::perms{0640});
  write("real.json.new", "left behind by a killed process");
  ASSERT_EQ(cmr_api_initialize(), 0);
  ASSERT_EQ(set("A-1.x", "later"), 0);
  std::string expected = kBios;
  expected.replace(expected.find("then"), 4, "later");
  std::string stored = read("bios.json");
  for (std::string* text : {&expected, &stored}) std::erase_if(*text, isspace);
  EXPECT_EQ(stored, expected);
  EXPECT_TRUE(fs::is_symlink("bios.json") && !fs::exists("real.json.new"));
  EXPECT_EQ(fs::status("bios.json").permissions(), fs::perms{0640});
  for (const char* other : {"{", "[]", "{}", R"({"collections":[]})", R"({"collections":{}})",
                            R"({"collections":[7]})", R"({"collections":[{"name":7}]})"}) {
    write("bios.json", other);
    EXPECT_NE(set("A-1.x", "lost"), 0);
    EXPECT_EQ(get({{"A-1.x", 0}, {"A-1.x", 1}}) + read("bios.json"), std::string("<later><now>") + other);
  }
}

TEST_F(Cmr, FilesThatCannotBeReadOrReplacedStayAsTheyAre) {
  const struct {
    Fault fault;
    const char* log;  // null: the call goes on
  } cases[] = {
      {{"fstat", EIO, 1}, "error: BIOS: cannot read: Input/output error\n"},
      {{"read", EINTR, 1}, nullptr},
      {{"read", EIO, 2}, "error: BIOS: cannot read: Input/output error\n"},
      {{"flock", EINTR, 1}, nullptr},
      {{"flock", ENOLCK, 1}, "error: BIOS: cannot lock the folder: No locks available\n"},
      {{"fchmod", EPERM, 1}, "error: BIOS: cannot set the mode of the new file: Operation not permitted\n"},
      {{"write", EINTR, 1}, nullptr},
      {{"write", ENOSPC, 1}, "error: BIOS: cannot write the new file: No space left on device\n"},
      {{"fsync", EIO, 1}, "error: BIOS: cannot sync the new file: Input/output error\n"},
      {{"fsync", EIO, 2}, "warning: BIOS: cannot sync the folder: Input/output error\n"},
      {{"rename", EXDEV, 1}, "error: BIOS: cannot replace: Invalid cross-device link\n"},
  };
  ASSERT_EQ(cmr_api_initialize(), 0);
  for (const auto& [wanted, log] : cases) {
    write("bios.json", kBios);
    fs::remove("log");
    fault = wanted;
    const bool good = set("A-1.x", "new") == 0;
    EXPECT_LE(std::exchange(fault, {}).nth, 0) << wanted.function;
    std::string said = read("log");
    for (const std::string& path : {fs::canonical("bios.json").string(), std::string("./bios.json")})
      if (const size_t at = said.find(path); at != std::string::npos) said.replace(at, path.size(), "BIOS");
    EXPECT_EQ(said, log != nullptr ? log : "") << wanted.function;
    EXPECT_EQ(good, said.find("error: ") != 0) << said;
    EXPECT_EQ(read("bios.json") == kBios, !good) << said;
    EXPECT_FALSE(fs::exists("bios.json.new")) << said;
  }
}

TEST_F(Cmr, ReadsFilesOfABoundedLengthOnly) {
  const std::tuple<const char*, void (*)(), const char*> cases[] = {
      {".", [] { fs::resize_file("bios.json", (64U << 20U) + 1); }, "longer than 64 MiB"},
      {".", [] { fs::remove("bios.json"), fs::create_directory("bios.json"); }, "not a regular file"},
      {".", [] { fs::remove("bios.json"), fs::create_symlink("bios.json", "bios.json"); }, "cannot open: "},
      {".", [] { fs::create_directory("bios.json.new"); }, "cannot create the new file: "},
      {"gone", [] {}, "cannot open the folder: "},
      {"", [] {}, "error: /var/lib/zeldb/bios.json: "},
  };
  for (const auto& [folder, change, reason] : cases) {
    fs::remove_all("bios.json");
    write("bios.json", kBios);
    setenv("ZEL_PLATFORM_DIR", ".", 1);
    ASSERT_EQ(cmr_api_initialize(), 0);
    change();
    setenv("ZEL_PLATFORM_DIR", folder, 1);
    EXPECT_NE(set("A-1.x", "new"), 0) << reason;
    EXPECT_NE(read("log").find(reason), std::string::npos) << read("log");
    EXPECT_EQ(cmr_api_uninitialize(), 0);
  }
}

TEST_F(Cmr, ProcessesDoNotLoseEachOthersValues) {
  const pid_t child = fork();
  bool good = cmr_api_initialize() == 0;
  for (int i = 1; i <= 30; ++i) good = set(child == 0 ? "A-1." : "A-1.x", std::to_string(i)) == 0 && good;
  if (child == 0) _exit(good ? 0 : 1);
  int status = -1;
  EXPECT_TRUE(waitpid(child, &status, 0) == child && status == 0 && good);
  ASSERT_EQ(cmr_api_uninitialize() + cmr_api_initialize(), 0);
  EXPECT_EQ(get({{"A-1.x", 0}, {"A-1.", 0}}), "<30><30>");
}

// Each call fails at its nth allocation, where it has so many; what follows goes undisturbed.
TEST_F(Cmr, ShortMemoryFailsOneCallAndNoneAfterIt) {
  int (*const calls[])() = {cmr_api_initialize, is_palomir_platform, [] {
                              cmr_bios_attribute_value request{0, CMR_OPERATION_SET, "A-1.x", "new", {}};
                              return cmr_set_bios_attribute_value(&request, 1);
                            }};
  int failures = 0;
  for (int nth = 1, more = 1; more > 0 && nth < 2000; ++nth) {
    more = 0;
    write("bios.json", kBios);
    write("platform.json", R"({"palomir":true,"of another size":")" + std::string(nth, 'x') + "\"}");
    for (auto* const call : calls) {
      if (!zeldb_test::LibcShim::fail_allocation(0, nth, "libstdc++")) GTEST_SKIP() << "a sanitizer's memory";
      const int status = call();
      const bool failed = zeldb_test::LibcShim::allocation_failed();
      more += failed ? 1 : 0;
      const bool good = call == is_palomir_platform ? status == 1 : status == 0;
      EXPECT_TRUE(good || failed) << nth << ": " << status;
      EXPECT_EQ(is_palomir_platform(), 1) << nth;
      if (call == cmr_api_initialize && !good) {
        ASSERT_EQ(cmr_api_initialize(), 0);
      }
      EXPECT_EQ(get({{"A-1.x", 0}}), call == calls[2] && good ? "<new>" : "<then>") << nth;
    }
    EXPECT_EQ(cmr_api_uninitialize(), 0);
    failures += more;
  }
  EXPECT_GT(failures, 0);
}

TEST_F(Cmr, CallLogAndInjectedFailures) {
  const std::string function = R"("function":"cmr_api_initialize")";
  for (const std::string& lacking : {function + R"(,"call":1)", function, std::string()}) {
    write("platform.json", R"({"fail":[{)" + lacking + "}]}");
    fs::remove("log");
    EXPECT_EQ(is_palomir_platform(), 0);
    EXPECT_EQ(read("log"), "error: ./platform.json: fail[0]: needs function, call and rc\n");
  }
  write("platform.json", R"({"fail":[{)" + function + R"(,"call":1,"rc":-77}]})");
  setenv("CMR_CALL_LOG", "calls", 1);
  EXPECT_EQ(cmr_api_initialize() + cmr_api_initialize(), -77);
  get({{"A-1.x", 1}, {"no", 0}});
  set("A-1.x", "a\tb\\");
  cmr_free_bios_attributes(nullptr, array_, 0);
  EXPECT_EQ(read("calls"),
            "cmr_api_initialize\t-\t-\t-\t-\t-\t-\t-\t-77\n"
            "cmr_api_initialize\t-\t-\t-\t-\t-\t-\t-\t0\n"
            "cmr_get_bios_attribute_value\t-\t1\t1\t0\t1\tA-1.x\tnow\t0\n"
            "cmr_get_bios_attribute_value\t-\t1\t0\t0\t1\tno\t-\t3\n"
            "cmr_set_bios_attribute_value\t-\t1\t-\t0\t2\tA-1.x\ta\\tb\\\\\t0\n"
            "cmr_free_bios_attributes\t\\N\t-\t0\t-\t-\t-\t-\t0\n");
}

}  // namespace
