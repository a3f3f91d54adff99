// SPDX-License-Identifier: Apache-2.0
#ifndef CLI_SIMILAR_H
#define CLI_SIMILAR_H

#include <string>
#include <vector>

namespace zeldb::cli {

// ", did you mean WORD?" with the known word that is most similar; empty if none is similar.
std::string did_you_mean(const std::string& given, const std::vector<std::string>& known);

}  // namespace zeldb::cli

#endif
