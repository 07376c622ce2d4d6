#pragma once

#include <string>

#include "tools/formwork/AssimpImport.h"
#include "tools/formwork/Renderer.h"

namespace formworkTool {

/// \name Exit codes
/// What the program returns, for scripts.
/// @{
constexpr int exitDone = 0;
/// Bad input: a file that cannot be read or written, or whose contents are wrong. One line on
/// standard error names the file and what is wrong.
constexpr int exitBadInput = 1;
/// Bad usage: an unknown subcommand or option, a missing or malformed argument.
constexpr int exitBadUsage = 2;
/// @}

/// Options every subcommand takes.
struct CommonOptions {
    /// No progress lines and no summary lines; reports (info, dump) still print.
    bool quiet = false;
};

/// \name The subcommands
/// Each does its work, prints to standard output and standard error, and returns an exit
/// code. The arguments are as the command line gives them; `formwork <subcommand> --help` and
/// docs/formwork.md describe them.
/// @{
int runImport(const CommonOptions& common, const std::string& in, const std::string& out,
              const ImportOptions& options, double scale);
int runExport(const CommonOptions& common, const std::string& in, const std::string& out);
int runInfo(const CommonOptions& common, const std::string& file, bool json);
int runDump(const CommonOptions& common, const std::string& file, bool json, int maxValues);
int runRender(const CommonOptions& common, const std::string& in, const std::string& out,
              const RenderOptions& options);
int runSubdivide(const CommonOptions& common, const std::string& in, const std::string& out,
                 int levels, int undo, bool relax);
int runMakeTorus(const CommonOptions& common, const std::string& out, int segments, int rings,
                 double majorRadius, double minorRadius);
/// @}

} // namespace formworkTool
