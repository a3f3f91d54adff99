// SPDX-License-Identifier: Apache-2.0
//
// Databases for the works, and the programs that they run.
#ifndef BENCH_FIXTURE_H
#define BENCH_FIXTURE_H

#include <string>
#include <vector>

namespace bench {

// Makes both databases, with the sample's properties and rows as INSERT statements.
void make_databases(const std::string& url, const std::vector<std::string>& rows);
void load_rows(const std::string& url, const std::vector<std::string>& rows);
// Makes the databases of the sample controller.
void make_sample(const std::string& url);
// Writes the input of the parser for so many functions.
void make_bios(const std::string& folder, unsigned functions);

// Runs a program of this build with the words; the file tells which calls of the table access it makes.
void trace_program(const std::string& trace, std::vector<std::string> words);
std::string built_program(const std::string& name);

}  // namespace bench

#endif
