// SPDX-License-Identifier: Apache-2.0
#include "cli/application.h"

int main(int argc, char** argv) {
  return zeldb::cli::run(argc, argv);
}
