// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/cli/sample.h"

namespace zeldb_test {
namespace {

namespace fs = std::filesystem;

class Baseline : public DatabaseTest {
 protected:
  void take() const {
    const Outcome outcome = run_zeldb({"baseline", "--force", file_});
    ASSERT_EQ(outcome.exit_status, 0) << outcome.err;
    EXPECT_EQ(outcome.out + outcome.err, "");
  }
  Outcome diff(std::vector<std::string> options = {}) const {
    options.insert(options.begin(), {"diff", file_});
    return run_zeldb(options);
  }
  void expect_same() const {
    const Outcome same = diff();
    EXPECT_EQ(same.exit_status, 0);
    EXPECT_EQ(same.out + same.err, "");
    EXPECT_EQ(diff({"--json"}).out, "{\"format_version\":1,\"rows\":[]}\n");
  }
  const fs::path file_ = fs::path(database.folder()) / "parts.json";
};
ZELDB_ON_EVERY_ENGINE(Baseline);

const std::vector<std::string> kChanges = {
    // The same part with less, or with other firmware.
    "UPDATE Processor SET CoreEnabled=47 WHERE Socket='CPU 2'",
    "UPDATE Memory SET MemSize=0 WHERE SlotNo=3",
    "UPDATE AimDisks SET Capacity='480GB' WHERE BayNo=1 AND LocationId=2",
    "UPDATE PldmDeviceFirmware SET VersionString='27.1' WHERE SlotNo=2 AND Location=1",
    "UPDATE EmbeddedDeviceFirmware SET Version=13 WHERE SoftwareID='EMB-PSEQ'",
    "INSERT INTO PldmDeviceFirmware (Location, SlotNo, SoftwareID, VersionString) VALUES (1, 1, 'x', '7 b')",
    // Another part: by its serial number, its address, its PCI ids.
    "UPDATE Memory SET SerialNo='4A6B1177', PartNo='M321R2' WHERE SlotNo=1",
    "UPDATE NVMeDrives SET SupplierSN='S55KNC0R100800' WHERE Location=1 AND SlotNo=6",
    "UPDATE PCIPhysicalPort SET PermanentAddress='02:00:5E:10:00:99' WHERE PCIFuncKey=262144",
    "UPDATE PCIs SET SubDeviceId=1 WHERE FunKey=26738688",
    // With an adapter goes what sits on it; by itself, what can.
    "DELETE FROM PCIs WHERE SlotNo=4 AND Location=1",
    "DELETE FROM PCIGPUChip WHERE PCIFuncKey=21692416",
    "DELETE FROM Memory WHERE SlotNo=19",
    "UPDATE AimDisks SET Presence=0 WHERE Location='M.2 Bay1'",
    // What is not known any more is no change.
    "UPDATE Memory SET SerialNo='N/A' WHERE SlotNo=17",
    "UPDATE VPDs SET SerialNo=NULL, PartNo='' WHERE SlotNo=1",
    "UPDATE Processor SET CoreCount=NULL WHERE Socket='CPU 1'",
    // Two modules in what the inventory takes for one place.
    "INSERT INTO Memory (SlotNo, DevLocator, SerialNo, PartNo, MemSize) VALUES (2, 'DIMM 2', 'AA2', '', 5)",
};

const std::string kTold =
    "shrank\tprocessor\tCPU 2, node 1\tC1A0F3B200D42\t\tenabled cores 48 -> 47\n"
    "replaced\tmemory\tDIMM 1, slot 1\t4A6B1177\t4A6B1101\tpart number M321R4GA0BB0-CQK -> M321R2\n"
    "added\tmemory\tDIMM 2, slot 2 #2\tAA2\t\t\n"
    "shrank\tmemory\tDIMM 3, slot 3\t4A6B1102\t\tMiB 32768 -> 0\n"
    "removed\tmemory\tDIMM 19, slot 19\t3C5D0018\t\t\n"
    "replaced\tadapter\t0:1\t\t\t\n"
    "changed\tadapter\t1:1\t\t\tfirmware 52.26.0-5179 -> 52.26.0-5179 and 7 b\n"
    "changed\tadapter\t1:2\tMT2200001\t\tfirmware 26.36.1010 -> 27.1\n"
    "removed\tadapter\t1:4\t1652022000002\t\t\n"
    "replaced\tadapter\t1:5\t\t\tmodel 8086:1572:8086:0007 -> 8086:1572:8086:0001\n"
    "removed\tgpu\t1:3, chip 0\t1652022000001\t\t\n"
    "shrank\tdrive\tBay 1\t2149338F0B22\t\tGB 960 -> 480\n"
    "removed\tdrive\tM.2 Bay1\t2149338F0A11\t\t\n"
    "replaced\tdrive\tSlot 6\tS55KNC0R100800\tS55KNC0R100789\t\n"
    "changed\tembedded\tPower sequencer, index 0\t\t\tfirmware 12 -> 13\n";

TEST_P(Baseline, TellsWhatBecameOfEachPart) {
  load_sample();
  take();
  EXPECT_EQ(fs::status(file_).permissions(), fs::perms(0600));
  expect_same();
  database.run_all(kChanges);
  const std::vector<std::string> raw = {"--raw", "--no-headings", "--output",
                                        "Change,Kind,Place,SerialNo,PreviousSerialNo,Detail"};
  const Outcome told = diff(raw);
  EXPECT_EQ(told.exit_status, 1);
  EXPECT_EQ(told.err, "");
  EXPECT_EQ(told.out, kTold);

  expect_failure(run_zeldb({"baseline", file_}), 1, "--force");
  const fs::path exported = fs::path(database.folder()) / "export.db";
  ASSERT_EQ(run_zeldb({"export", exported}).exit_status, 0);
  setenv("ZEL_DB_URL", url_of_nothing(database).c_str(), 1);
  std::vector<std::string> from = raw;
  from.insert(from.end(), {"--from", exported});
  EXPECT_EQ(diff(from).out, kTold);
  ASSERT_EQ(run_zeldb({"baseline", "--force", "--from", exported, file_}).exit_status, 0);
  setenv("ZEL_DB_URL", database.url().c_str(), 1);
  expect_same();
}

// A baseline with these parts, and what is told of them now.
TEST_P(Baseline, TellsWhatMovedFromWhatDidNot) {
  const auto module = [](const std::string& place, const std::string& part, const std::string& serial) {
    return R"({"kind":"memory","place":")" + place + R"(","part_number":")" + part +
           R"(","serial_number":")" + serial + "\"}";
  };
  const struct {
    std::string before;
    std::string rows;
    std::string told;
  } cases[] = {
      // Of two in one place the first goes, or another one comes: the number is nobody's place.
      {module("A", "P", "S1") + "," + module("A #2", "P", "S2"), "(0,'A','S2','P',8)", "removed\tA\tS1\n"},
      {module("A", "P", "S2"), "(0,'A','S1','P',8),(0,'A','S2','P',8)", "added\tA\tS1\n"},
      {module("A #1", "P", "S1"), "(0,'A #2','S1','P',8)", "moved\tA #2\tS1\n"},
      // Two makers, one serial number.
      {module("A", "P", "S1"), "(0,'B','S1','Q',8)", "removed\tA\tS1\nadded\tB\tS1\n"},
      {module("A", "P", "S1"), "(0,'B','S1','P',8)", "moved\tB\tS1\n"},
      {module("A", "", "S1"), "(0,'B','S1','Q',8)", "moved\tB\tS1\n"},
  };
  for (const auto& [before, rows, told] : cases) {
    database.run_all({"DELETE FROM Memory",
                      "INSERT INTO Memory (SlotNo, DevLocator, SerialNo, PartNo, MemSize) VALUES " + rows});
    std::ofstream(file_) << R"({"format_version":1,"parts":[)" << before << "]}";
    EXPECT_EQ(diff({"--raw", "--no-headings", "--output", "Change,Place,SerialNo"}).out, told) << before;
  }
}

TEST_P(Baseline, OfNothingIsOne) {
  take();
  expect_same();
}

TEST_P(Baseline, ACheckFollowsItsPolicy) {
  load_sample();
  const auto check = [this](const std::string& policy) {
    std::ofstream(file_) << "{\"format_version\":1," << policy << "}";
    return run_zeldb({"check", file_});
  };
  const std::pair<const char*, const char*> refused[] = {
      {R"("celsius":{"warning":18446744073709551615})", "celsius: has other than numbers"},
      {R"("ports_down":"critical","ports_down":"ok")", "ports_down: is there twice"},
      {R"("a\u001b":1)", "a\\x1b: no such key"},
      {R"("expected_parts":[{"place":"1:1","part":"05-50077-01","version":"1"}])", "version is for"}};
  for (const auto& [policy, why] : refused) expect_failure(check(policy), 3, why);
  // It runs 52.26.0-5179.
  const std::pair<const char*, bool> least[] = {{"8.9", true},     {"052.0026.0-5179", true},
                                                {"52.26.0", true}, {"52.26.0-5180", false},
                                                {"52.100", false}, {"100", false}};
  for (const auto& [version, is_met] : least) {
    const Outcome seen =
        check(R"("minimum_firmware":[{"part":"05-50077-01","version":")" + std::string(version) + "\"}]");
    EXPECT_EQ(seen.out.find("is older than") == std::string::npos, is_met) << version;
    EXPECT_EQ(seen.exit_status, is_met ? 1 : 2) << version;
  }
  // A card that was pulled keeps its row; its health is nobody's concern.
  EXPECT_NE(check(R"("celsius":{})").out.find("1:8"), std::string::npos);
  database.run("DELETE FROM PCIs WHERE Location=1 AND SlotNo=8");
  EXPECT_EQ(check(R"("celsius":{})").out.find("1:8"), std::string::npos);
}

