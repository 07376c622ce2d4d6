#pragma once

#include <string>
#include <vector>

#include "tools/formwork/MeshArrays.h"

namespace formworkTest {

/// A fresh directory under the test temporary directory, removed with everything in it when
/// the object goes.
class ScratchDirectory {
public:
    ScratchDirectory();
    ScratchDirectory(const ScratchDirectory&) = delete;
    ScratchDirectory& operator=(const ScratchDirectory&) = delete;
    ~ScratchDirectory();

    /// The path of `name` inside the directory.
    std::string operator/(const std::string& name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

/// What a run of the program gave.
struct ProgramRun {
    int exitCode = -1; ///< -1 when it did not exit normally (a signal)
    std::string out;
    std::string err;
};

/// Runs the built `formwork` program with `arguments`, standard output and error captured
/// (neither is a terminal, so no progress is shown), in `directory`.
ProgramRun runProgram(const std::vector<std::string>& arguments, const ScratchDirectory& directory);

/// Empty when the two mesh lists hold the same vertices, channels and primitives, bit for
/// bit; else the first difference.
std::string compareMeshLists(const formworkTool::MeshList& a, const formworkTool::MeshList& b);

/// The torus of `formworkTool::makeTorus` with the demo's radii, as a mesh list.
formworkTool::MeshList torusList(int segments, int rings);

} // namespace formworkTest
