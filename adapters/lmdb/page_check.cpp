#include "adapters/lmdb/page_check.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <optional>
#include <vector>

namespace tavrolin::adapters::lmdb {

namespace {

// The file's format, version 1, in the machine's own byte order. A page begins with a header of 16
// bytes: its number (8), padding (2), flags (2), the ends of the free space in the middle (2 and
// 2); then come the offsets of its nodes (2 each).
constexpr std::size_t kHeader = 16;
constexpr unsigned kBranch = 1;
constexpr unsigned kLeaf = 2;
constexpr unsigned kOverflow = 4;
// A node: size or page number in three parts (2 each, the third are flags in a leaf), size of the
// key (2), key, data.
constexpr std::size_t kNodeHeader = 8;
constexpr unsigned kBigData = 1;  // the data is the number of the overflow page where it lies

constexpr std::uint64_t kNoPage = ~std::uint64_t{0};
constexpr std::uint32_t kMagic = 0xBEEFC0DE;
constexpr int kDeepest = 32;

struct Meta {
    struct Tree {
        std::uint32_t pageSize;
        std::uint16_t flags;
        std::uint16_t depth;
        std::uint64_t pages[3];
        std::uint64_t entries;
        std::uint64_t root;
    };
    std::uint32_t magic;
    std::uint32_t version;
    std::uint64_t address;
    std::uint64_t mapSize;
    Tree trees[2];  // the free pages, and the entries
    std::uint64_t lastPage;
    std::uint64_t transaction;
};
static_assert(sizeof(Meta) == 136);

template <class T>
T load(const std::uint8_t* from) {
    T result;
    std::memcpy(&result, from, sizeof result);
    return result;
}

bool readAt(int descriptor, std::uint64_t offset, void* to, std::size_t size) {
    return pread(descriptor, to, size, static_cast<off_t>(offset)) == static_cast<ssize_t>(size);
}

class Walk {
public:
    Walk(int descriptor, std::size_t pageSize, std::uint64_t pages)
        : descriptor_(descriptor), pageSize_(pageSize), pages_(pages), left_(pages) {}

    bool tree(std::uint64_t page, int depth = 0) {
        std::vector<std::uint8_t> bytes(pageSize_);
        if (depth == kDeepest || !take(page, bytes.data(), pageSize_)) return false;
        const unsigned flags = load<std::uint16_t>(&bytes[10]);
        const std::size_t lower = load<std::uint16_t>(&bytes[12]);
        if (lower < kHeader || lower > pageSize_ || (lower - kHeader) % 2 != 0) return false;
        if ((flags & (kBranch | kLeaf)) != kBranch && (flags & (kBranch | kLeaf)) != kLeaf) {
            return false;
        }
        for (std::size_t slot = kHeader; slot < lower; slot += 2) {
            const std::size_t offset = load<std::uint16_t>(&bytes[slot]);
            if (offset < lower || offset + kNodeHeader > pageSize_) return false;
            if (!node(bytes, offset, (flags & kBranch) != 0, depth)) return false;
        }
        return true;
    }

private:
    // Reads the beginning of a page that is in the file, says that it is this one, and was not
    // reached before (which is only counted).
    bool take(std::uint64_t page, std::uint8_t* to, std::size_t size) {
        return page < pages_ && left_-- > 0 && readAt(descriptor_, page * pageSize_, to, size) &&
               load<std::uint64_t>(to) == page;
    }

    bool node(const std::vector<std::uint8_t>& bytes, std::size_t offset, bool isBranch,
              int depth) {
        const std::uint8_t* const at = &bytes[offset];
        const std::uint64_t low =
            load<std::uint16_t>(at) | (std::uint64_t{load<std::uint16_t>(at + 2)} << 16U);
        const std::uint64_t flags = load<std::uint16_t>(at + 4);
        const std::size_t data = offset + kNodeHeader + load<std::uint16_t>(at + 6);
        if (isBranch) return data <= pageSize_ && tree(low | (flags << 32U), depth + 1);
        if ((flags & kBigData) == 0) return data + low <= pageSize_;
        return data + sizeof(std::uint64_t) <= pageSize_ &&
               overflow(load<std::uint64_t>(&bytes[data]), low);
    }

    bool overflow(std::uint64_t page, std::uint64_t size) {
        std::uint8_t header[kHeader];
        if (!take(page, header, sizeof header)) return false;
        const std::uint64_t count = load<std::uint32_t>(header + 12);
        return (load<std::uint16_t>(header + 10) & kOverflow) != 0 && count <= pages_ - page &&
               kHeader + size <= count * pageSize_;
    }

    int descriptor_;
    std::size_t pageSize_;
    std::uint64_t pages_;
    std::uint64_t left_;
};

bool looksRight(const Meta& meta) {
    const std::size_t size = meta.trees[0].pageSize;
    return meta.magic == kMagic && size >= 512 && size <= 65536 && (size & (size - 1)) == 0;
}

}  // namespace

PageState checkPages(int descriptor, std::uint64_t transaction) {
    Meta metas[2];
    struct stat file {};
    if (!readAt(descriptor, kHeader, &metas[0], sizeof(Meta)) || !looksRight(metas[0])) {
        return PageState::damaged;
    }
    const std::size_t pageSize = metas[0].trees[0].pageSize;
    if (!readAt(descriptor, pageSize + kHeader, &metas[1], sizeof(Meta)) || !looksRight(metas[1]) ||
        fstat(descriptor, &file) != 0) {
        return PageState::damaged;
    }
    const auto* const meta =
        std::find_if(std::begin(metas), std::end(metas),
                     [&](const Meta& each) { return each.transaction == transaction; });
    if (meta == std::end(metas)) return PageState::moved;
    Walk walk(descriptor, pageSize, static_cast<std::uint64_t>(file.st_size) / pageSize);
    for (const Meta::Tree& tree : meta->trees) {
        if (tree.root != kNoPage && !walk.tree(tree.root)) return PageState::damaged;
    }
    return PageState::sound;
}

}  // namespace tavrolin::adapters::lmdb
