// SPDX-License-Identifier: Apache-2.0
#ifndef CLI_APPLICATION_H
#define CLI_APPLICATION_H

namespace zeldb::cli {

// Parses the command line, runs the command that it names, and turns every error into one line on standard
// error. Returns an Exit status.
int run(int argc, char** argv);

}  // namespace zeldb::cli

#endif
