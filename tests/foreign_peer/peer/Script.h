// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_FOREIGN_PEER_PEER_SCRIPT_H
#define VOXTREL_TESTS_FOREIGN_PEER_PEER_SCRIPT_H

#include <string>
#include <vector>

#include "tests/foreign_peer/peer/Peer.h"

namespace foreign {

using Words = std::vector<std::string>;

Words wordsOf(const std::string& line);

/// An image from words: i:5 an int32, f:0.5 a float, c:text bytes with a terminator, s:text 16-bit
/// units with their length, n:1 a node of this process, w:1 the same weakly, h:1 a handle, d:1 a
/// descriptor, 0 no object, z:8 so many bytes of zero. An underscore in a text stands for a space.
Image imageOf(const Words& words, size_t first);

/// The words of an image; `layout` has one letter each: i, f, c, s, or b for an object. What is not
/// there is a minus; what is left at the end is +N, bytes.
std::string textOf(const Image& image, const std::string& layout);
/// The same, as int32 and objects.
std::string textOf(const Image& image);

/// In words, for the test.
std::string textOf(const Answer& answer, const std::string& layout);

}  // namespace foreign

#endif
