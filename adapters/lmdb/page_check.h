#pragma once

#include <cstdint>

namespace tavrolin::adapters::lmdb {

enum class PageState {
    sound,
    damaged,  // or cut short, or unreadable
    moved     // other processes committed so often that the state is no longer in the file
};

/// Whether every page in use lies in the file and can be walked. LMDB itself trusts its pages: it
/// ends the process at a damaged one, and looking behind the end of the file does too.
///
/// `transaction` is the state to look at; a read transaction must keep it from being overwritten.
PageState checkPages(int descriptor, std::uint64_t transaction);

}  // namespace tavrolin::adapters::lmdb