TEST_P(Baseline, TroubleIsNoDifference) {
  take();
  const std::string good = content_of(file_);
  const struct {
    std::string content;
    std::string why;
  } damaged[] = {
      {"", "is no baseline of zeldb"},
      {"{\"format_version\":\"1\",\"parts\":[]}", "is no baseline of zeldb"},
      {good.substr(0, good.size() - 2), "is no baseline of zeldb"},
      {"{\"format_version\":2}", "written by a newer zeldb (format 2, known are up to 1)"},
      {"{\"format_version\":1}", "damaged"},
      {"{\"format_version\":1,\"parts\":[{\"kind\":\"memory\"}]}", "damaged"},
      {"{\"format_version\":1,\"parts\":[{\"place\":\"A\"}]}", "damaged"},
      {"{\"format_version\":1,\"parts\":[{\"kind\":\"memory\",\"place\":3}]}", "damaged"},
      {"{\"format_version\":1,\"parts\":[{\"kind\":\"memory\",\"place\":\"A\",\"sizes\":{\"MiB\":-1}}]}",
       "damaged"},
      {"{\"format_version\":1,\"parts\":[{\"kind\":\"a\",\"place\":\"b\"},{\"kind\":\"a\",\"place\":\"b\"}]}",
       "damaged: two parts in one place"},
  };
  for (const auto& [content, why] : damaged) {
    std::ofstream(file_) << content;
    expect_failure(diff(), 2, why);
  }
  fs::remove(file_);
  expect_failure(diff(), 2, "No such file");
  std::ofstream(file_) << good;
  expect_failure(diff({"--from", "/nonexistent"}), 2, "/nonexistent");
  expect_failure(diff({"--output", "Nothing"}), 2, "Nothing");
  database.run("DROP TABLE AimDisks");
  expect_failure(diff(), 2, "drives");
  database.run("DROP TABLE propertiesDCTbl", "propertiesdb");
  setenv("ZEL_DB_URL", url_of_nothing(database).c_str(), 1);
  expect_failure(diff(), 2, "cannot open ");
  fs::remove(file_);
  expect_failure(run_zeldb({"baseline", file_}), 1, "cannot open ");
  EXPECT_FALSE(fs::exists(file_));
}

}  // namespace
}  // namespace zeldb_test
