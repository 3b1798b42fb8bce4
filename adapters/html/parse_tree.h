#pragma once

#include <memory>
#include <string_view>

struct GumboInternalNode;

namespace tavrolin::adapters::html {

/// A parsed document. All of it lies in memory of its own that goes in one piece, without a walk
/// through the tree.
class ParseTree {
public:
    /// The text must outlive the tree.
    explicit ParseTree(std::string_view text);
    ~ParseTree();
    ParseTree(const ParseTree&) = delete;
    ParseTree& operator=(const ParseTree&) = delete;

    /// The element "html"; null when the tree would have taken more than 8 MB.
    const GumboInternalNode* root() const { return root_; }

private:
    struct Arena;

    std::unique_ptr<Arena> arena_;
    const GumboInternalNode* root_ = nullptr;
};

}  // namespace tavrolin::adapters::html
