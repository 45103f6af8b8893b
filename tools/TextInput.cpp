// SPDX-License-Identifier: Apache-2.0
#include "tools/TextInput.h"

#include <iconv.h>
#include <langinfo.h>

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string_view>
#include <system_error>

#include "tools/Errors.h"

namespace voxtrelctl {
namespace {

struct Conversion {
    std::string text;  ///< up to what is no text in that set
    bool isWhole = false;
};

Conversion convert(const std::string& bytes, const char* from) {
    Conversion done;
    iconv_t converter = iconv_open("UTF-8", from);
    // NOLINTNEXTLINE(performance-no-int-to-ptr): what iconv_open returns for none
    if (converter == reinterpret_cast<iconv_t>(-1)) {
        return done;
    }
    std::string buffer(4096, '\0');
    char* input = const_cast<char*>(bytes.data());
    std::size_t left = bytes.size();
    bool isFull = true;
    while (isFull) {
        char* output = buffer.data();
        std::size_t room = buffer.size();
        done.isWhole = iconv(converter, &input, &left, &output, &room) != std::size_t(-1);
        isFull = !done.isWhole && errno == E2BIG;
        done.text.append(buffer, 0, buffer.size() - room);
    }
    iconv_close(converter);
    return done;
}

bool beginsWith(const std::string& bytes, const char* mark) {
    return bytes.rfind(mark, 0) == 0;
}

/// @param before what is in order.
[[noreturn]] void refuse(const std::string& source, std::string_view before, const char* what,
                         const char* remedy) {
    const auto line = 1 + std::count(before.begin(), before.end(), '\n');
    throw Failure(TTS::STATUS_BAD_PARAMETER,
                  source + ", line " + std::to_string(line) + ": " + what, remedy);
}

std::string readAll(std::istream& in) {
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

}  // namespace

std::string localeSet() {
    (void)setlocale(LC_CTYPE, "");  // NOLINT(concurrency-mt-unsafe): one thread yet
    return nl_langinfo(CODESET);    // NOLINT(concurrency-mt-unsafe)
}

std::string toUtf8(std::string bytes, const std::string& source, const std::string& set) {
    if (beginsWith(bytes, "\xFF\xFE") || beginsWith(bytes, "\xFE\xFF")) {
        Conversion done = convert(bytes, "UTF-16");
        if (!done.isWhole) {
            refuse(source, done.text, "bytes that are no text in UTF-16", "save it in UTF-8");
        }
        return std::move(done.text);
    }
    if (beginsWith(bytes, "\xEF\xBB\xBF")) {
        bytes.erase(0, 3);
    }
    const std::size_t nul = bytes.find('\0');
    if (nul != std::string::npos) {
        refuse(source, std::string_view(bytes).substr(0, nul), "a byte 0, so that it is no text",
               "name a text file");
    }
    const Conversion checked = convert(bytes, "UTF-8");
    if (checked.isWhole) {
        return bytes;
    }
    Conversion done = convert(bytes, set.c_str());
    if (!done.isWhole) {
        refuse(source, checked.text, "bytes that are no text in UTF-8",
               "convert it first, as with: iconv -f LATIN1 -t UTF-8");
    }
    return std::move(done.text);
}

std::string readStandardInput() {
    return toUtf8(readAll(std::cin), "standard input");
}

std::string readTextFile(const std::string& path) {
    std::error_code ignored;
    const bool isFolder = std::filesystem::is_directory(path, ignored);
    errno = 0;
    std::ifstream in(path, std::ios::binary);
    const std::string bytes = isFolder || !in.is_open() ? "" : readAll(in);
    if (isFolder || !in.is_open() || in.bad()) {
        const int error = isFolder ? EISDIR : errno;
        throw Failure(TTS::STATUS_BAD_PARAMETER,
                      "cannot read " + path + " (" + std::generic_category().message(error) + ")",
                      "name a text file, or - for standard input");
    }
    return toUtf8(bytes, path);
}

}  // namespace voxtrelctl
