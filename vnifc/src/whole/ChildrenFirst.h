#pragma once
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace vnifc::detail {

/// Calls `finish(i)` once for each of `count` nodes that `isRoot(i)` is true of or that such a one leads to, for the
/// children of a node before the node itself. Where nodes
/// refer to each other in a circle, one of them is finished before a child of it. `forEachChild(i, visit)` calls
/// `visit(child)`. Takes no stack of the thread, however deep the nodes lie.
template <class IsRoot, class ForEachChild, class Finish>
void childrenFirst(std::uint32_t count, IsRoot isRoot, ForEachChild forEachChild, Finish finish) {
    enum State : std::uint8_t { kNew, kOpen, kDone };
    std::vector<State> states(count, kNew);
    std::vector<std::uint32_t> stack;
    for (std::uint32_t root = 0; root < count; ++root) {
        if (states[root] == kNew && isRoot(root))
            stack.push_back(root);
        while (!stack.empty()) {
            const std::uint32_t node = stack.back();
            if (states[node] == kNew) {
                states[node] = kOpen;
                const std::size_t before = stack.size();
                forEachChild(node, [&](std::uint32_t child) {
                    if (states[child] == kNew)
                        stack.push_back(child);
                });
                if (stack.size() != before) {
                    // So that the first child is the first to be finished.
                    std::reverse(stack.begin() + static_cast<std::ptrdiff_t>(before), stack.end());
                    continue;
                }
            }
            stack.pop_back();
            if (states[node] == kOpen) {
                finish(node);
                states[node] = kDone;
            }
        }
    }
}

} // namespace vnifc::detail
