// Runs a fuzz target as an ordinary test: on its seeds, and on mutations of them that are the same
// each time. `fuzz_<name> SEEDS [NUMBER]` runs all of them, or only the one with that number; a
// target that dies says which one it was.

#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
// There when a sanitizer is. NOLINTNEXTLINE(bugprone-reserved-identifier)
extern "C" __attribute__((weak)) void __sanitizer_set_death_callback(void (*callback)());

namespace {

using Input = std::vector<std::uint8_t>;

constexpr std::size_t kInputs = 20000;
constexpr auto kLongest = std::chrono::seconds(20);  // a slow target runs on fewer of them
constexpr std::size_t kLargestInput = 1U << 20U;

volatile std::sig_atomic_t current = 0;

void sayWhichInput() {
    char text[64];
    const int length =
        std::snprintf(text, sizeof text, "fuzz input %d\n", static_cast<int>(current));
    if (write(STDERR_FILENO, text, static_cast<std::size_t>(length)) < 0) std::_Exit(2);
}

std::vector<Input> seedsIn(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> paths;
    if (std::filesystem::is_directory(folder)) {
        for (const auto& entry : std::filesystem::directory_iterator(folder))
            paths.push_back(entry.path());
    }
    std::sort(paths.begin(), paths.end());
    std::vector<Input> seeds(1);
    for (const auto& path : paths) {
        std::ifstream file(path, std::ios::binary);
        seeds.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
    return seeds;
}

class Mutator {
public:
    Mutator(const std::vector<Input>& seeds, std::uint64_t number)
        : seeds_(seeds), random_(number) {}

    Input make() {
        input_ = seeds_[below(seeds_.size())];
        for (std::size_t steps = 1 + below(4); steps > 0; --steps)
            change();
        if (input_.size() > kLargestInput) input_.resize(kLargestInput);
        return std::move(input_);
    }

private:
    std::size_t below(std::size_t limit) { return limit == 0 ? 0 : random_() % limit; }
    std::size_t place() { return below(input_.size() + 1); }
    auto iterator(std::size_t at) { return input_.begin() + static_cast<std::ptrdiff_t>(at); }

    std::uint8_t byte() {
        static constexpr std::array<std::uint8_t, 16> kTelling = {
            0, 1, 0x7F, 0x80, 0xFF, 0x1B, 0x9F, 0xBF, '%', '"', '\'', '(', '[', '{', '<', '\\'};
        return below(2) == 0 ? kTelling[below(kTelling.size())]
                             : static_cast<std::uint8_t>(below(256));
    }

    void change() {
        const std::size_t at = place();
        const std::size_t length = 1 + below(std::min<std::size_t>(input_.size() - at + 1, 64));
        const std::size_t end = std::min(at + length, input_.size());
        switch (below(7)) {
            case 0:
                if (at < input_.size()) input_[at] = byte();
                break;
            case 1:
                if (at < input_.size())
                    input_[at] = static_cast<std::uint8_t>(input_[at] ^ (1U << below(8)));
                break;
            case 2:
                input_.insert(iterator(at), byte());
                break;
            case 3:
                input_.erase(iterator(at), iterator(end));
                break;
            case 4: {  // the same bytes again, a few or many times
                const Input part(iterator(at), iterator(end));
                for (std::size_t times = below(4) == 0 ? 1 + below(200) : 1; times > 0; --times)
                    input_.insert(iterator(at), part.begin(), part.end());
                break;
            }
            case 5:
                input_.resize(at);
                break;
            default: {  // the end of another seed
                const Input& other = seeds_[below(seeds_.size())];
                input_.resize(at);
                input_.insert(input_.end(),
                              other.begin() + static_cast<std::ptrdiff_t>(below(other.size() + 1)),
                              other.end());
            }
        }
    }

    const std::vector<Input>& seeds_;
    std::mt19937_64 random_;
    Input input_;
};

void run(const std::vector<Input>& seeds, std::size_t number) {
    current = static_cast<std::sig_atomic_t>(number);
    const Input input = number < seeds.size() ? seeds[number] : Mutator(seeds, number).make();
    LLVMFuzzerTestOneInput(input.data(), input.size());
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fputs("usage: fuzz_<name> SEEDS [NUMBER]\n", stderr);
        return 2;
    }
    std::signal(SIGABRT, [](int) { sayWhichInput(); });
    if (__sanitizer_set_death_callback != nullptr) __sanitizer_set_death_callback(sayWhichInput);
    const std::vector<Input> seeds = seedsIn(argv[1]);
    if (argc > 2) {
        run(seeds, std::strtoul(argv[2], nullptr, 10));
        return 0;
    }
    const auto begin = std::chrono::steady_clock::now();
    std::size_t number = 0;
    while (number < kInputs && std::chrono::steady_clock::now() - begin < kLongest)
        run(seeds, number++);
    std::printf("%zu inputs from %zu seeds\n", number, seeds.size());
    return 0;
}
