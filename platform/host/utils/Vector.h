// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_UTILS_VECTOR_H
#define VOXTREL_UTILS_VECTOR_H

#include <vector>

namespace android {

/// Only what every age of the public class shares with the standard one may be used: `size`,
/// `operator[]`.
template <typename T>
using Vector = std::vector<T>;

}  // namespace android

#endif
