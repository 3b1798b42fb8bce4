#include "adapters/html/parse_tree.h"

#include <gumbo.h>

#include <algorithm>
#include <csetjmp>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace tavrolin::adapters::html {

namespace {

constexpr std::size_t kMaximumMemory = 8U << 20U;
constexpr std::size_t kBlockSize = 32U << 10U;
constexpr std::size_t kAlignment = alignof(std::max_align_t);

struct Block {
    Block* previous;
};
constexpr std::size_t kHeader = (sizeof(Block) + kAlignment - 1) / kAlignment * kAlignment;

}  // namespace

// The parser can't be told that there is no more memory, so an allocation that goes too far leaves
// it with a long jump. It is plain C: nothing is skipped that would have to be undone.
struct ParseTree::Arena {
    Arena() = default;
    Arena(const Arena&) = delete;
    Arena& operator=(const Arena&) = delete;
    ~Arena() {
        while (last != nullptr) {
            Block* previous = last->previous;
            std::free(last);
            last = previous;
        }
    }

    void* allocate(std::size_t size) {
        size = (size + kAlignment - 1) / kAlignment * kAlignment;
        if (size > left) addBlock(size);
        latest = place;
        place += size;
        left -= size;
        return latest;
    }

    // Only the latest piece is of use again: a text that is being collected.
    void free(void* piece) {
        if (piece == nullptr || piece != latest) return;
        left += static_cast<std::size_t>(place - latest);
        place = latest;
        latest = nullptr;
    }

    void addBlock(std::size_t atLeast) {
        const std::size_t size = std::max(kBlockSize, kHeader + atLeast);
        void* memory = used + size <= kMaximumMemory ? std::malloc(size) : nullptr;
        if (memory == nullptr) std::longjmp(exhausted, 1);
        used += size;
        last = new (memory) Block{last};
        place = static_cast<char*>(memory) + kHeader;
        left = size - kHeader;
    }

    Block* last = nullptr;
    char* place = nullptr;
    char* latest = nullptr;
    std::size_t left = 0;
    std::size_t used = 0;
    std::jmp_buf exhausted;
};

ParseTree::ParseTree(std::string_view text) : arena_(std::make_unique<Arena>()) {
    static constexpr auto kAllocate = [](void* arena, std::size_t size) {
        return static_cast<Arena*>(arena)->allocate(size);
    };
    static constexpr auto kFree = [](void* arena, void* piece) {
        static_cast<Arena*>(arena)->free(piece);
    };
    GumboOptions options = kGumboDefaultOptions;
    options.allocator = kAllocate;
    options.deallocator = kFree;
    options.userdata = arena_.get();
    options.max_errors = 0;
    // NOLINTNEXTLINE(cert-err52-cpp)
    if (setjmp(arena_->exhausted) != 0) return;
    root_ = gumbo_parse_with_options(&options, text.data(), text.size())->root;
}

ParseTree::~ParseTree() = default;

}  // namespace tavrolin::adapters::html
