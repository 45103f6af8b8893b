// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_TEXTINPUT_H
#define VOXTREL_TOOLS_TEXTINPUT_H

#include <string>

namespace voxtrelctl {

/// All of standard input, in UTF-8. Throws Failure(-3) as `toUtf8` does.
std::string readStandardInput();

/// All that is in a text file, in UTF-8. Throws Failure(-3) for what cannot be read, is no file, or
/// as `toUtf8` does.
std::string readTextFile(const std::string& path);

/// The character set of the user's locale, as in "ISO-8859-1".
std::string localeSet();

/// The text in UTF-8: of UTF-16 by its mark, UTF-8 with or without one, or else the character set
/// `set`. Throws Failure(-3) that names `source` and the line for what is neither, and for what is
/// no text at all.
std::string toUtf8(std::string bytes, const std::string& source,
                   const std::string& set = localeSet());

}  // namespace voxtrelctl

#endif
