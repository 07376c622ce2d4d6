#pragma once

// The seed corpus of the fuzz targets: real packet files written by the library. Each area adds
// a source file to fuzz/seeds/ that registers its seed writers at start-up:
//
//   [[maybe_unused]] const bool registered = formworkFuzz::registerSeeds({
//       {"meshPacketFuzz", "quad", [](ioWriteContext& out) { ... }},
//   });
//
// and lists it in fuzz/CMakeLists.txt. The generator writes every seed into the corpus of its
// target, and a copy into the corpus of the raw packet walker, which reads any file.

#include <initializer_list>
#include <string>
#include <vector>

#include "crate/ioWriteContext.h"

namespace formworkFuzz {

struct Seed {
    /// The fuzz target whose corpus gets the file (its executable's name).
    std::string target;
    /// The file's name in that corpus (".fwpk" is added).
    std::string name;
    /// Writes the file's packets.
    void (*write)(ioWriteContext& out);
};

/// Adds seeds to the generator's list; returns true, for use in a static initialiser.
bool registerSeeds(std::initializer_list<Seed> seeds);
/// Every seed registered so far.
const std::vector<Seed>& registeredSeeds();

} // namespace formworkFuzz
