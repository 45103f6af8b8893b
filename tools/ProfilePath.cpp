// SPDX-License-Identifier: Apache-2.0
#include "tools/ProfilePath.h"

namespace voxtrelctl {

std::string profilePath(const std::string& name) {
    const std::string ending = ".ini";
    const bool ends = name.size() >= ending.size() &&
                      name.compare(name.size() - ending.size(), ending.size(), ending) == 0;
    return ends || name.find('/') != std::string::npos ? name : "/Customer/" + name + ending;
}

}  // namespace voxtrelctl
