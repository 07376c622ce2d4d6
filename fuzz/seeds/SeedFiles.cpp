// Writes the seed corpus: `fuzzSeeds <corpus folder>` makes <corpus folder>/<target>/<name>.fwpk
// for every registered seed, and a copy of each in the raw walker's corpus.

#include "fuzz/seeds/SeedFiles.h"

#include <cstdio>
#include <filesystem>
#include <fstream>

namespace formworkFuzz {

namespace {
std::vector<Seed>& seedList() {
    static std::vector<Seed> seeds;
    return seeds;
}
} // namespace

bool registerSeeds(std::initializer_list<Seed> seeds) {
    seedList().insert(seedList().end(), seeds.begin(), seeds.end());
    return true;
}

const std::vector<Seed>& registeredSeeds() { return seedList(); }

} // namespace formworkFuzz

namespace {

bool save(const std::filesystem::path& path, const std::vector<std::uint8_t>& bytes) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    return static_cast<bool>(file);
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: fuzzSeeds <corpus folder>\n");
        return 2;
    }
    const std::filesystem::path corpus = argv[1];
    const std::string walker = "packetWalkerFuzz";
    for (const formworkFuzz::Seed& seed : formworkFuzz::registeredSeeds()) {
        ioWriteContext out;
        seed.write(out);
        if (!out.close()) {
            std::fprintf(stderr, "fuzzSeeds: seed %s/%s: %s\n", seed.target.c_str(),
                         seed.name.c_str(), out.error().toString().c_str());
            return 1;
        }
        const std::string file = seed.name + ".fwpk";
        const bool saved = save(corpus / seed.target / file, out.buffer()) &&
                           (seed.target == walker ||
                            save(corpus / walker / (seed.target + "-" + file), out.buffer()));
        if (!saved) {
            std::fprintf(stderr, "fuzzSeeds: cannot write %s\n",
                         (corpus / seed.target / file).c_str());
            return 1;
        }
    }
    std::printf("fuzzSeeds: %zu seeds in %s\n", formworkFuzz::registeredSeeds().size(),
                corpus.c_str());
    return 0;
}
