#include "adapters/lmdb/lmdb_preferences.h"

#include <lmdb.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

#include "adapters/lmdb/environment.h"
#include "tavrolin/foundation/exception.h"
#include "tavrolin/foundation/keyed_archive.h"

namespace tavrolin::adapters::lmdb {

using foundation::Error;
using foundation::Expected;
using foundation::Failure;
using foundation::Value;

namespace {

constexpr std::string_view kErrorDomain = "Preferences";

std::uint64_t hashOf(std::string_view text, std::uint64_t seed) {
    std::uint64_t hash = 0xCBF29CE484222325U ^ seed;
    for (const char c : text)
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
    return hash ^ (hash >> 29U);
}

void appendHex(std::string& out, std::uint64_t number) {
    for (int shift = 60; shift >= 0; shift -= 4)
        out += "0123456789abcdef"[(number >> static_cast<unsigned>(shift)) & 15U];
}

// A key as LMDB takes it, of 1 to 511 bytes. "=" and the key; or, for a long one, "~", its
// beginning and a hash of the whole, and then the whole key is stored with the value.
class StoredKey {
public:
    explicit StoredKey(std::string_view key) : isWhole_(key.size() < bytes_.size()) {
        bytes_[0] = isWhole_ ? '=' : '~';
        size_ = 1 + (isWhole_ ? key.size() : kBeginning);
        if (!key.empty()) std::memcpy(&bytes_[1], key.data(), size_ - 1);
        if (isWhole_) return;
        std::string hashes;
        appendHex(hashes, hashOf(key, 0));
        appendHex(hashes, hashOf(key, 0x9E3779B97F4A7C15U));
        std::memcpy(&bytes_[size_], hashes.data(), hashes.size());
        size_ += hashes.size();
    }

    bool isWhole() const { return isWhole_; }
    MDB_val asValue() { return {size_, bytes_.data()}; }

private:
    static constexpr std::size_t kBeginning = 400;
    bool isWhole_;
    std::size_t size_ = 0;
    std::array<char, 511> bytes_;  // not cleared: most keys are short
};

// A text at the root of an archive, the form that most preferences have; nil for every other one.
Value textOf(Value::Bytes archive) {
    const auto text = [&](std::size_t head, std::size_t size) {
        if (archive.size() != head + size) return Value();
        return Value(std::string_view(reinterpret_cast<const char*>(archive.data()) + head, size));
    };
    if (!archive.empty() && archive[0] >= 0x60 && archive[0] < 0x78) {
        return text(1, archive[0] - 0x60U);
    }
    if (archive.size() >= 2 && archive[0] == 0x78) return text(2, archive[1]);
    return {};
}

Value valueOf(const MDB_val& stored) {
    const Value::Bytes archive(static_cast<const std::uint8_t*>(stored.mv_data), stored.mv_size);
    if (Value text = textOf(archive)) return text;
    try {
        return foundation::KeyedUnarchiver::unarchiveValue(archive);
    } catch (const foundation::Exception&) {
        return {};
    }
}

// The key and the value of an entry; the key is nil when there is nothing readable.
std::pair<Value, Value> entryOf(const MDB_val& key, const MDB_val& stored) {
    const std::string_view bytes(static_cast<const char*>(key.mv_data), key.mv_size);
    Value value = valueOf(stored);
    if (bytes.starts_with('=') && value) return {Value(bytes.substr(1)), value};
    if (bytes.starts_with('~') && value.isArray() && value.count() == 2 && value.at(0).isString()) {
        return {value.at(0), value.at(1)};
    }
    return {};
}

class Suite final : public platform::PreferencesSuite {
public:
    explicit Suite(std::shared_ptr<Environment> environment)
        : environment_(std::move(environment)) {}

    Value get(std::string_view key) const override {
        StoredKey stored(key);
        MDB_val name = stored.asValue();
        MDB_val data{};
        const Environment::Reading reading(*environment_);
        if (reading.code != 0 ||
            mdb_get(reading.transaction, environment_->database(), &name, &data) != 0) {
            return {};
        }
        if (stored.isWhole()) return valueOf(data);
        const auto [whole, value] = entryOf(name, data);
        return whole.isString() && whole.string() == key ? value : Value();
    }

    Failure set(std::string_view key, const Value& value) override {
        if (value.isNil()) return remove(key);
        StoredKey stored(key);
        std::vector<std::uint8_t> archive;
        try {
            archive = foundation::KeyedArchiver::archivedData(
                stored.isWhole() ? value : Value::array({key, value}));
        } catch (const foundation::Exception& exception) {
            return Error{std::string(kErrorDomain), 1, exception.reason()};
        }
        return write([&](MDB_txn* transaction) {
            MDB_val name = stored.asValue();
            MDB_val data{archive.size(), archive.data()};
            return mdb_put(transaction, environment_->database(), &name, &data, 0);
        });
    }

