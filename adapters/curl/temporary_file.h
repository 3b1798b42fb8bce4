#pragma once

#include <string>
#include <string_view>

#include "tavrolin/foundation/expected.h"

namespace tavrolin::adapters::curl {

/// A new file of this user's own, removed when the object ends unless somebody moved it away. Its
/// name is random, never repeats and needs no escaping in a URL. One thread at a time.
class TemporaryFile {
public:
    /// The directory must exist.
    explicit TemporaryFile(std::string directory) : directory_(std::move(directory)) {}
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    /// Made by the first call.
    foundation::Failure append(std::string_view bytes);
    /// Nothing more is written. Makes the file when nothing was.
    foundation::Failure close();
    /// Empty until the file was made.
    const std::string& path() const { return path_; }

private:
    foundation::Failure create();

    const std::string directory_;
    std::string path_;
    int descriptor_ = -1;
};

}  // namespace tavrolin::adapters::curl
