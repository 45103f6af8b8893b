// SPDX-License-Identifier: Apache-2.0
#include "tests/house/include_graph.h"

#include <algorithm>
#include <deque>
#include <sstream>

#include "tests/house/files.h"
#include "tests/house/include_rule.h"

namespace house {
namespace {

namespace fs = std::filesystem;
using Files = std::set<std::string>;

bool isPython(const fs::path& file) {
    return file.extension() == ".py";
}

bool isRead(const fs::path& file) {
    static const std::set<std::string> extensions = {".h", ".hpp", ".c", ".cpp", ".py"};
    return extensions.count(file.extension().string()) == 1;
}

bool isSkipped(const fs::path& folder) {
    const std::string name = folder.filename().string();
    return name[0] == '.' || name == "build" || fs::exists(folder / "CMakeCache.txt");
}

Files filesUnder(const fs::path& root) {
    Files files;
    for (fs::recursive_directory_iterator entry(root), end; entry != end; ++entry) {
        if (entry->is_directory() && isSkipped(entry->path())) {
            entry.disable_recursion_pending();
        } else if (entry->is_regular_file() && isRead(entry->path())) {
            files.insert(fs::relative(entry->path(), root).string());
        }
    }
    return files;
}

std::string componentOf(const fs::path& file) {
    return fs::path(file).replace_extension().string();
}

/// Of a directive in `file`: where the compiler may find its target in the tree.
std::vector<fs::path> placesOf(const fs::path& file, const std::string& target) {
    return {target, fs::path("platform/host") / target, fs::path("platform") / target,
            (file.parent_path() / target).lexically_normal()};
}

/// The one of these places where there is a file; empty for none.
fs::path placeOf(const fs::path& file, const std::string& target, const Files& files) {
    for (const fs::path& place : placesOf(file, target)) {
        if (files.count(place.string()) == 1) {
            return place;
        }
    }
    return {};
}

/// The modules of an import statement, as words of which some may be no modules.
std::vector<std::string> importsIn(const std::string& line) {
    std::istringstream words(line);
    std::string keyword;
    std::string module;
    if (!(words >> keyword >> module) || (keyword != "from" && keyword != "import")) {
        return {};
    }
    std::vector<std::string> modules = {
        module.substr(std::min(module.find_first_not_of('.'), module.size()))};
    if (module == "." || keyword == "import") {
        for (std::string word; words >> word;) {
            modules.push_back(word);
        }
    }
    for (std::string& name : modules) {
        name = name.substr(0, name.find(','));
        std::replace(name.begin(), name.end(), '.', '/');
    }
    return modules;
}

std::vector<fs::path> targetsOfPython(const fs::path& file, const std::string& text) {
    std::vector<fs::path> targets;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        for (const std::string& module : importsIn(line)) {
            targets.push_back(file.parent_path() / (module + ".py"));
        }
    }
    return targets;
}

std::vector<fs::path> targetsOf(const fs::path& file, const std::string& text, const Files& files) {
    if (isPython(file)) {
        return targetsOfPython(file, text);
    }
    std::vector<fs::path> targets;
    for (const std::string& target : includesOf(text)) {
        const fs::path place = placeOf(file, target, files);
        if (!place.empty()) {
            targets.push_back(place);
        }
    }
    return targets;
}

/// Takes away what includes nothing of the rest, again and again: circles remain, and what includes
/// them.
Graph withoutLeaves(Graph graph) {
    const auto isLeaf = [&](const Graph::value_type& node) {
        return std::none_of(node.second.begin(), node.second.end(),
                            [&](const std::string& target) { return graph.count(target) == 1; });
    };
    for (size_t before = 0; before != graph.size();) {
        before = graph.size();
        for (auto node = graph.begin(); node != graph.end();) {
            node = isLeaf(*node) ? graph.erase(node) : std::next(node);
        }
    }
    return graph;
}

/// From `start` back to it; empty where no way leads back.
std::vector<std::string> shortestCircle(const Graph& graph, const std::string& start) {
    std::map<std::string, std::string> cameFrom;
    std::deque<std::string> next = {start};
    for (; !next.empty() && cameFrom.count(start) == 0; next.pop_front()) {
        const auto node = graph.find(next.front());
        for (const std::string& target : node == graph.end() ? Files() : node->second) {
            if (cameFrom.emplace(target, next.front()).second) {
                next.push_back(target);
            }
        }
    }
    if (cameFrom.count(start) == 0) {
        return {};
    }
    std::vector<std::string> circle = {start};
    do {
        circle.push_back(cameFrom[circle.back()]);
    } while (circle.back() != start);
    std::reverse(circle.begin(), circle.end());
    return circle;
}

}  // namespace

Graph includeGraph(const fs::path& root) {
    const Files files = filesUnder(root);
    Graph graph;
    for (const std::string& file : files) {
        std::set<std::string>& targets = graph[componentOf(file)];
        for (const fs::path& target : targetsOf(file, read(root / file), files)) {
            if (files.count(target.string()) == 1 && componentOf(target) != componentOf(file)) {
                targets.insert(componentOf(target));
            }
        }
    }
    return graph;
}

std::vector<std::string> lostIncludes(const fs::path& root) {
    const Files files = filesUnder(root);
    std::vector<std::string> lost;
    for (const std::string& file : files) {
        for (const std::string& target : quotedIncludesOf(read(root / file))) {
            if (placeOf(file, target, files).empty()) {
                lost.push_back(file + ": " + target);
            }
        }
    }
    return lost;
}

std::map<std::string, std::vector<std::string>> circlesIn(const Graph& graph) {
    const Graph candidates = withoutLeaves(graph);
    std::map<std::string, std::vector<std::string>> circles;
    for (const auto& [component, targets] : candidates) {
        const std::vector<std::string> circle = shortestCircle(candidates, component);
        if (!circle.empty()) {
            circles.emplace(component, circle);
        }
    }
    return circles;
}

}  // namespace house
