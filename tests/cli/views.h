// SPDX-License-Identifier: Apache-2.0
//
// The views that docs/zeldb.schema.json describes, and the transcripts that show them.
#ifndef TESTS_CLI_VIEWS_H
#define TESTS_CLI_VIEWS_H

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace zeldb_test {

inline const std::string kPrompt = "$ zeldb ";

const nlohmann::ordered_json& schema();

// A command's words, with the folder of the samples in them.
std::vector<std::string> words_of(const std::string& command);

// The name of the view in the schema: of "ports 01310000 --logical" it is "ports-logical".
std::string view_of(const std::string& command);

// A command, and what is to stand below it.
struct Block {
  std::string place;
  std::string command;
  std::string printed;
};
struct Transcript {
  std::string databases;  // its first line
  std::vector<Block> blocks;
};
// tests/cli/golden/NAME.txt.
Transcript transcript_of(const std::string& name);

}  // namespace zeldb_test

#endif
