// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_HOUSE_INCLUDE_GRAPH_H
#define VOXTREL_TESTS_HOUSE_INCLUDE_GRAPH_H

#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace house {

/// Components and what each includes or imports. A component is a header together with the source
/// of the same name, or a Python module; its name is the path from the root without the extension.
using Graph = std::map<std::string, std::set<std::string>>;

/// The graph of all C, C++ and Python files under `root`, build folders left out.
Graph includeGraph(const std::filesystem::path& root);

/// The quoted includes that lead to no file under `root`, as "FILE: TARGET": no arrow of the graph
/// stands for them.
std::vector<std::string> lostIncludes(const std::filesystem::path& root);

/// For each component that includes itself by way of others, the shortest such circle: the
/// component, those between, and the component again.
std::map<std::string, std::vector<std::string>> circlesIn(const Graph& graph);

}  // namespace house

#endif
