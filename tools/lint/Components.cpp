// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Walks through the graph twice. The first walk orders the nodes by when their visits end. The
// second follows the edges backwards, starting with the last node of that order.

#include "tools/lint/Components.h"

#include <utility>

namespace Kestrel::Lint {

namespace {

void Visit(const Graph& graph, std::size_t start, std::vector<bool>& isVisited,
           std::vector<std::size_t>& order) {
  std::vector<std::pair<std::size_t, std::size_t>> path = {{start, 0}};
  isVisited[start] = true;
  while (!path.empty()) {
    auto& [node, position] = path.back();
    if (position == graph[node].size()) {
      order.push_back(node);
      path.pop_back();
      continue;
    }
    const std::size_t next = graph[node][position++];
    if (!isVisited[next]) {
      isVisited[next] = true;
      path.emplace_back(next, 0);
    }
  }
}

Graph Reverse(const Graph& graph) {
  Graph reversed(graph.size());
  for (std::size_t node = 0; node < graph.size(); ++node) {
    for (const std::size_t next : graph[node]) {
      reversed[next].push_back(node);
    }
  }
  return reversed;
}

}  // namespace

std::vector<std::size_t> NumberComponents(const Graph& graph) {
  std::vector<bool> isVisited(graph.size());
  std::vector<std::size_t> order;
  for (std::size_t node = 0; node < graph.size(); ++node) {
    if (!isVisited[node]) {
      Visit(graph, node, isVisited, order);
    }
  }
  const Graph reversed = Reverse(graph);
  isVisited.assign(graph.size(), false);
  std::vector<std::size_t> numbers(graph.size());
  std::size_t count = 0;
  for (auto node = order.rbegin(); node != order.rend(); ++node) {
    std::vector<std::size_t> members;
    if (!isVisited[*node]) {
      Visit(reversed, *node, isVisited, members);
      ++count;
    }
    for (const std::size_t member : members) {
      numbers[member] = count;
    }
  }
  return numbers;
}

}  // namespace Kestrel::Lint