    Failure remove(std::string_view key) override {
        StoredKey stored(key);
        return write([&](MDB_txn* transaction) {
            MDB_val name = stored.asValue();
            const int code = mdb_del(transaction, environment_->database(), &name, nullptr);
            return code == MDB_NOTFOUND ? 0 : code;
        });
    }

    Value dictionaryRepresentation() const override {
        std::vector<std::pair<Value, Value>> entries;
        readAll(entries);
        // In order already, unless there are long keys.
        std::sort(entries.begin(), entries.end(),
                  [](const auto& a, const auto& b) { return a.first.string() < b.first.string(); });
        Value result = Value::dictionaryWithCapacity(entries.size());
        for (const auto& [key, value] : entries)
            result.set(key, value);
        return result;
    }

private:
    template <class Body>
    Failure write(Body&& body) {
        if (const int code = environment_->write(body)) {
            return errorWithCode(code, environment_->path());
        }
        return std::nullopt;
    }

    void readAll(std::vector<std::pair<Value, Value>>& entries) const {
        const Environment::Reading reading(*environment_);
        MDB_cursor* cursor = nullptr;
        if (reading.code != 0 ||
            mdb_cursor_open(reading.transaction, environment_->database(), &cursor) != 0) {
            return;
        }
        MDB_val name{};
        MDB_val data{};
        while (mdb_cursor_get(cursor, &name, &data, MDB_NEXT) == 0) {
            auto entry = entryOf(name, data);
            if (entry.first) entries.push_back(std::move(entry));
        }
        mdb_cursor_close(cursor);
    }

    std::shared_ptr<Environment> environment_;
};

// Letters, digits and -._ stay; everything else becomes %XX, and so does a dot at the start. A name
// that gets too long for a file's is cut and told apart by a hash.
std::string fileNameOf(std::string_view suite) {
    static constexpr std::size_t kLongest = 180;
    std::string name;
    for (const char c : suite) {
        const auto byte = static_cast<unsigned char>(c);
        const bool isPlain = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') ||
                             (c >= 'a' && c <= 'z') || c == '-' || c == '_' ||
                             (c == '.' && !name.empty());
        if (isPlain) {
            name += c;
        } else {
            name += '%';
            name += "0123456789ABCDEF"[byte >> 4U];
            name += "0123456789ABCDEF"[byte & 15U];
        }
    }
    if (name.size() > kLongest) {
        name.resize(kLongest);
        name += '~';
        appendHex(name, hashOf(suite, 0));
    }
    return name;
}

// Makes the folder, and those above it that are missing, for the owner only.
Failure makeFolder(const std::filesystem::path& folder) {
    std::error_code ignored;
    if (std::filesystem::is_directory(folder, ignored)) return std::nullopt;
    if (folder.has_parent_path() && folder.parent_path() != folder) {
        if (Failure failure = makeFolder(folder.parent_path())) return failure;
    }
    if (mkdir(folder.c_str(), 0700) == 0) return std::nullopt;
    const std::error_code error(errno, std::generic_category());
    // Another process may have been faster.
    if (std::filesystem::is_directory(folder, ignored)) return std::nullopt;
    return Error{std::string(kErrorDomain), error.value(),
                 folder.string() + ": " + error.message()};
}

Expected<std::shared_ptr<platform::PreferencesSuite>> openSuite(const std::string& folder,
                                                                const std::string& fileName,
                                                                std::size_t mapSize) {
    if (folder.empty() || folder.find('\0') != std::string::npos) {
        return Error{std::string(kErrorDomain), 2, "the suite's folder has no name"};
    }
    if (Failure failure = makeFolder(folder)) return *failure;
    // One file, one environment: under whatever name the folder is reached.
    std::error_code error;
    const std::filesystem::path resolved = std::filesystem::canonical(folder, error);
    if (error) return Error{std::string(kErrorDomain), error.value(), error.message()};
    auto environment = Environment::open((resolved / fileName).string(), mapSize);
    if (!environment) return environment.error();
    return std::shared_ptr<platform::PreferencesSuite>(std::make_shared<Suite>(*environment));
}

}  // namespace

LMDBPreferences::LMDBPreferences(FolderOfSuite folderOfSuite, std::string standardFolder,
                                 std::size_t mapSize)
    : folderOfSuite_(std::move(folderOfSuite)),
      standardFolder_(std::move(standardFolder)),
      mapSize_(mapSize) {}

Expected<std::shared_ptr<platform::PreferencesSuite>> LMDBPreferences::standard() {
    return openSuite(standardFolder_, "standard.lmdb", mapSize_);
}

Expected<std::shared_ptr<platform::PreferencesSuite>> LMDBPreferences::suite(
    std::string_view name) {
    const std::optional<std::string> folder = name.empty() ? std::nullopt : folderOfSuite_(name);
    if (!folder) {
        return Error{std::string(kErrorDomain), 3,
                     "there is no suite \"" + std::string(name) + "\""};
    }
    return openSuite(*folder, "suite-" + fileNameOf(name) + ".lmdb", mapSize_);
}

}  // namespace tavrolin::adapters::lmdb
