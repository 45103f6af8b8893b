// SPDX-License-Identifier: Apache-2.0
#include "service/PolicyFile.h"

#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <sstream>

namespace voxtreld {
namespace {

constexpr size_t kLargestFile = 1U << 20U;

/// The highest number means "none" to the kernel.
constexpr unsigned long long kHighest = UINT32_MAX - 1ULL;

using Words = std::vector<std::string>;

Words wordsOf(const std::string& line) {
    std::istringstream in(line);
    Words words;
    for (std::string word; in >> word && word.front() != '#';) {
        words.push_back(word);
    }
    return words;
}

/// For a message: control characters are shown as question marks.
std::string quoted(const std::string& word) {
    std::string text = word.substr(0, 64);
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c < 0x20 || c > 0x7E; }, '?');
    return "'" + text + "'";
}

bool isNumber(const std::string& text) {
    return text.find_first_not_of("0123456789") == std::string::npos;
}

std::optional<uint32_t> numberOf(const std::string& text) {
    const unsigned long long value = std::strtoull(text.c_str(), nullptr, 10);
    return value <= kHighest ? std::optional(static_cast<uint32_t>(value)) : std::nullopt;
}

std::optional<uint32_t> findUser(const std::string& text) {
    if (isNumber(text)) {
        return numberOf(text);
    }
    const passwd* found = getpwnam(text.c_str());  // NOLINT(concurrency-mt-unsafe): one thread
    return found != nullptr ? std::optional<uint32_t>(found->pw_uid) : std::nullopt;
}

std::optional<uint32_t> findGroup(const std::string& text) {
    if (isNumber(text)) {
        return numberOf(text);
    }
    const group* found = getgrnam(text.c_str());  // NOLINT(concurrency-mt-unsafe): one thread
    return found != nullptr ? std::optional<uint32_t>(found->gr_gid) : std::nullopt;
}

struct SubjectWord {
    const char* word;
    PolicyRule::Subject subject;
    std::optional<uint32_t> (*find)(const std::string& text);  ///< null: names nobody
};

constexpr SubjectWord kSubjects[] = {{"user", PolicyRule::Subject::User, &findUser},
                                     {"group", PolicyRule::Subject::Group, &findGroup},
                                     {"any", PolicyRule::Subject::Any, nullptr}};

// The readers consume their words and return an error message, or nothing.

std::string readSubject(const Words& words, size_t& at, PolicyRule& rule) {
    const std::string& word = words[at++];
    const auto* found =
        std::find_if(std::begin(kSubjects), std::end(kSubjects),
                     [&word](const SubjectWord& known) { return word == known.word; });
    if (found == std::end(kSubjects)) {
        return "a rule begins with user, group or any, not with " + quoted(word);
    }
    rule.subject = found->subject;
    if (found->find == nullptr) {
        return "";
    }
    if (at == words.size()) {
        return word + " is followed by a name or a number";
    }
    const std::optional<uint32_t> id = found->find(words[at]);
    if (!id.has_value()) {
        return "there is no " + word + " " + quoted(words[at]);
    }
    rule.id = *id;
    ++at;
    return "";
}

std::string readPermissions(const Words& words, size_t at, PolicyRule& rule) {
    if (at == words.size()) {
        return "the rule grants nothing: it ends without a permission";
    }
    for (; at < words.size(); ++at) {
        const auto* found =
            std::find_if(std::begin(kPermissionWords), std::end(kPermissionWords),
                         [&](const PermissionWord& known) { return words[at] == known.word; });
        if (found == std::end(kPermissionWords)) {
            return "there is no permission " + quoted(words[at]) +
                   ": connect, speak, stop-others, settings, lock and break-lock are";
        }
        rule.granted = static_cast<Permissions>(rule.granted | bitOf(found->permission));
    }
    return "";
}

std::string readRule(const Words& words, PolicyRule& rule) {
    size_t at = 0;
    const std::string wrong = readSubject(words, at, rule);
    return wrong.empty() ? readPermissions(words, at, rule) : wrong;
}

/// All of a file. Zero or an errno value; EINVAL for what is no file or too large for a policy.
int readAll(const std::string& path, std::string& content) {
    const int file = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (file < 0) {
        return errno;
    }
    struct stat status {};
    int error = fstat(file, &status) == 0 && S_ISREG(status.st_mode) ? 0 : EINVAL;
    char chunk[4096];
    ssize_t got = error == 0 ? read(file, chunk, sizeof chunk) : 0;
    for (; got > 0 && content.size() <= kLargestFile; got = read(file, chunk, sizeof chunk)) {
        content.append(chunk, static_cast<size_t>(got));
    }
    error = got < 0 ? errno : content.size() > kLargestFile ? EINVAL : error;
    close(file);
    return error;
}

}  // namespace

std::optional<std::vector<PolicyRule>> readPolicy(std::istream& in, const std::string& name,
                                                  std::string& error) {
    std::vector<PolicyRule> rules;
    size_t number = 0;
    for (std::string line; std::getline(in, line);) {
        ++number;
        const Words words = wordsOf(line);
        if (words.empty()) {
            continue;
        }
        PolicyRule rule = {PolicyRule::Subject::Any, 0, kNoPermissions};
        const std::string wrong = readRule(words, rule);
        if (!wrong.empty()) {
            error = name;
            error.append(":").append(std::to_string(number)).append(": ").append(wrong);
            return std::nullopt;
        }
        rules.push_back(rule);
    }
    return rules;
}

std::optional<std::vector<PolicyRule>> loadPolicy(const std::optional<std::string>& named,
                                                  std::string& error) {
    const std::string path = named.value_or(kDefaultPolicyFile);
    std::string content;
    const int failed = readAll(path, content);
    if (failed == ENOENT && !named.has_value()) {
        return std::vector<PolicyRule>();
    }
    if (failed != 0) {
        error = path + ": cannot read the policy: " +
                (failed == EINVAL ? "it is no file, or larger than 1 MiB"
                                  : std::strerror(failed)) +  // NOLINT(concurrency-mt-unsafe)
                ": name another file with --policy";
        return std::nullopt;
    }
    std::istringstream in(content);
    std::optional<std::vector<PolicyRule>> rules = readPolicy(in, path, error);
    error += rules.has_value() ? "" : ": see voxtreld-policy(5)";
    return rules;
}

}  // namespace voxtreld
